#include "devices/pdf/Dates.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <chrono>
#include <vector>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kMaxText = 255;
constexpr std::string_view kBetweenWords = " \t(),;";
constexpr std::string_view kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                        "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr std::string_view kDays[] = {"mon", "tue", "wed", "thu", "fri", "sat", "sun"};
constexpr size_t kShortName = 3;
// These drawings have been made since the eighties.
constexpr int kFirstTwoDigitYear = 80;

struct DateParts {
    int year = -1, month = -1, day = -1;
    int hour = -1, minute = 0, second = 0;
    std::vector<int> numbers; // those without separators, beside a month that is a name
    bool isAfternoon = false, isForenoon = false;
};

std::string Digits(int value, int count)
{
    std::string text = std::to_string(value);
    return std::string(static_cast<size_t>(std::max(count - static_cast<int>(text.size()), 0)), '0') + text;
}

std::optional<int> Number(std::string_view text)
{
    int value = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || end.ptr != text.data() + text.size() || value < 0)
        return std::nullopt;
    return value;
}

// The numbers between the separators; empty unless all are numbers.
std::vector<int> SplitNumbers(std::string_view text, char separator)
{
    std::vector<int> numbers;
    while (true) {
        const size_t end = std::min(text.find(separator), text.size());
        const std::optional<int> number = Number(text.substr(0, end));
        if (!number)
            return {};
        numbers.push_back(*number);
        if (end == text.size())
            return numbers;
        text.remove_prefix(end + 1);
    }
}

int FullYear(int year)
{
    if (year >= 100)
        return year;
    return year + (year >= kFirstTwoDigitYear ? 1900 : 2000);
}

// "march", "mar" and "mar." are the third.
template <size_t kCount>
int FindName(const std::string_view (&names)[kCount], std::string_view word)
{
    for (size_t i = 0; i < kCount && word.size() >= kShortName; ++i) {
        if (word.starts_with(names[i]) &&
            std::ranges::all_of(word, [](char c) { return c == '.' || std::isalpha(c) != 0; }))
            return static_cast<int>(i) + 1;
    }
    return 0;
}

// Finds year, month and day among three numbers: by their sizes, by the custom that goes with the separator, or because
// two of them are the same. False when that does not decide it.
bool ReadTriple(const std::vector<int> &numbers, char separator, DateParts *parts)
{
    if (numbers.size() != 3 || parts->month >= 0)
        return false;
    const int first = numbers[0], second = numbers[1];
    if (first >= 100) {
        parts->year = first;
        parts->month = second;
        parts->day = numbers[2];
        return true;
    }
    parts->year = FullYear(numbers[2]);
    const bool isDayFirst = first > 12 || separator == '.' || first == second;
    if (!isDayFirst && second <= 12)
        return false;
    parts->day = isDayFirst ? first : second;
    parts->month = isDayFirst ? second : first;
    return true;
}

bool ReadTime(const std::vector<int> &numbers, DateParts *parts)
{
    if (numbers.size() < 2 || numbers.size() > 3 || parts->hour >= 0)
        return false;
    parts->hour = numbers[0];
    parts->minute = numbers[1];
    parts->second = numbers.size() == 3 ? numbers[2] : 0;
    return true;
}

// False for a word that nobody would expect in a date.
bool ReadWord(std::string_view word, DateParts *parts)
{
    for (const char separator : {'/', '-', '.'}) {
        if (ReadTriple(SplitNumbers(word, separator), separator, parts))
            return true;
    }
    if (ReadTime(SplitNumbers(word, ':'), parts))
        return true;
    if (const std::optional<int> number = Number(word)) {
        parts->numbers.push_back(*number);
        return true;
    }
    if (const int month = FindName(kMonths, word); month > 0 && parts->month < 0) {
        parts->month = month;
        return true;
    }
    parts->isForenoon |= word == "am";
    parts->isAfternoon |= word == "pm";
    return word == "am" || word == "pm" || FindName(kDays, word) > 0;
}

// A day and a year stand beside a month that is a name.
bool PlaceNumbers(DateParts *parts)
{
    if (parts->numbers.empty())
        return parts->year >= 0;
    if (parts->numbers.size() != 2 || parts->year >= 0 || parts->month < 0)
        return false;
    const auto [day, year] = std::ranges::minmax(parts->numbers);
    if (year <= 31)
        return false;
    parts->day = day;
    parts->year = FullYear(year);
    return true;
}

bool IsPossible(const DateParts &parts)
{
    using namespace std::chrono;
    return parts.year <= 9999 && parts.month >= 1 && parts.day >= 1 && parts.day <= 31 &&
           year_month_day(year(parts.year), month(static_cast<unsigned>(parts.month)),
                          day(static_cast<unsigned>(parts.day)))
               .ok() &&
           parts.hour <= 23 && parts.minute <= 59 && parts.second <= 59;
}

bool TurnTo24Hours(DateParts *parts)
{
    if (!parts->isAfternoon && !parts->isForenoon)
        return true;
    if (parts->isAfternoon == parts->isForenoon || parts->hour < 1 || parts->hour > 12)
        return false;
    parts->hour = parts->hour % 12 + (parts->isAfternoon ? 12 : 0);
    return true;
}

} // namespace

std::string PdfDate(int64_t seconds)
{
    using namespace std::chrono;
    constexpr sys_seconds kFirst = sys_days(year(0) / 1 / 1);
    constexpr sys_seconds kLast = sys_days(year(10000) / 1 / 1) - std::chrono::seconds(1);
    const sys_seconds at(std::chrono::seconds(std::clamp(seconds, int64_t{kFirst.time_since_epoch().count()},
                                                         int64_t{kLast.time_since_epoch().count()})));
    const sys_days midnight = floor<days>(at);
    const year_month_day date(midnight);
    const hh_mm_ss time(at - midnight);
    return "D:" + Digits(static_cast<int>(date.year()), 4) +
           Digits(static_cast<int>(static_cast<unsigned>(date.month())), 2) +
           Digits(static_cast<int>(static_cast<unsigned>(date.day())), 2) +
           Digits(static_cast<int>(time.hours().count()), 2) +
           Digits(static_cast<int>(time.minutes().count()), 2) +
           Digits(static_cast<int>(time.seconds().count()), 2) + "Z";
}

std::optional<std::string> PdfDateOf(std::string_view text)
{
    std::string lower(text.substr(0, kMaxText));
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    DateParts parts;
    for (std::string_view rest = lower; !rest.empty();) {
        const size_t start = std::min(rest.find_first_not_of(kBetweenWords), rest.size());
        rest.remove_prefix(start);
        const std::string_view word = rest.substr(0, rest.find_first_of(kBetweenWords));
        rest.remove_prefix(word.size());
        if (!word.empty() && !ReadWord(word, &parts))
            return std::nullopt;
    }
    if (!PlaceNumbers(&parts) || !TurnTo24Hours(&parts) || !IsPossible(parts))
        return std::nullopt;
    std::string date = "D:" + Digits(parts.year, 4) + Digits(parts.month, 2) + Digits(parts.day, 2);
    if (parts.hour >= 0)
        date += Digits(parts.hour, 2) + Digits(parts.minute, 2) + Digits(parts.second, 2);
    return date;
}

} // namespace vxhost::pdf
