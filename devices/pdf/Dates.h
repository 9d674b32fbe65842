// Dates as PDF writes them, and as XMP does.
#pragma once

#include "host/reading/HeaderDate.h"

#include <cstdint>
#include <string>

namespace vxhost::pdf
{

// Seconds since 1970 as "D:19940305101200Z". Years outside 0 to 9999 become the nearest.
std::string PdfDate(int64_t seconds);

// "D:19940305101200", without a time where there is none; no zone, since none is known.
std::string PdfDate(const CalendarDate &date);

// The same as "1994-03-05T10:12:00Z", and as "1994-03-05T10:12:00" or "1994-03-05".
std::string XmpDate(int64_t seconds);
std::string XmpDate(const CalendarDate &date);

} // namespace vxhost::pdf
