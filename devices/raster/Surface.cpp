#include "devices/raster/Surface.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <variant>

namespace vxhost::raster
{

namespace
{

// Of each batch: shapes, bytes of theirs, and clips and parts of shadings that they have.
constexpr size_t kBatches = 8;
constexpr size_t kMostShapes = 1024;
constexpr size_t kMostBytes = size_t{1} << 18;
constexpr size_t kMostClips = 256;
constexpr size_t kMostParts = 32;

// More lanes than threads, since parts of a picture have unequal work; not many more, since a shape is looked at by each
// lane that it touches.
constexpr size_t kLanesPerThread = 2;
constexpr int kLeastRows = 64; // an ink buffer has memory for so many at a time

// The memory for the batches of a crew may be so small a part of what there is.
constexpr uint64_t kPartOfMemory = 16;

struct Rows {
    int32_t top, bottom; // of samples
};

Rows RowsOf(const EdgeShape &shape, const Clip &, int)
{
    return {shape.bounds.top, shape.bounds.bottom};
}
Rows RowsOf(const WholeClip &, const Clip &clip, int)
{
    return {clip.Limits().top, clip.Limits().bottom};
}
Rows RowsOf(const PlacedSpans &spans, const Clip &, int)
{
    return {spans.top, spans.Bottom()};
}
Rows RowsOf(const PlacedMasks &masks, const Clip &, int samples)
{
    return {masks.rows.top * samples, masks.rows.Bottom() * samples};
}

constexpr size_t RoundedUp(size_t bytes)
{
    constexpr size_t kStep = alignof(std::max_align_t);
    return (bytes + kStep - 1) / kStep * kStep;
}

} // namespace

class Surface::Batch
{
  public:
    static constexpr size_t kBytes = kMostBytes + kMostShapes * 160;

    Batch() : bytes_(std::make_unique_for_overwrite<std::byte[]>(kMostBytes))
    {
        static_assert(sizeof(Painted) <= 160);
        shapes_.reserve(kMostShapes);
        clips_.reserve(kMostClips);
        parts_.reserve(kMostParts);
    }

    void Clear()
    {
        used_ = 0;
        shapes_.clear();
        clips_.clear();
        parts_.clear();
    }

    template <class Shape>
    bool HasRoomFor(const Shape &shape) const
    {
        return shapes_.size() < kMostShapes && clips_.size() < kMostClips && parts_.size() < kMostParts &&
               SizeOf(shape) <= kMostBytes - used_;
    }
    // The shape is kept as it is given: what it points to must last.
    template <class Shape>
    void Add(const Shape &shape, const Clip &clip, const Coat &coat, int samples)
    {
        if (clips_.empty() || clips_.back() != clip)
            clips_.push_back(clip);
        Coat kept = coat;
        if (coat.part != nullptr)
            kept.part = &parts_.emplace_back(*coat.part);
        shapes_.push_back({RowsOf(shape, clip, samples), shape, &clips_.back(), kept});
    }

    EdgeShape Copy(const EdgeShape &shape) { return {Copy(shape.edges), shape.bounds}; }
    WholeClip Copy(const WholeClip &shape) { return shape; }
    template <class Item>
    PlacedRows<Item> Copy(const PlacedRows<Item> &rows)
    {
        return {rows.top, Copy(rows.ends), Copy(rows.items)};
    }
    PlacedMasks Copy(const PlacedMasks &masks) { return {Copy(masks.rows), masks.left, masks.width}; }

    void PaintOn(Lane *lane) const
    {
        for (const Painted &painted : shapes_) {
            if (painted.rows.top < lane->Bottom() && painted.rows.bottom > lane->Top())
                std::visit([&](const auto &shape) { lane->Paint(shape, *painted.clip, painted.coat); },
                           painted.shape);
        }
    }

  private:
    struct Painted {
        Rows rows;
        std::variant<EdgeShape, WholeClip, PlacedSpans, PlacedMasks> shape;
        const Clip *clip;
        Coat coat;
    };

    template <class Item>
    static size_t SizeOf(std::span<const Item> items)
    {
        return RoundedUp(items.size_bytes());
    }
    static size_t SizeOf(const EdgeShape &shape) { return SizeOf(shape.edges); }
    static size_t SizeOf(const WholeClip &) { return 0; }
    template <class Item>
    static size_t SizeOf(const PlacedRows<Item> &rows)
    {
        return SizeOf(rows.ends) + SizeOf(rows.items);
    }
    static size_t SizeOf(const PlacedMasks &masks) { return SizeOf(masks.rows); }

    template <class Item>
    std::span<const Item> Copy(std::span<const Item> items)
    {
        static_assert(std::is_trivially_copyable_v<Item>);
        std::byte *const place = bytes_.get() + used_;
        used_ += SizeOf(items);
        if (!items.empty())
            std::memcpy(place, items.data(), items.size_bytes());
        return {reinterpret_cast<const Item *>(place), items.size()};
    }

    std::unique_ptr<std::byte[]> bytes_;
    size_t used_ = 0;
    std::vector<Painted> shapes_;
    // They have room for all that there may be, so their places do not change.
    std::vector<Clip> clips_;
    std::vector<ShadedPart> parts_;
};

Surface::Surface(int width, int height, int samples, bool tracked, MemoryCap *cap, Crew *crew)
    : cap_(cap), rowsPerLane_(height)
{
    if (crew != nullptr && crew->Size() > 1 && kBatches * Batch::kBytes <= cap->Left() / kPartOfMemory &&
        cap->Take(kBatches * Batch::kBytes)) {
        crew_ = crew;
        const auto lanes = static_cast<int>(crew->Size() * kLanesPerThread);
        rowsPerLane_ = ((height + kLeastRows - 1) / kLeastRows + lanes - 1) / lanes * kLeastRows;
    }
    for (int top = 0; top < height; top += rowsPerLane_)
        lanes_.push_back(
            std::make_unique<Lane>(top, width, std::min(rowsPerLane_, height - top), samples, tracked, cap));
    if (crew_ == nullptr)
        return;
    for (size_t i = 0; i < kBatches; ++i)
        batches_.push_back(std::make_unique<Batch>());
    crew_->Begin(lanes_.size(), kBatches,
                 [this](size_t lane, size_t batch) { batches_[batch]->PaintOn(lanes_[lane].get()); });
}

Surface::~Surface()
{
    if (crew_ != nullptr)
        crew_->Stop();
}

void Surface::PostBatch()
{
    filled_ = crew_->Post();
    batches_[filled_]->Clear();
}

template <class Shape>
void Surface::Add(const Shape &shape, const Clip &clip, const Coat &coat)
{
    if (!batches_[filled_]->HasRoomFor(shape))
        PostBatch();
    Batch &batch = *batches_[filled_];
    const int samples = lanes_.front()->Buffer().Samples();
    if (batch.HasRoomFor(shape)) {
        batch.Add(batch.Copy(shape), clip, coat, samples);
    } else {
        batch.Add(shape, clip, coat, samples);
        WaitForAll();
    }
}

template void Surface::Add(const EdgeShape &, const Clip &, const Coat &);
template void Surface::Add(const WholeClip &, const Clip &, const Coat &);
template void Surface::Add(const PlacedSpans &, const Clip &, const Coat &);
template void Surface::Add(const PlacedMasks &, const Clip &, const Coat &);

void Surface::WaitForAll()
{
    PostBatch();
    crew_->Finish();
}

void Surface::Finish()
{
    if (crew_ == nullptr)
        return;
    WaitForAll();
    batches_.clear();
    cap_->Give(kBatches * Batch::kBytes);
}

} // namespace vxhost::raster
