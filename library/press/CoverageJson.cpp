#include "library/press/CoverageJson.h"

#include <cmath>

namespace vxhost
{

namespace
{

// Four decimals are as many as a page of a million pixels has.
double Short(double number)
{
    return std::round(number * 1e4) / 1e4;
}

} // namespace

void AddCoverage(const InkCoverage &coverage, nlohmann::ordered_json *json)
{
    nlohmann::ordered_json &made = *json;
    made["inks"] = nlohmann::ordered_json::array();
    for (const InkCoverage::Ink &ink : coverage.inks)
        made["inks"].push_back(
            {{"name", ink.name}, {"spot", HasOwnPlate(ink.name)}, {"mean", Short(ink.mean)}});
    made["total"] = {{"mean", Short(coverage.mean)}, {"most", Short(coverage.most)}};
    if (coverage.mostAt)
        made["total"]["mostAt"] = {Short(coverage.mostAt->x), Short(coverage.mostAt->y)};
    made["above"] = {{"limit", Short(coverage.limit)},
                     {"share", Short(coverage.above)},
                     {"area", Short(coverage.aboveArea)}};
}

} // namespace vxhost
