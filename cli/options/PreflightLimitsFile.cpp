#include "cli/options/PreflightLimitsFile.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/OptionFile.h"
#include "library/press/LimitsText.h"

#include <fmt/format.h>

namespace vxhost
{

PreflightLimits ReadPreflightLimitsFile(const std::string &path, double seconds)
{
    constexpr const char *kOption = "--limits";
    constexpr size_t kMostBytes = size_t{64} << 10;
    const OptionFile file = {kOption, path, "the most that limits may have: leave out what is as by default"};
    const std::string text = ReadOptionFile(file, kMostBytes, seconds);
    try {
        return ReadPreflightLimits(text);
    } catch (const OptionError &error) {
        throw UsageError(fmt::format("{} {}: {}", kOption, path, error.what()));
    }
}

} // namespace vxhost
