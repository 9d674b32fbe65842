#include "cli/report/Times.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace vxhost
{

std::string TimeText(std::time_t at)
{
    tm parts = {};
    return gmtime_r(&at, &parts) == nullptr
               ? ""
               : fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", parts.tm_year + 1900, parts.tm_mon + 1,
                             parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
}

std::time_t StatedTime()
{
    const char *text = std::getenv("SOURCE_DATE_EPOCH");
    const std::string_view digits = text == nullptr ? "" : text;
    std::time_t at = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), at);
    return !digits.empty() && error == std::errc() && end == digits.data() + digits.size()
               ? at
               : std::time(nullptr);
}

} // namespace vxhost
