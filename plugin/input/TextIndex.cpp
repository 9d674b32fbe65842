#include "plugin/input/TextIndex.h"

#include "plugin/input/BigStrs.h"
#include "plugin/input/Bytes.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vx
{

BlockMarks MarkBlockPlainly(const uint8_t *text)
{
    BlockMarks marks = {};
    for (int32_t i = 0; i < kIndexBlock; ++i) {
        marks.lineEnds |= uint64_t{IsLineEnd(text[i])} << i;
        marks.spaces |= uint64_t{IsWhiteSpace(text[i])} << i;
    }
    return marks;
}

BlockMarks MarkBlockByWords(const uint8_t *text)
{
    BlockMarks marks = {};
    for (int32_t i = 0; i < kIndexBlock; i += 8) {
        const uint64_t word = LoadBytes(text + i);
        const uint64_t lineEnds = BytesBetween(word, '\n', '\n') | BytesBetween(word, '\r', '\r');
        const uint64_t spaces = BytesBetween(word, '\t', '\r') | BytesBetween(word, ' ', ' ');
        marks.lineEnds |= GatherHighBits(lineEnds) << i;
        marks.spaces |= GatherHighBits(spaces) << i;
    }
    return marks;
}

#ifdef __SSE2__

namespace
{

__m128i IsByte(__m128i bytes, char byte)
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
}

__m128i IsWhiteSpaceOf(__m128i bytes)
{
    const __m128i isControl = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('\t' - 1)),
                                            _mm_cmplt_epi8(bytes, _mm_set1_epi8('\r' + 1)));
    return _mm_or_si128(isControl, IsByte(bytes, ' '));
}

} // namespace

// Four vectors of 16 bytes, which every x86-64 has.
BlockMarks MarkBlock(const uint8_t *text)
{
    BlockMarks marks = {};
    for (int32_t i = 0; i < kIndexBlock; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + i));
        const __m128i lineEnd = _mm_or_si128(IsByte(bytes, '\r'), IsByte(bytes, '\n'));
        marks.lineEnds |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(lineEnd))} << i;
        marks.spaces |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(IsWhiteSpaceOf(bytes)))} << i;
    }
    return marks;
}

#else

BlockMarks MarkBlock(const uint8_t *text)
{
    return MarkBlockByWords(text);
}

#endif

void IndexText(const uint8_t *text, int32_t count, TextIndex *index)
{
    for (int32_t i = 0; i < count; i += kIndexBlock) {
        const BlockMarks marks = MarkBlock(text + i);
        index->lineEnds.blocks[i / kIndexBlock] = marks.lineEnds;
        index->spaces.blocks[i / kIndexBlock] = marks.spaces;
    }
}

} // namespace vx
