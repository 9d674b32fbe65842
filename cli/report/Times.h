// Says times as files of other programs take them, in UTC.
#pragma once

#include <ctime>
#include <string>

namespace vxhost
{

// "2026-11-22T21:04:05Z"; the first ten characters are the day.
std::string TimeText(std::time_t at);

// Returns when what is made now is to have been made: at the time of SOURCE_DATE_EPOCH where the environment has one.
std::time_t StatedTime();

} // namespace vxhost
