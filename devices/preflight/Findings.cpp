#include "devices/preflight/Findings.h"

#include <utility>

namespace vxhost
{

namespace
{

template <typename Part>
bool AddBounded(Part part, size_t most, std::vector<Part> *to)
{
    if (to->size() == most)
        return false;
    to->push_back(std::move(part));
    return true;
}

} // namespace

void Findings::AddPlace(FindingKind kind, FindingPlace place)
{
    Finding &finding = Of(kind);
    ++finding.count;
    (void)AddBounded(std::move(place), kMostPlaces, &finding.places); // further ones are counted alone
}

void Findings::AddName(FindingKind kind, std::string name, const FindingPlace *place)
{
    Finding &finding = Of(kind);
    ++finding.count;
    if (!AddBounded(std::move(name), kMostNames, &finding.names))
        ++finding.namesLeft;
    if (place != nullptr)
        (void)AddBounded(*place, kMostPlaces, &finding.places);
}

void Findings::AddValue(FindingKind kind, double value)
{
    std::optional<double> &worst = Of(kind).value;
    if (!worst || (RowOf(kind).isLeastWorst ? value < *worst : value > *worst))
        worst = value;
}

uint64_t Findings::CountOf(Severity severity) const
{
    uint64_t count = 0;
    for (size_t i = 0; i < kFindingCount; ++i)
        count += found_[i].count > 0 && limits_.severities[i] == severity ? 1 : 0;
    return count;
}

} // namespace vxhost
