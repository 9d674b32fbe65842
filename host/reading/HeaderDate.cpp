#include "host/reading/HeaderDate.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <iterator>
#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kMaxText = 1024; // 255 bytes of the document take no more, in UTF-8
constexpr std::string_view kBetweenWords = " \t(),;";
// These are English, German and French; a longer word begins with one of them.
constexpr std::string_view kMonths[12][6] = {
    {"jan", "jän"},  {"feb", "fév", "fev"}, {"mar", "mär", "mrz", "mae"},  {"apr", "avr"}, {"may", "mai"},
    {"jun", "juin"}, {"jul", "juil"},       {"aug", "août", "aoû", "aou"}, {"sep"},        {"oct", "okt"},
    {"nov"},         {"dec", "dez", "déc"}};
constexpr std::string_view kDays[] = {"mon", "tue", "wed", "thu", "fri", "sat", "sun", "die", "mit", "don",
                                      "fre", "sam", "son", "lun", "mar", "mer", "jeu", "ven", "dim"};
// Words that stand in dates and say nothing: "le 1er mars 1994 à 10:12", "5. März 1994 um 10.12 Uhr".
constexpr std::string_view kFillers[] = {"le", "à", "a", "um", "uhr", "den", "der", "at", "of", "the", "on"};
constexpr size_t kShortName = 3;
// The first of these drawings were made in the eighties, and their dates reach back to before.
constexpr int kFirstTwoDigitYear = 70;

struct DateParts {
    int year = -1, month = -1, day = -1;
    int hour = -1, minute = 0, second = 0;
    std::vector<int> numbers; // those without separators, beside a month that is a name
    bool isAfternoon = false, isForenoon = false;
    bool isOrderOpen = false; // day and month may be either way round
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

// Whether the word is the name or begins with it, and is nothing but letters, with a point behind it or without.
bool IsName(std::string_view word, std::string_view name)
{
    const auto isLetter = [](unsigned char c) { return c >= 0x80 || std::isalpha(c) != 0; };
    if (word.ends_with('.'))
        word.remove_suffix(1);
    return !name.empty() && word.starts_with(name) && std::ranges::all_of(word, isLetter);
}

// Returns 3 for "march", "mar" and "mar."; 0: the word is no month.
int FindMonth(std::string_view word)
{
    for (size_t month = 0; month < std::size(kMonths); ++month) {
        if (std::ranges::any_of(kMonths[month], [&](std::string_view name) { return IsName(word, name); }))
            return static_cast<int>(month) + 1;
    }
    return 0;
}

bool IsDay(std::string_view word)
{
    constexpr std::string_view kShortDays[] = {"mo", "di", "mi", "do", "fr", "sa", "so"}; // in German
    const std::string_view bare = word.substr(0, word.find('.'));
    return std::ranges::find(kShortDays, bare) != std::end(kShortDays) ||
           (word.size() >= kShortName &&
            std::ranges::any_of(kDays, [&](std::string_view name) { return IsName(word, name); }));
}

// "5", "5.", "5th" and "1er".
std::optional<int> DayOrYear(std::string_view word)
{
    for (const std::string_view ending : {"st", "nd", "rd", "th", "er", "."}) {
        if (word.ends_with(ending)) {
            word.remove_suffix(ending.size());
            break;
        }
    }
    return Number(word);
}

// Finds year, month and day among three numbers: by their sizes, by the custom that goes with the separator, because two of
// them are the same, or by the order that was said. Where none of these decides it, the order is open.
bool ReadTriple(const std::vector<int> &numbers, char separator, DateOrder order, DateParts *parts)
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
    const bool isSure = first > 12 || second > 12 || first == second || separator == '.';
    parts->isOrderOpen = !isSure && order == DateOrder::Unsaid;
    const bool isDayFirst =
        isSure ? first > 12 || separator == '.' || first == second : order == DateOrder::DayFirst;
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
bool ReadWord(std::string_view word, DateOrder order, DateParts *parts)
{
    for (const char separator : {'/', '-', '.'}) {
        if (ReadTriple(SplitNumbers(word, separator), separator, order, parts))
            return true;
    }
    if (ReadTime(SplitNumbers(word, ':'), parts))
        return true;
    if (const std::optional<int> number = DayOrYear(word)) {
        parts->numbers.push_back(*number);
        return true;
    }
    if (const int month = FindMonth(word); month > 0 && parts->month < 0) {
        parts->month = month;
        return true;
    }
    parts->isForenoon |= word == "am";
    parts->isAfternoon |= word == "pm";
    return word == "am" || word == "pm" || IsDay(word) ||
           std::ranges::find(kFillers, word) != std::end(kFillers);
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

HeaderDate ReadHeaderDate(std::string_view text, DateOrder order)
{
    std::string lower(text.substr(0, kMaxText));
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
    DateParts parts;
    for (std::string_view rest = lower; !rest.empty();) {
        const size_t start = std::min(rest.find_first_not_of(kBetweenWords), rest.size());
        rest.remove_prefix(start);
        const std::string_view word = rest.substr(0, rest.find_first_of(kBetweenWords));
        rest.remove_prefix(word.size());
        if (!word.empty() && !ReadWord(word, order, &parts))
            return {};
    }
    if (!PlaceNumbers(&parts) || !TurnTo24Hours(&parts) || !IsPossible(parts))
        return {};
    if (parts.isOrderOpen)
        return {std::nullopt, true};
    return {CalendarDate{parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second}, false};
}

std::string IsoText(const CalendarDate &date)
{
    std::string text = Digits(date.year, 4);
    text.append("-").append(Digits(date.month, 2)).append("-").append(Digits(date.day, 2));
    if (date.hour >= 0)
        text.append("T")
            .append(Digits(date.hour, 2))
            .append(":")
            .append(Digits(date.minute, 2))
            .append(":")
            .append(Digits(date.second, 2));
    return text;
}

} // namespace vxhost
