#include "cli/report/CheckReport.h"

#include "cli/report/Summary.h"
#include "host/reading/Utf8.h"
#include "library/Decimal.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vxhost
{

namespace
{

constexpr Severity kTold[] = {Severity::Error, Severity::Warning, Severity::Note};

// Returns what was found, the worst first.
std::vector<FindingKind> ListTold(const Findings &findings)
{
    std::vector<FindingKind> told;
    for (const Severity severity : kTold) {
        for (size_t i = 0; i < kFindingCount; ++i) {
            const auto kind = static_cast<FindingKind>(i);
            if (findings.Of(kind).count > 0 && findings.Limits().Of(kind) == severity)
                told.push_back(kind);
        }
    }
    return told;
}

// Three decimals of a point, or of a percent, are finer than any press.
double Rounded(double value)
{
    return std::round(value * 1e3) / 1e3;
}

std::string Joined(const Finding &finding)
{
    std::vector<std::string> names;
    for (const std::string &name : finding.names)
        names.push_back(name.empty() ? "(no name)" : name);
    const std::string text = fmt::format("{}", fmt::join(names, ", "));
    return finding.namesLeft == 0 ? text : fmt::format("{}, and {} more", text, finding.namesLeft);
}

// Says where the first is; empty: nobody knows.
std::string PlaceText(const Finding &finding)
{
    const std::string first = finding.count > 1 ? "; first at" : "; at";
    if (finding.line > 0)
        return fmt::format("{} line {}", first, finding.line);
    if (finding.places.empty())
        return "";
    const FindingPlace &place = finding.places.front();
    const Point at = place.Centre();
    return fmt::format("{} {:.1f}, {:.1f} pt{}", first, at.x, at.y,
                       place.layer.empty() ? "" : fmt::format(" on layer \"{}\"", place.layer));
}

nlohmann::ordered_json NumbersOf(const Box &box)
{
    return {Rounded(box.left), Rounded(box.bottom), Rounded(box.right), Rounded(box.top)};
}

nlohmann::ordered_json FindingJson(FindingKind kind, const Finding &finding, const PreflightLimits &limits)
{
    nlohmann::ordered_json json;
    json["name"] = RowOf(kind).name;
    json["severity"] = NameOf(limits.Of(kind));
    json["count"] = finding.count;
    json["text"] = FindingText(kind, finding, limits);
    if (finding.value)
        json["value"] = Rounded(*finding.value);
    if (RowOf(kind).limit != nullptr)
        json["limit"] = limits.*RowOf(kind).limit;
    if (!finding.names.empty())
        json["names"] = finding.names;
    if (finding.line > 0)
        json["line"] = finding.line;
    if (finding.places.empty())
        return json;
    const Point at = finding.places.front().Centre();
    json["at"] = {Rounded(at.x), Rounded(at.y)};
    for (const FindingPlace &place : finding.places)
        json["places"].push_back({{"box", NumbersOf(place.box)}, {"layer", place.layer}});
    return json;
}

} // namespace

std::string FindingText(FindingKind kind, const Finding &finding, const PreflightLimits &limits)
{
    const FindingRow &row = RowOf(kind);
    return fmt::format(fmt::runtime(row.text), fmt::arg("names", Joined(finding)),
                       fmt::arg("detail", finding.detail),
                       fmt::arg("value", Decimal(finding.value.value_or(0), 3)),
                       fmt::arg("limit", row.limit == nullptr ? "" : Decimal(limits.*row.limit, 3)));
}

std::string CheckText(const CheckedDrawing &drawing)
{
    constexpr size_t kLongest = 1000;
    const Findings &findings = drawing.findings;
    std::string text = Printable(InputName(drawing.input), 4096) + "\n";
    for (const FindingKind kind : ListTold(findings)) {
        const Finding &finding = findings.Of(kind);
        const std::string said = FindingText(kind, finding, findings.Limits()) + PlaceText(finding);
        text += fmt::format("  {:<8} {:<23}{:>6}  {}\n", NameOf(findings.Limits().Of(kind)), RowOf(kind).name,
                            finding.count, Printable(said, kLongest));
    }
    return text;
}

nlohmann::ordered_json CheckJson(const CheckedDrawing &drawing)
{
    const Findings &findings = drawing.findings;
    nlohmann::ordered_json json;
    json["file"] = drawing.input;
    json["title"] = drawing.title;
    json["box"] = NumbersOf(drawing.box);
    json["errors"] = findings.CountOf(Severity::Error);
    json["warnings"] = findings.CountOf(Severity::Warning);
    json["notes"] = findings.CountOf(Severity::Note);
    json["findings"] = nlohmann::ordered_json::array();
    for (const FindingKind kind : ListTold(findings))
        json["findings"].push_back(FindingJson(kind, findings.Of(kind), findings.Limits()));
    return json;
}

} // namespace vxhost
