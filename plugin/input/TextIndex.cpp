#include "plugin/input/TextIndex.h"

#include "plugin/input/BigStrs.h"

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

#ifdef __SSE2__

namespace
{

__m128i IsByte(__m128i bytes, char byte)
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
}

__m128i IsWhiteSpaceOf(__m128i bytes)
{
    const __m128i control = _mm_sub_epi8(bytes, _mm_set1_epi8('\t'));
    const __m128i isControl = _mm_cmpeq_epi8(_mm_min_epu8(control, _mm_set1_epi8('\r' - '\t')), control);
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
    return MarkBlockPlainly(text);
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
