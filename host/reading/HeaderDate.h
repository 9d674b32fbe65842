// Dates as old programs wrote them into the header of a drawing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

// The time is that of whoever wrote it: no zone is written.
struct CalendarDate {
    int year = 0, month = 0, day = 0;      // 0 to 9999, 1 to 12, 1 to 31
    int hour = -1, minute = 0, second = 0; // hour -1: no time is written

    bool operator==(const CalendarDate &) const = default;
};

// What a date of creation that an output states was taken from.
enum class DateOrigin : uint8_t { None, User, Drawing, File, Clock };

// Says which of two numbers comes first where nothing else tells the day from the month.
enum class DateOrder : uint8_t { Unsaid, MonthFirst, DayFirst };

struct HeaderDate {
    std::optional<CalendarDate> date; // none: the text is no date, or can be read in two ways
    bool isOrderOpen = false;         // the latter, as with 3/5/94
};

// Reads texts such as "(3/25/94) (10:12 AM)", "5 March 1994", "5. März 1994", "le 5 mars 1994" and "1994-03-05 10:12". Of
// years in two digits those from 70 on are of the twentieth century. The text is UTF-8.
HeaderDate ReadHeaderDate(std::string_view text, DateOrder order = DateOrder::Unsaid);

// "1994-03-05T10:12:00", or "1994-03-05" without a time.
std::string IsoText(const CalendarDate &date);

} // namespace vxhost
