#include "library/OptionValues.h"

#include "host/reading/HeaderDate.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

namespace vxhost
{

namespace
{

constexpr int kFirstYear = 1970;

struct NamedColour {
    std::string_view name;
    Rgb rgb;
};

constexpr NamedColour kColours[] = {
    {"aqua", {0, 255, 255}},    {"black", {0, 0, 0}},       {"blue", {0, 0, 255}},
    {"fuchsia", {255, 0, 255}}, {"gray", {128, 128, 128}},  {"green", {0, 128, 0}},
    {"grey", {128, 128, 128}},  {"lime", {0, 255, 0}},      {"maroon", {128, 0, 0}},
    {"navy", {0, 0, 128}},      {"olive", {128, 128, 0}},   {"orange", {255, 165, 0}},
    {"purple", {128, 0, 128}},  {"red", {255, 0, 0}},       {"silver", {192, 192, 192}},
    {"teal", {0, 128, 128}},    {"white", {255, 255, 255}}, {"yellow", {255, 255, 0}},
};

struct SizeUnit {
    char letter;
    int shift;
};

struct LengthUnit {
    std::string_view name;
    double points;
};

constexpr double kPointsPerInch = 72, kPointsPerMillimetre = kPointsPerInch / 25.4;
constexpr LengthUnit kLengthUnits[] = {{"mm", kPointsPerMillimetre}, {"in", kPointsPerInch}, {"pt", 1}};

struct NamedSize {
    std::string_view name;
    double width, height, unit;
};

constexpr NamedSize kPageSizes[] = {
    {"a0", 841, 1189, kPointsPerMillimetre}, {"a1", 594, 841, kPointsPerMillimetre},
    {"a2", 420, 594, kPointsPerMillimetre},  {"a3", 297, 420, kPointsPerMillimetre},
    {"a4", 210, 297, kPointsPerMillimetre},  {"a5", 148, 210, kPointsPerMillimetre},
    {"a6", 105, 148, kPointsPerMillimetre},  {"b4", 250, 353, kPointsPerMillimetre},
    {"b5", 176, 250, kPointsPerMillimetre},  {"letter", 8.5, 11, kPointsPerInch},
    {"legal", 8.5, 14, kPointsPerInch},      {"tabloid", 11, 17, kPointsPerInch},
};

// Takes a unit off the end of the text. Null: there is none.
const LengthUnit *TakeUnit(std::string_view *text)
{
    for (const LengthUnit &unit : kLengthUnits) {
        if (text->ends_with(unit.name)) {
            text->remove_suffix(unit.name.size());
            return &unit;
        }
    }
    return nullptr;
}

constexpr SizeUnit kSizeUnits[] = {{'T', 40}, {'G', 30}, {'M', 20}, {'K', 10}};

template <typename Number, typename... Format>
std::optional<Number> ReadAll(std::string_view text, Format... format)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, format...);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char &character : lower) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

} // namespace

std::optional<double> ReadNumber(std::string_view text)
{
    const std::optional<double> value = ReadAll<double>(text, std::chars_format::fixed);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int32_t> ReadInteger(std::string_view text)
{
    return ReadAll<int32_t>(text);
}

std::optional<int64_t> ReadSeconds(std::string_view text)
{
    return text.starts_with('-') ? std::nullopt : ReadAll<int64_t>(text);
}

std::optional<int64_t> ReadDay(std::string_view text)
{
    constexpr size_t kDay = std::string_view("2026-11-22").size();
    std::string words(text);
    if (words.size() > kDay && words[kDay] == 'T')
        words[kDay] = ' ';
    // The forms of a header, of which one is like that.
    const std::optional<CalendarDate> read = ReadHeaderDate(words).date;
    if (!read || IsoText(*read).substr(0, kDay) != text.substr(0, kDay) || read->year < kFirstYear)
        return std::nullopt;
    using namespace std::chrono;
    const sys_days day = year{read->year} / read->month / read->day;
    const seconds time = hours{std::max(read->hour, 0)} + minutes{read->minute} + seconds{read->second};
    return (day.time_since_epoch() + time).count();
}

std::optional<int64_t> ReadSize(std::string_view text)
{
    const std::string lower = Lower(text);
    std::string_view digits = lower;
    int shift = 0;
    for (const std::string_view ending : {"ib", "b"}) {
        if (digits.ends_with(ending)) {
            digits.remove_suffix(ending.size());
            break;
        }
    }
    for (const SizeUnit unit : kSizeUnits) {
        if (digits.ends_with(static_cast<char>(unit.letter - 'A' + 'a'))) {
            digits.remove_suffix(1);
            shift = unit.shift;
            break;
        }
    }
    const std::optional<int64_t> count = ReadAll<int64_t>(digits);
    if (!count || *count < 0 || *count > (std::numeric_limits<int64_t>::max() >> shift))
        return std::nullopt;
    return *count << shift;
}

std::string SizeText(int64_t bytes)
{
    for (const SizeUnit unit : kSizeUnits) {
        const int64_t size = int64_t{1} << unit.shift;
        if (bytes >= size && bytes % size == 0)
            return std::to_string(bytes / size) + " " + unit.letter + "iB";
    }
    return std::to_string(bytes) + " bytes";
}

std::optional<Rgb> ReadColour(std::string_view text)
{
    const std::string lower = Lower(text);
    for (const NamedColour &colour : kColours) {
        if (colour.name == lower)
            return colour.rgb;
    }
    if ((text.size() != 4 && text.size() != 7) || text[0] != '#')
        return std::nullopt;
    const size_t digits = text.size() / 3; // 1 or 2 a component
    uint8_t rgb[3];
    for (size_t i = 0; i < 3; ++i) {
        const std::string_view component = text.substr(1 + i * digits, digits);
        const std::optional<unsigned> value = ReadAll<unsigned>(component, 16);
        if (!value)
            return std::nullopt;
        rgb[i] = static_cast<uint8_t>(digits == 1 ? *value * 17 : *value);
    }
    return Rgb{rgb[0], rgb[1], rgb[2]};
}

std::optional<double> ReadLength(std::string_view text)
{
    const LengthUnit *unit = TakeUnit(&text);
    const std::optional<double> count = ReadNumber(text);
    return count && unit != nullptr ? *count * unit->points : count;
}

std::optional<PageSize> ReadPageSize(std::string_view text)
{
    constexpr std::string_view kTurned = "-landscape";
    const std::string lower = Lower(text);
    std::string_view name = lower;
    if (name.ends_with(kTurned))
        name.remove_suffix(kTurned.size());
    for (const NamedSize &size : kPageSizes) {
        if (size.name != name)
            continue;
        const double width = size.width * size.unit, height = size.height * size.unit;
        return name.size() == lower.size() ? PageSize{width, height} : PageSize{height, width};
    }
    const size_t between = lower.find('x');
    if (between == std::string::npos)
        return std::nullopt;
    std::string first = lower.substr(0, between), last = lower.substr(between + 1);
    std::string_view bareFirst = first, bareLast = last;
    if (const LengthUnit *unit = TakeUnit(&bareLast); unit != nullptr && TakeUnit(&bareFirst) == nullptr)
        first += unit->name;
    const std::optional<double> width = ReadLength(first), height = ReadLength(last);
    return width && height ? std::optional(PageSize{*width, *height}) : std::nullopt;
}

std::optional<Box> ReadBox(std::string_view text)
{
    double sides[4];
    for (size_t i = 0; i < 4; ++i) {
        const size_t comma = i < 3 ? text.find(',') : text.size();
        if (comma == std::string_view::npos)
            return std::nullopt;
        const std::optional<double> side = ReadNumber(text.substr(0, comma));
        if (!side)
            return std::nullopt;
        sides[i] = *side;
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return Box{sides[0], sides[1], sides[2], sides[3]};
}

} // namespace vxhost
