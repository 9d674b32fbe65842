// Gathers what a check finds: how often, how bad the worst is, and where the first of them are.
#pragma once

#include "devices/preflight/PreflightLimits.h"
#include "host/drawing/Device.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct FindingPlace {
    Box box;           // of what shows, in points
    std::string layer; // its name; empty: it is in none, or in one without a name

    Point Centre() const { return {(box.left + box.right) / 2, (box.bottom + box.top) / 2}; }
};

struct Finding {
    uint64_t count = 0;
    std::optional<double> value;      // the worst
    std::vector<std::string> names;   // what it is about; the first of them
    uint64_t namesLeft = 0;           // that are not among them
    std::vector<FindingPlace> places; // the first of them, as they were painted
    std::string detail;
    int64_t line = 0; // of the document; 0: it is not known
};

class Findings
{
  public:
    static constexpr size_t kMostPlaces = 100, kMostNames = 100;

    explicit Findings(const PreflightLimits &limits) : limits_(limits) {}

    const PreflightLimits &Limits() const { return limits_; }
    const Finding &Of(FindingKind kind) const { return found_[static_cast<size_t>(kind)]; }
    Finding &Of(FindingKind kind) { return found_[static_cast<size_t>(kind)]; }

    // These count one more each.
    void AddPlace(FindingKind kind, FindingPlace place);
    void AddName(FindingKind kind, std::string name, const FindingPlace *place = nullptr);
    // Counts nothing: the worst value is kept.
    void AddValue(FindingKind kind, double value);

    // Counts those of that severity: kinds, not how often each was found.
    uint64_t CountOf(Severity severity) const;
    // Counts those that keep a drawing from the press: errors and warnings.
    uint64_t CountObjections() const { return CountOf(Severity::Error) + CountOf(Severity::Warning); }

  private:
    const PreflightLimits &limits_;
    std::array<Finding, kFindingCount> found_;
};

} // namespace vxhost
