#include "library/press/FindingsReport.h"

#include "host/reading/Utf8.h"
#include "library/Decimal.h"
#include "library/ValuesJson.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>
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

std::string Joined(const Finding &finding)
{
    std::string text;
    for (const std::string &name : finding.names)
        text.append(text.empty() ? "" : ", ").append(name.empty() ? "(no name)" : name);
    return finding.namesLeft == 0 ? text : text + ", and " + std::to_string(finding.namesLeft) + " more";
}

std::string OneDecimal(double value)
{
    std::array<char, 400> text; // as many as the largest number has
    return {text.data(), static_cast<size_t>(std::snprintf(text.data(), text.size(), "%.1f", value))};
}

// Says where the first is; empty: nobody knows.
std::string PlaceText(const Finding &finding)
{
    const std::string first = finding.count > 1 ? "; first at" : "; at";
    if (finding.line > 0)
        return first + " line " + std::to_string(finding.line);
    if (finding.places.empty())
        return "";
    const FindingPlace &place = finding.places.front();
    const Point at = place.Centre();
    const std::string text = first + " " + OneDecimal(at.x) + ", " + OneDecimal(at.y) + " pt";
    return place.layer.empty() ? text : text + " on layer \"" + place.layer + "\"";
}

// Returns the text with blanks before or behind it, as wide as that at least.
std::string Padded(const std::string &text, size_t width, bool isRight = false)
{
    const std::string blanks(width - std::min(width, text.size()), ' ');
    return isRight ? blanks + text : text + blanks;
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
    json["at"] = PointJson(at);
    for (const FindingPlace &place : finding.places)
        json["places"].push_back({{"box", BoxJson(place.box)}, {"layer", place.layer}});
    return json;
}

} // namespace

std::string FindingText(FindingKind kind, const Finding &finding, const PreflightLimits &limits)
{
    const FindingRow &row = RowOf(kind);
    std::string text;
    for (std::string_view rest = row.text; !rest.empty();) {
        const size_t mark = std::min(rest.find('{'), rest.size());
        text += rest.substr(0, mark);
        rest.remove_prefix(mark);
        const std::string_view name = rest.substr(0, rest.find('}') + 1);
        rest.remove_prefix(name.size());
        if (name == "{names}")
            text += Joined(finding);
        else if (name == "{detail}")
            text += finding.detail;
        else if (name == "{value}")
            text += Decimal(finding.value.value_or(0), 3);
        else if (name == "{limit}")
            text += Decimal(limits.*row.limit, 3);
    }
    return text;
}

std::string FindingLines(const Findings &findings)
{
    constexpr size_t kLongest = 1000;
    constexpr size_t kSeverityWidth = 8, kNameWidth = 23, kCountWidth = 6;
    std::string text;
    for (const FindingKind kind : ListTold(findings)) {
        const Finding &finding = findings.Of(kind);
        const std::string said = FindingText(kind, finding, findings.Limits()) + PlaceText(finding);
        text.append("  ").append(Padded(std::string(NameOf(findings.Limits().Of(kind))), kSeverityWidth));
        text.append(" ").append(Padded(RowOf(kind).name, kNameWidth));
        text.append(Padded(std::to_string(finding.count), kCountWidth, true));
        text.append("  ").append(Printable(said, kLongest)).append("\n");
    }
    return text;
}

void AddFindings(const std::string &title, const Box &box, const Findings &findings,
                 nlohmann::ordered_json *json)
{
    nlohmann::ordered_json &made = *json;
    made["title"] = title;
    made["box"] = BoxJson(box);
    made["errors"] = findings.CountOf(Severity::Error);
    made["warnings"] = findings.CountOf(Severity::Warning);
    made["notes"] = findings.CountOf(Severity::Note);
    made["findings"] = nlohmann::ordered_json::array();
    for (const FindingKind kind : ListTold(findings))
        made["findings"].push_back(FindingJson(kind, findings.Of(kind), findings.Limits()));
}

} // namespace vxhost
