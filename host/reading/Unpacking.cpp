#include "host/reading/Unpacking.h"

#include "host/reading/Wrapping.h"

#include <lzma.h>
#include <zlib.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

constexpr int kMaxDepth = 3; // archives in archives
constexpr size_t kLeastGrowth = size_t{1} << 20;
constexpr std::string_view kGzipMagic("\x1F\x8B\x08", 3);
constexpr std::string_view kXzMagic("\xFD"
                                    "7zXZ\0",
                                    6);

enum class State { GoesOn, Whole, CutShort, Damaged, HasOthersBehind, NeedsMoreMemory };

using Input = std::span<const std::byte>;
using Output = std::span<std::byte>;

std::string_view TextOf(Input bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

class Decoder
{
  public:
    Decoder() = default;
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;
    virtual ~Decoder() = default;

    // Takes a piece of the input, which is all that there is, and fills some of the output, which has room. What is left of
    // both comes back.
    virtual State Decode(Input *input, Output *output) = 0;

  protected:
    static Input PieceOf(Input input) { return input.first(std::min(input.size(), Document::kReadAtOnce)); }

    // Goes behind the end of a member or stream: to the next, if there is one. Tapes and old transfers fill up the last block
    // with NULs.
    State GoOn(std::string_view magic, Input *input)
    {
        const auto next = std::ranges::find_if(*input, [](std::byte byte) { return byte != std::byte{0}; });
        *input = input->subspan(static_cast<size_t>(next - input->begin()));
        if (input->empty())
            return State::Whole;
        if (!TextOf(*input).starts_with(magic))
            return State::HasOthersBehind;
        Begin();
        return State::GoesOn;
    }

  private:
    virtual void Begin() = 0;
};

class GzipDecoder final : public Decoder
{
  public:
    GzipDecoder()
    {
        constexpr int kGzipAlone = 16;
        if (inflateInit2(&stream_, MAX_WBITS + kGzipAlone) != Z_OK)
            throw std::bad_alloc();
    }
    ~GzipDecoder() override { inflateEnd(&stream_); }

    State Decode(Input *input, Output *output) override
    {
        const Input piece = PieceOf(*input);
        // The library does not write to it.
        stream_.next_in = const_cast<Bytef *>(reinterpret_cast<const Bytef *>(piece.data()));
        stream_.avail_in = static_cast<uInt>(piece.size());
        stream_.next_out = reinterpret_cast<Bytef *>(output->data());
        stream_.avail_out = static_cast<uInt>(output->size());
        const int result = inflate(&stream_, Z_NO_FLUSH);
        *input = input->subspan(piece.size() - stream_.avail_in);
        *output = output->last(stream_.avail_out);
        switch (result) {
        case Z_OK:
            return State::GoesOn;
        case Z_STREAM_END:
            return GoOn(kGzipMagic, input);
        case Z_BUF_ERROR: // there was room, so there was nothing to read
            return State::CutShort;
        case Z_MEM_ERROR:
            throw std::bad_alloc();
        default:
            return State::Damaged;
        }
    }

  private:
    void Begin() override { (void)inflateReset(&stream_); } // it has been begun before, so it can be

    z_stream stream_ = {};
};

class XzDecoder final : public Decoder
{
  public:
    explicit XzDecoder(size_t memory) : memory_(std::max<uint64_t>(memory, 1)) { XzDecoder::Begin(); }
    ~XzDecoder() override { lzma_end(&stream_); }

    State Decode(Input *input, Output *output) override
    {
        const Input piece = PieceOf(*input);
        stream_.next_in = reinterpret_cast<const uint8_t *>(piece.data());
        stream_.avail_in = piece.size();
        stream_.next_out = reinterpret_cast<uint8_t *>(output->data());
        stream_.avail_out = output->size();
        const lzma_ret result = lzma_code(&stream_, LZMA_RUN);
        *input = input->subspan(piece.size() - stream_.avail_in);
        *output = output->last(stream_.avail_out);
        switch (result) {
        case LZMA_OK:
            return State::GoesOn;
        case LZMA_STREAM_END:
            return GoOn(kXzMagic, input);
        case LZMA_BUF_ERROR:
            return State::CutShort;
        case LZMA_MEM_ERROR:
            throw std::bad_alloc();
        case LZMA_MEMLIMIT_ERROR:
            return State::NeedsMoreMemory;
        default:
            return State::Damaged;
        }
    }

  private:
    void Begin() override
    {
        if (lzma_stream_decoder(&stream_, memory_, 0) != LZMA_OK)
            throw std::bad_alloc();
    }

    uint64_t memory_;
    lzma_stream stream_ = LZMA_STREAM_INIT;
};

struct Packing {
    const char *name;
    std::string_view magic;
    std::unique_ptr<Decoder> (*makeDecoder)(size_t memory);
};

constexpr Packing kPackings[] = {
    {"gzip", kGzipMagic, [](size_t) -> std::unique_ptr<Decoder> { return std::make_unique<GzipDecoder>(); }},
    {"xz", kXzMagic,
     [](size_t memory) -> std::unique_ptr<Decoder> { return std::make_unique<XzDecoder>(memory); }}};

const Packing *FindPacking(std::string_view bytes) // null: none
{
    const auto *found = std::ranges::find_if(
        kPackings, [bytes](const Packing &packing) { return bytes.starts_with(packing.magic); });
    return found == std::end(kPackings) ? nullptr : found;
}

// Packed data somewhere in a file.
struct PackedPart {
    const Packing *packing = nullptr; // null: there are none
    Wrapping around;
};

// A drawing may hold bytes that look like packed data: what comes first counts.
PackedPart FindPackedPart(Input file)
{
    const auto begins = [](std::string_view bytes) {
        return FindPacking(bytes) != nullptr || BeginsDrawing(bytes);
    };
    PackedPart part;
    if (std::optional<Wrapping> around = FindWrapped(file, begins)) {
        part.packing = FindPacking(TextOf(file.subspan(around->offset)));
        part.around = std::move(*around);
    }
    return part;
}

// Takes what comes out, as much as there may be.
class Room
{
  public:
    explicit Room(const UnpackLimits &limits) : most_(std::min(limits.memory, limits.length)) {}

    // Returns some memory that is not yet written to. Room for one byte more than there may be shows that there are more.
    Output Next()
    {
        if (length_ == size_)
            Resize(std::min(size_ + std::max(size_ / 8, kLeastGrowth), most_ + 1));
        return {bytes_.Get() + length_, std::min(size_ - length_, Document::kReadAtOnce)};
    }
    void Take(size_t count) { length_ += count; }
    bool IsOver() const { return length_ > most_; }
    size_t Length() const { return length_; }
    ResizableBytes Finish()
    {
        Resize(std::max<size_t>(length_, 1)); // what is not needed would count as memory, too
        return std::move(bytes_);
    }

  private:
    void Resize(size_t size)
    {
        if (!bytes_.Resize(size))
            throw std::bad_alloc();
        size_ = size;
    }

    ResizableBytes bytes_;
    size_t length_ = 0, size_ = 0, most_;
};

std::string DamageText(State state, const std::string &name)
{
    switch (state) {
    case State::Whole:
        return "";
    case State::CutShort:
        return "the " + name + " data around it are cut short";
    case State::HasOthersBehind:
        return "the " + name + " data around it are followed by other bytes";
    default:
        return "the " + name + " data around it are damaged";
    }
}

// Goes through one archive. False: a limit was hit.
bool UnpackOne(const Document &packed, const Packing &packing, const UnpackLimits &limits,
               const std::function<void()> &onStep, Unpacked *unpacked)
{
    const std::unique_ptr<Decoder> decoder = packing.makeDecoder(limits.memory);
    Room room(limits);
    Input input = packed.Bytes();
    State state = State::GoesOn;
    while (state == State::GoesOn && !room.IsOver()) {
        const Output free = room.Next();
        const size_t left = input.size();
        Output output = free;
        state = decoder->Decode(&input, &output);
        room.Take(free.size() - output.size());
        packed.Leave(packed.Bytes().size() - left, packed.Bytes().size() - input.size());
        if (onStep)
            onStep();
    }
    if (room.IsOver() || state == State::NeedsMoreMemory) {
        const bool isLength = state != State::NeedsMoreMemory && limits.length < limits.memory;
        unpacked->limit = isLength ? UnpackLimit::Length : UnpackLimit::Memory;
        return false;
    }
    AddWrapping(packing.name, &unpacked->names);
    const std::string damage = DamageText(state, packing.name);
    if (room.Length() == 0) {
        unpacked->refusal =
            (damage.empty() ? std::string("the ").append(packing.name).append(" data have nothing in them")
                            : damage + ", nothing came out of them") +
            ": get a whole copy";
        return false;
    }
    if (unpacked->damage.empty())
        unpacked->damage = damage;
    const size_t length = room.Length();
    ResizableBytes bytes = room.Finish();
    std::string error; // there is none: it is not too long
    unpacked->document = Document::FromMemory({bytes.Get(), length}, &error);
    unpacked->bytes = std::move(bytes); // from here on an archive that was around it is gone
    return true;
}

} // namespace

bool IsPacked(std::span<const std::byte> file)
{
    return FindPackedPart(file).packing != nullptr;
}

std::unique_ptr<const Unpacked> Unpack(const Document &file, const UnpackLimits &limits,
                                       const std::function<void()> &onStep)
{
    auto unpacked = std::make_unique<Unpacked>();
    for (int depth = 0; depth < kMaxDepth; ++depth) {
        const Document &outer = unpacked->document != nullptr ? *unpacked->document : file;
        const PackedPart part = FindPackedPart(outer.Bytes());
        if (part.packing == nullptr)
            break;
        AddWrapping(part.around.names, &unpacked->names);
        UnpackLimits left = limits; // what is held counts
        left.memory -= unpacked->document != nullptr ? outer.Bytes().size() : 0;
        const auto packed = Document::PartOf(outer, part.around.offset, part.around.size);
        if (!UnpackOne(*packed, *part.packing, left, onStep, unpacked.get())) {
            unpacked->document.reset();
            unpacked->bytes = {};
            break;
        }
    }
    return unpacked;
}

} // namespace vxhost
