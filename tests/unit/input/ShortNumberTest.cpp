// Short numbers beside the plain way of reading them.
#include "plugin/input/ShortNumber.h"

#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

struct PlainNumber {
    bool valid, point;
    int32_t value;
};

// The tokenizer's way, for a word of nothing but the number.
PlainNumber ReadPlainly(const std::string &word)
{
    const BigString view = View(word);
    const uint8_t *end = view.text + view.length;
    const NumberScan scan = ScanNumber(view.text, end);
    return {scan.digits && scan.stop == end, scan.point,
            scan.point ? ScannedFixed(scan) : ScannedInteger(scan)};
}

// A number that saturates is left to the plain way.
bool IsSaturated(const PlainNumber &number)
{
    return number.value == INT32_MAX || number.value == INT32_MIN;
}

// Any bytes may stand behind a number: here digits do, which must not count.
ShortNumber ReadQuickly(const std::string &characters, bool negative)
{
    std::array<uint8_t, 2 * kMostShortDigits> text;
    text.fill('7');
    memcpy(text.data(), characters.data(), characters.size());
    return ReadShortNumber(text.data(), static_cast<int32_t>(characters.size()), negative);
}

void ExpectTwins(const std::string &characters)
{
    for (const bool negative : {false, true}) {
        const PlainNumber plain = ReadPlainly((negative ? "-" : "") + characters);
        // A second sign is no number's.
        const bool isSigned = characters[0] == '+' || characters[0] == '-';
        const ShortNumber quick = ReadQuickly(characters, negative);
        ASSERT_EQ(quick.valid, plain.valid && !isSigned && !IsSaturated(plain)) << characters;
        if (!quick.valid)
            continue;
        ASSERT_EQ(quick.point, plain.point) << characters;
        ASSERT_EQ(quick.value, plain.value) << characters << (negative ? " below 0" : "");
    }
}

TEST(ShortNumberTest, IsThePlainOneForEveryWordOfFewCharacters)
{
    constexpr char kCharacters[] = {'0', '1', '9', '.', '-', '+', '/', ':', 'e', ' ', '\0', '\xB0'};
    constexpr size_t kCount = std::size(kCharacters);
    for (size_t length = 1, words = kCount; length <= 4; ++length, words *= kCount) {
        for (size_t word = 0; word < words; ++word) {
            std::string characters;
            for (size_t i = 0, rest = word; i < length; ++i, rest /= kCount)
                characters += kCharacters[rest % kCount];
            ASSERT_NO_FATAL_FAILURE(ExpectTwins(characters));
        }
    }
}

TEST(ShortNumberTest, IsThePlainOneForEveryByteInEveryPlace)
{
    for (const std::string base : {"1", "12", "1234.567", "12345678", ".2345678", "1234567."})
        for (size_t place = 0; place < base.size(); ++place)
            for (int byte = 0; byte < 256; ++byte) {
                std::string characters = base;
                characters[place] = static_cast<char>(byte);
                ASSERT_NO_FATAL_FAILURE(ExpectTwins(characters));
            }
}

TEST(ShortNumberTest, IsThePlainOneForAnyNumber)
{
    std::mt19937 random(11);
    for (int i = 0; i < 400000; ++i) {
        std::string characters;
        for (size_t length = 1 + random() % kMostShortDigits; characters.size() < length;)
            characters += static_cast<char>('0' + random() % 10);
        if (random() % 4 != 0)
            characters[random() % characters.size()] = '.';
        if (random() % 64 == 0)
            characters[random() % characters.size()] = static_cast<char>(random());
        ASSERT_NO_FATAL_FAILURE(ExpectTwins(characters));
    }
}

} // namespace
