#include "host/reading/LineWalk.h"

#include "host/reading/ByteBlocks.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace vxhost
{

size_t FindLineEnd(std::string_view text, size_t start)
{
    const size_t most = std::min(text.size(), start + kLineRoom);
    const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
    for (; start + sizeof(ByteBlock) <= most; start += sizeof(ByteBlock)) {
        if (const uint64_t ends = BitsOf(IsLineEnd(LoadBlock(bytes + start))); ends != 0)
            return start + static_cast<size_t>(std::countr_zero(ends));
    }
    while (start < most && !IsLineEnd(text[start]))
        ++start;
    return start;
}

size_t FindLineStart(std::string_view text, size_t least, size_t before)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
    for (; least + sizeof(ByteBlock) <= before; before -= sizeof(ByteBlock)) {
        const uint64_t ends = BitsOf(IsLineEnd(LoadBlock(bytes + before - sizeof(ByteBlock))));
        if (ends != 0)
            return before - sizeof(ByteBlock) + static_cast<size_t>(std::bit_width(ends));
    }
    while (before > least && !IsLineEnd(text[before - 1]))
        --before;
    return before;
}

} // namespace vxhost
