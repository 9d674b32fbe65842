#include "devices/preflight/DocumentFindings.h"

#include "devices/colour/InkShares.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <string_view>
#include <vector>

namespace vxhost
{

namespace
{

constexpr double kPercent = 100;
constexpr double kMillimetres = 25.4 / 72; // of a point

void AddCount(FindingKind kind, uint64_t count, Findings *findings)
{
    findings->Of(kind).count += count;
}

void AddDamage(const Outcome &outcome, Findings *findings)
{
    if (outcome.salvage.IsAny()) {
        Finding &finding = findings->Of(FindingKind::Malformed);
        const DocumentFault &fault =
            outcome.salvage.first.empty() ? outcome.fault : outcome.salvage.first.front();
        finding.count = outcome.salvage.faults + (outcome.salvage.isCut ? 1 : 0);
        finding.line = fault.line;
        finding.detail = fault.text.empty() ? "all that follows" : fault.text;
    }
    AddCount(FindingKind::CutShort, outcome.end.isSaid ? 0 : 1, findings);
    if (!outcome.damage.empty()) {
        findings->Of(FindingKind::PackingDamaged).count = 1;
        findings->Of(FindingKind::PackingDamaged).detail = outcome.damage;
    }
    if (const Undrawn &undrawn = outcome.end.undrawn; undrawn.line != 0) {
        findings->Of(FindingKind::EndNotDrawn).count = undrawn.bytes;
        findings->Of(FindingKind::EndNotDrawn).line = static_cast<int64_t>(undrawn.line);
    }
}

void AddUnshown(const Outcome &outcome, Findings *findings)
{
    const Unshown &unshown = outcome.unshown;
    AddCount(FindingKind::PatternNotPainted, unshown.patterns, findings);
    AddCount(FindingKind::PictureNotPainted, unshown.placedPictures, findings);
    AddCount(FindingKind::PostscriptNotPainted, unshown.postscript, findings);
    AddCount(FindingKind::BinaryNotPainted, unshown.binary, findings);
    AddCount(FindingKind::BetweenLayers, unshown.betweenLayers, findings);
    // The interpreter tells of each kind once, also where there is nothing to count.
    constexpr std::pair<int, FindingKind> kReported[] = {
        {kVXProblemPattern, FindingKind::PatternNotPainted},
        {kVXProblemPostScript, FindingKind::PostscriptNotPainted},
        {kVXProblemOperator, FindingKind::UnknownOperator},
        {kVXProblemBinary, FindingKind::BinaryNotPainted}};
    for (const Report &report : outcome.reports) {
        for (const auto &[number, kind] : kReported) {
            if (report.number == number && findings->Of(kind).count == 0)
                findings->Of(kind).count = 1;
        }
    }
}

void AddFonts(const Outcome &outcome, const std::map<std::string, FindingPlace> &places, Findings *findings)
{
    const auto add = [&](FindingKind kind, const FontUse &font, std::string name, uint64_t count) {
        const auto place = places.find(font.asked);
        findings->AddName(kind, std::move(name), place == places.end() ? nullptr : &place->second);
        findings->Of(kind).count += count - 1;
    };
    for (const FontUse &font : outcome.fonts) {
        if (font.match == FontMatch::Missing)
            add(FindingKind::FontMissing, font, font.asked, 1);
        else if (font.match == FontMatch::Substitute)
            add(FindingKind::FontSubstituted, font, font.asked + " by " + font.served, 1);
        if (font.match != FontMatch::Missing && font.missingGlyphs > 0)
            add(FindingKind::FontLacksCharacters, font, font.served, font.missingGlyphs);
    }
}

void AddLayers(const Outcome &outcome, Findings *findings)
{
    for (const Layer &layer : outcome.layers) {
        if (!layer.isPrinting && !layer.isPainted)
            findings->AddName(FindingKind::LayerNotPrinting, layer.name);
    }
}

bool IsProcess(std::string_view ink)
{
    return std::ranges::find(kProcessInks, ink, &SpotInk::name) != std::end(kProcessInks);
}

// Holds a list of inks that the header declares against those that print. An empty one declares nothing: most programs leave it out.
void AddDeclared(const std::vector<std::string> &declared, const std::vector<std::string> &printing,
                 Findings *findings)
{
    if (declared.empty())
        return;
    for (const std::string &ink : printing) {
        if (std::ranges::find(declared, ink) == declared.end())
            findings->AddName(FindingKind::InkNotDeclared, ink);
    }
    for (const std::string &ink : declared) {
        if (std::ranges::find(printing, ink) == printing.end())
            findings->AddName(FindingKind::InkNotUsed, ink);
    }
}

void AddInks(const HeaderFacts &header, const Outcome &outcome, const InkCoverage &coverage,
             Findings *findings)
{
    std::vector<std::string> process, spots;
    for (const InkCoverage::Ink &ink : coverage.inks) {
        if (ink.mean == 0)
            continue;
        findings->AddName(FindingKind::Inks, ink.name);
        (IsProcess(ink.name) ? process : spots).push_back(ink.name);
    }
    for (const std::string &ink : spots)
        findings->AddName(FindingKind::SpotInks, ink);
    AddDeclared(header.processColours, process, findings);
    AddDeclared(header.customColours, spots, findings);
    std::map<std::string_view, size_t> mixtures;
    for (const SpotUse &spot : outcome.spots)
        ++mixtures[spot.name];
    for (const auto &[name, count] : mixtures) {
        if (!CanHavePlate(name))
            findings->AddName(FindingKind::SpotInkWithoutPlate, std::string(name));
        else if (count > 1)
            findings->AddName(FindingKind::SpotInkMixtures, std::string(name));
    }
}

void AddTotalInk(const InkCoverage &coverage, Findings *findings)
{
    if (coverage.above == 0)
        return;
    Finding &finding = findings->Of(FindingKind::TotalInk);
    finding.count = 1;
    constexpr double kTenths = 10; // plates tell no finer parts of a percent apart
    finding.value = std::round(coverage.most * kPercent * kTenths) / kTenths;
    char area[32];
    (void)std::snprintf(area, sizeof area, "%.1f mm²", coverage.aboveArea * kMillimetres * kMillimetres);
    finding.detail = area;
    const Point at = coverage.mostAt.value_or(Point());
    finding.places.push_back({{at.x, at.y, at.x, at.y}, ""});
}

} // namespace

void AddDocumentFindings(const HeaderFacts &header, const Outcome &outcome, const InkCoverage &coverage,
                         const std::map<std::string, FindingPlace> &fonts, Findings *findings)
{
    AddDamage(outcome, findings);
    AddUnshown(outcome, findings);
    AddFonts(outcome, fonts, findings);
    AddLayers(outcome, findings);
    AddInks(header, outcome, coverage, findings);
    AddTotalInk(coverage, findings);
}

} // namespace vxhost
