// Length-prefixed strings (a length byte, then the bytes) and the host's string lists.
//
// No operation checks bounds. The length byte is read as signed for addresses and byte counts but lengths are
// added as unsigned bytes: a mixture kept on purpose, so callers keep strings below 128 bytes.
#pragma once

#include <cstdint>

namespace vx
{

constexpr int32_t kPascalStringSize = 256; // room for any length-prefixed string

// Entry index (from 1) of a string list, or an empty string where there is none. Returns resourceId.
int16_t getString(int16_t resourceId, int16_t index, uint8_t *destination);
// The number of entries of a string list, 0 where the list does not exist.
int16_t countString(int16_t resourceId);

// Nothing calls these four.
void pstrcat(uint8_t *destination, const uint8_t *source);
// Puts source in front.
void pstrinsert(uint8_t *destination, const uint8_t *source);
void pstrcpy(uint8_t *destination, const uint8_t *source);
// The n-th (from 1) string of a packed list: strings one after another without padding.
const uint8_t *pstrIndex(const uint8_t *list, int16_t n);

} // namespace vx
