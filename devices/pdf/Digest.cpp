#include "devices/pdf/Digest.h"

#include "devices/pdf/ToUnicode.h"

#include <algorithm>
#include <array>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kWord = 8;

// The lowest byte comes first, on every machine.
uint64_t WordAt(const char *from)
{
    uint64_t word = 0;
    for (size_t i = 0; i < kWord; ++i)
        word |= uint64_t{static_cast<uint8_t>(from[i])} << (8 * i);
    return word;
}

// Each step can be undone, so two words never meet in one.
uint64_t Mixed(uint64_t state, uint64_t word)
{
    state = (state ^ word) * 0x9FB21C651E98DF25;
    return state ^ state >> 32;
}

} // namespace

void Digest::Add(std::span<const char> bytes)
{
    low_ = Mixed(low_, bytes.size());
    while (!bytes.empty()) {
        std::array<char, 2 *kWord> padded = {};
        const char *at = bytes.data();
        const size_t count = std::min(bytes.size(), padded.size());
        if (count < padded.size()) {
            std::copy_n(at, count, padded.data());
            at = padded.data();
        }
        high_ = Mixed(high_, WordAt(at));
        low_ = Mixed(low_, WordAt(at + kWord));
        bytes = bytes.subspan(count);
    }
}

std::string Digest::Hex() const
{
    std::string hex;
    const uint64_t high = Mixed(high_, low_), low = Mixed(low_, high);
    for (const uint64_t half : {high, low}) {
        AppendHex(static_cast<uint32_t>(half >> 32), 4, &hex);
        AppendHex(static_cast<uint32_t>(half), 4, &hex);
    }
    return hex;
}

} // namespace vxhost::pdf
