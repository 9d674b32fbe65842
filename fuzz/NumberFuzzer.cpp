// Numbers: the conversions from text against plain decimal arithmetic, and the fixed-point operations against wider ones.
#include "fuzz/Require.h"
#include "plugin/input/BigStrs.h"
#include "plugin/input/Fixed.h"
#include "plugin/input/ShortNumber.h"

#include "host/drawing/FixedText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

using vxfuzz::Require;

// A sign, up to nine digits, a point and up to four: small enough that nothing saturates or is dropped.
bool IsPlain(const std::string &text)
{
    size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const size_t point = std::min(text.find('.'), text.size());
    const auto areDigits = [&](size_t from, size_t to) {
        return text.substr(from, to - from).find_first_not_of("0123456789") == std::string::npos;
    };
    return point > at && point - at <= 4 && areDigits(at, point) && text.size() <= point + 5 &&
           (point == text.size() || (text.size() > point + 1 && areDigits(point + 1, text.size())));
}

void CheckText(const std::string &text)
{
    const vx::BigString view = {reinterpret_cast<const uint8_t *>(text.data()),
                                static_cast<int32_t>(text.size())};
    int32_t integer = 0;
    Fixed fixed = 0;
    const bool isInteger = vx::BigStringAsInteger(&view, &integer);
    const bool isFixed = vx::BigStringAsFixed(&view, &fixed);
    if (!IsPlain(text))
        return;
    const double value = std::strtod(text.c_str(), nullptr);
    Require(isFixed && std::abs(fixed / 65536.0 - value) <= 1 / 65536.0, "a decimal that is read as another");
    if (text.find('.') == std::string::npos)
        Require(isInteger && integer == value, "an integer that is read as another");
}

// The quick way of reading a short number beside the plain one; what it leaves out is read plainly.
void CheckShortNumber(const uint8_t *bytes, size_t size)
{
    const size_t length = std::min(size, size_t{vx::kMostShortDigits});
    if (length == 0 || *bytes == '-' || *bytes == '+')
        return;
    uint8_t text[vx::kMostShortDigits] = {};
    std::memcpy(text, bytes, length);
    const vx::ShortNumber number = vx::ReadShortNumber(text, static_cast<int32_t>(length), 0);
    const vx::NumberScan scan = vx::ScanNumber(text, text + length);
    const int32_t value = scan.point ? vx::ScannedFixed(scan) : vx::ScannedInteger(scan);
    const bool isRead = scan.digits && scan.stop == text + length && value != INT32_MAX;
    Require(number.valid == isRead, "a short number that is none, or none that is one");
    Require(!isRead || (number.value == value && (number.point != 0) == scan.point),
            "a short number that is read as another");
}

void CheckArithmetic(Fixed a, Fixed b)
{
    const double product = a / 65536.0 * (b / 65536.0);
    if (std::abs(product) < 32767)
        Require(std::abs(vx::FixedMul(a, b) / 65536.0 - product) <= 1 / 65536.0, "a product that is another");
    if (b != 0) {
        const double quotient = static_cast<double>(a) / b;
        if (std::abs(quotient) < 32767)
            Require(std::abs(vx::FixedDiv(a, b) / 65536.0 - quotient) <= 1 / 65536.0,
                    "a quotient that is another");
    }
    (void)vx::FixedDiv(a, 0);
    // What is printed of a number is read as the same number, as long as its digits are few enough to be taken.
    const std::string text = vxhost::FixedText(a);
    const vx::BigString view = {reinterpret_cast<const uint8_t *>(text.data()),
                                static_cast<int32_t>(text.size())};
    Fixed back = 0;
    if (std::abs(a / 65536.0) < 21474)
        Require(vx::BigStringAsFixed(&view, &back) && std::abs(back - a) <= 1,
                "a number that is printed as another");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    CheckText(std::string(reinterpret_cast<const char *>(data), size));
    for (size_t at = 0; at < size; ++at)
        CheckShortNumber(data + at, size - at);
    Fixed pair[2];
    for (size_t at = 0; at + sizeof pair <= size; at += sizeof pair) {
        std::memcpy(pair, data + at, sizeof pair);
        CheckArithmetic(pair[0], pair[1]);
    }
    return 0;
}
