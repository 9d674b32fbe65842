// Dates as PDF writes them, from the clock of a computer or from what somebody wrote into a document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost::pdf
{

// Seconds since 1970 as "D:19940305101200Z". Years outside 0 to 9999 become the nearest.
std::string PdfDate(int64_t seconds);

// "D:19940305101200" for a text such as "(3/25/94) (10:12 AM)", "5 March 1994" or "1994-03-05 10:12", without a time
// where there is none; no zone, since none is written. Nothing when the text can be read in two ways, as 3/5/94 can.
std::optional<std::string> PdfDateOf(std::string_view text);

} // namespace vxhost::pdf
