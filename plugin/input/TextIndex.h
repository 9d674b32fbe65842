// Text index: where in a buffer lines and words end, found for many bytes at once.
//
// A buffer is indexed as a whole when it is filled. Lines and words are then found by their marks, without a look at
// the bytes between.
#pragma once

#include <bit>
#include <cstdint>

namespace vx
{

constexpr int32_t kIndexBlock = 64; // bytes, one bit each
constexpr int32_t kIndexedBytes = 512;

// A byte's mark is a bit, the first byte's the lowest.
struct TextMarks {
    uint64_t
        blocks[kIndexedBytes / kIndexBlock + 1]; // the last one stays empty, behind the window at the end
};

struct TextIndex {
    TextMarks lineEnds;
    TextMarks spaces; // IsWhiteSpace
};

// Indexes the blocks of count bytes. All bytes of the last block are read, and marked too.
void IndexText(const uint8_t *text, int32_t count, TextIndex *index);

// The marks of one block of the text: by vectors, where there are any that every processor has, else by words; and the
// plain twin of both.
struct BlockMarks {
    uint64_t lineEnds;
    uint64_t spaces;
};
BlockMarks MarkBlock(const uint8_t *text);
BlockMarks MarkBlockByWords(const uint8_t *text);
BlockMarks MarkBlockPlainly(const uint8_t *text);

inline void AddMark(TextMarks *marks, int32_t at)
{
    marks->blocks[at / kIndexBlock] |= uint64_t{1} << (at % kIndexBlock);
}

// The marks of the bytes from that one on, as many as a block has.
inline uint64_t MarksFrom(const TextMarks *marks, int32_t at)
{
    const uint64_t *block = &marks->blocks[static_cast<uint32_t>(at) / kIndexBlock];
    const uint32_t offset = static_cast<uint32_t>(at) % kIndexBlock;
    return block[0] >> offset | block[1] << 1 << (kIndexBlock - 1 - offset);
}

// The first mark from there to before end, or end.
inline int32_t FindMark(const TextMarks *marks, int32_t from, int32_t end)
{
    for (; from < end; from += kIndexBlock) {
        const uint64_t window = MarksFrom(marks, from);
        if (window != 0) {
            const int32_t at = from + std::countr_zero(window);
            return at < end ? at : end;
        }
    }
    return end;
}

} // namespace vx
