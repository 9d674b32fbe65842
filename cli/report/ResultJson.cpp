#include "cli/report/ResultJson.h"

#include "library/FactsJson.h"

#include <cstdint>
#include <utility>

namespace vxhost
{

void AddResult(const Result &result, nlohmann::ordered_json *json)
{
    AddFacts(result.header, result.outcome, json);
    AddConfinement(result, json);
    constexpr const char *kOrigins[] = {nullptr, "user", "drawing", "file", "clock"};
    if (const char *origin = kOrigins[static_cast<size_t>(result.outcome.date)])
        (*json)["dateFrom"] = origin;
    const Omitted &omitted = result.omitted;
    const std::pair<const char *, uint32_t> counts[] = {{"processColours", omitted.processColours},
                                                        {"customColours", omitted.customColours},
                                                        {"declaredFonts", omitted.declaredFonts},
                                                        {"fonts", omitted.fonts},
                                                        {"layers", omitted.layers},
                                                        {"inks", omitted.spots},
                                                        {"problems", omitted.reports}};
    for (const auto &[member, count] : counts) {
        if (count > 0)
            (*json)["omitted"][member] = count;
    }
}

void AddConfinement(const Result &result, nlohmann::ordered_json *json)
{
    if (!result.isRead)
        return;
    auto &names = (*json)["confinedBy"] = nlohmann::ordered_json::array();
    if (result.confinement.byLandlock)
        names.push_back("landlock");
    if (result.confinement.bySeccomp)
        names.push_back("seccomp");
}

} // namespace vxhost
