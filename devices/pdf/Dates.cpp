#include "devices/pdf/Dates.h"

#include <algorithm>
#include <chrono>

namespace vxhost::pdf
{

namespace
{

CalendarDate UniversalDate(int64_t seconds)
{
    using namespace std::chrono;
    constexpr sys_seconds kFirst = sys_days(year(0) / 1 / 1);
    constexpr sys_seconds kLast = sys_days(year(10000) / 1 / 1) - std::chrono::seconds(1);
    const sys_seconds at(std::chrono::seconds(std::clamp(seconds, int64_t{kFirst.time_since_epoch().count()},
                                                         int64_t{kLast.time_since_epoch().count()})));
    const sys_days midnight = floor<days>(at);
    const year_month_day date(midnight);
    const hh_mm_ss time(at - midnight);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

} // namespace

std::string PdfDate(int64_t seconds)
{
    return PdfDate(UniversalDate(seconds)) + "Z";
}

std::string XmpDate(int64_t seconds)
{
    return XmpDate(UniversalDate(seconds)) + "Z";
}

std::string XmpDate(const CalendarDate &date)
{
    return IsoText(date);
}

std::string PdfDate(const CalendarDate &date)
{
    std::string digits = IsoText(date);
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    return "D:" + digits;
}

} // namespace vxhost::pdf
