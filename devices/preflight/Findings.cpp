#include "devices/preflight/Findings.h"

#include <utility>

namespace vxhost
{

void Findings::AddPlace(FindingKind kind, FindingPlace place)
{
    Finding &finding = Of(kind);
    ++finding.count;
    if (finding.places.size() < kMostPlaces)
        finding.places.push_back(std::move(place));
}

void Findings::AddValue(FindingKind kind, double value)
{
    std::optional<double> &worst = Of(kind).value;
    if (!worst || (RowOf(kind).isLeastWorst ? value < *worst : value > *worst))
        worst = value;
}

void Findings::AddName(FindingKind kind, std::string name)
{
    Finding &finding = Of(kind);
    ++finding.count;
    if (finding.names.size() < kMostNames)
        finding.names.push_back(std::move(name));
    else
        ++finding.namesLeft;
}

uint64_t Findings::CountOf(Severity severity) const
{
    uint64_t count = 0;
    for (size_t i = 0; i < kFindingCount; ++i)
        count += found_[i].count > 0 && limits_.severities[i] == severity ? 1 : 0;
    return count;
}

} // namespace vxhost
