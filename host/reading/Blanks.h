// Bytes of a document that the plug-in is given as blanks.
//
// Line ends stay what they are, and so do the places of all bytes: lines are cut where they were.
#pragma once

#include "host/StreamCompanion.h"
#include "host/reading/LineWalk.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace vxhost
{

// Bytes from begin up to end.
struct ByteRange {
    size_t begin = 0, end = 0;

    bool operator==(const ByteRange &) const = default;
};

class Blanks
{
  public:
    // Each range begins behind those that were added before.
    void Add(std::span<const ByteRange> ranges)
    {
        ranges_.insert(ranges_.end(), ranges.begin(), ranges.end());
    }
    bool IsEmpty() const { return ranges_.empty(); }

    // The bytes stand at that offset of the document.
    void Apply(std::span<std::byte> bytes, size_t offset) const
    {
        const auto isBefore = [](size_t at, const ByteRange &range) { return at < range.end; };
        for (auto range = std::upper_bound(ranges_.begin(), ranges_.end(), offset, isBefore);
             range != ranges_.end() && range->begin < offset + bytes.size(); ++range) {
            for (size_t at = std::max(range->begin, offset); at < std::min(range->end, offset + bytes.size());
                 ++at) {
                std::byte &byte = bytes[at - offset];
                byte = IsLineEnd(static_cast<char>(byte)) ? byte : std::byte{' '};
            }
        }
    }

  private:
    std::vector<ByteRange> ranges_;
};

// Returns a line, which stands at that offset of the document, as the plug-in is given it: in the room where there are blanks.
inline std::string_view BlankedLine(std::string_view line, size_t offset, const Blanks &blanks,
                                    std::array<char, kLineRoom> *room)
{
    if (blanks.IsEmpty())
        return line;
    std::ranges::copy(line, room->begin());
    blanks.Apply(std::as_writable_bytes(std::span(*room).first(line.size())), offset);
    return {room->data(), line.size()};
}

// Blanks bytes on their way to the plug-in, and another companion, which may be null.
class Blanker final : public StreamCompanion
{
  public:
    Blanker(const Blanks &blanks, StreamCompanion *next) : blanks_(blanks), next_(next) {}

    void Deliver(std::span<std::byte> bytes, size_t offset) override
    {
        blanks_.Apply(bytes, offset);
        if (next_ != nullptr)
            next_->Deliver(bytes, offset);
    }
    void BeginLine() override
    {
        if (next_ != nullptr)
            next_->BeginLine();
    }

  private:
    const Blanks &blanks_;
    StreamCompanion *next_;
};

} // namespace vxhost
