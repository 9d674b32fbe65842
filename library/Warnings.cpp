#include "library/Warnings.h"

#include "host/SystemText.h"
#include "host/reading/Utf8.h"
#include "library/Decimal.h"

#include <vx/HostCall.h>

#include <cmath>
#include <map>
#include <utility>

namespace vxhost
{

namespace
{

std::string WithoutFullStop(std::string text)
{
    text = ToUtf8(text);
    text.erase(text.find_last_not_of(" .") + 1);
    return text;
}

std::string Quoted(std::string_view name)
{
    return std::string("\"").append(name).append("\"");
}

std::string LackText(const FontUse &font)
{
    return "font " + Quoted(font.served) + " lacks " + std::to_string(font.missingGlyphs) + " of " +
           std::to_string(font.characters) + " characters" +
           (font.served == font.asked ? "" : " of " + Quoted(font.asked)) + ": install one that has them";
}

std::string CutText(const DocumentEnd &end)
{
    std::string text = "the file is cut short, no line %%PageTrailer, %%Trailer or %%EOF ends it";
    if (const std::string open = OpenText(end.open); !open.empty())
        text += ", within " + open;
    if (end.isInLine)
        text += ", in the middle of a line";
    return text + ": look for a whole copy";
}

std::string UndrawnText(const Undrawn &undrawn)
{
    return "the drawing ends at line " + std::to_string(undrawn.line) +
           ", a line %%EOF within a placed or binary section, and " + std::to_string(undrawn.bytes) +
           " bytes behind that are not drawn: take that line out";
}

// Says what was left out.
std::string SalvageText(const Outcome &outcome)
{
    const Salvage &salvage = outcome.salvage;
    std::string text;
    if (salvage.faults > 0) {
        text = std::to_string(salvage.faults).append(salvage.faults == 1 ? " fault is" : " faults are") +
               " left out: ";
        for (size_t i = 0; i < salvage.first.size(); ++i)
            text.append(i == 0 ? "" : "; ").append(FaultText(salvage.first[i]));
        if (salvage.faults > salvage.first.size())
            text.append("; and so on");
    }
    if (salvage.isCut) {
        const std::string place = FaultText(outcome.fault);
        text.append(text.empty() ? "" : "; ").append("the drawing is cut off ");
        text.append(place.empty() ? "near byte " + std::to_string(outcome.bytesRead) : "at " + place);
    }
    return text;
}

// Says of an ink why a press does not print it as the drawing means it; empty: it does. So many mixtures have its name.
std::string InkText(std::string_view name, size_t mixtures)
{
    if (name.empty())
        return "a spot ink without a name is painted in process inks in PDF: name it";
    if (!CanHavePlate(name))
        return "spot ink " + Quoted(name) + " is painted in process inks in PDF, where that name means " +
               (name == "All" ? "every plate" : "no plate") + ": rename it";
    return mixtures < 2 ? ""
                        : "spot ink " + Quoted(name) + " is mixed from process inks in " +
                              std::to_string(mixtures) + " ways and has one plate: rename all but one";
}

std::string LengthText(double points)
{
    return Decimal(std::ceil(points * 100) / 100) + " pt";
}

// Says how much of a drawing its page has no room for.
std::string OverhangText(const DrawnPage &page)
{
    std::string text = "the drawing is ";
    if (page.tooWide > 0)
        text += LengthText(page.tooWide) + " wider";
    if (page.tooHigh > 0)
        text += (page.tooWide > 0 ? " and " : "") + LengthText(page.tooHigh) + " higher";
    return text +
           " than its room on the page: choose a larger page, a smaller margin, or drawing as the page";
}

void AddInkWarnings(const std::vector<SpotUse> &spots, std::vector<std::string> *warnings)
{
    std::map<std::string_view, size_t> mixtures;
    for (const SpotUse &spot : spots)
        ++mixtures[spot.name];
    for (const auto &[name, count] : mixtures) {
        if (std::string text = InkText(name, count); !text.empty())
            warnings->push_back(std::move(text));
    }
}

} // namespace

std::vector<std::string> ListWarnings(const Outcome &outcome, std::string_view fontHelp)
{
    const std::string help = std::string(": ").append(fontHelp);
    const bool isGivenUp = !outcome.lackedFont.empty();
    std::vector<std::string> warnings;
    for (const Report &report : outcome.reports) {
        if (!(isGivenUp && report.number == kVXProblemFont) && !IsCounted(outcome.unshown, report.number))
            warnings.push_back(WithoutFullStop(report.message.empty() ? report.title : report.message));
    }
    for (std::string &text : UnshownTexts(outcome.unshown))
        warnings.push_back(std::move(text));
    AddInkWarnings(outcome.spots, &warnings);
    if (outcome.page.tooWide > 0 || outcome.page.tooHigh > 0)
        warnings.push_back(OverhangText(outcome.page));
    for (const FontUse &font : outcome.fonts) {
        if (isGivenUp && font.match == FontMatch::Missing)
            continue;
        if (font.match == FontMatch::Substitute)
            warnings.push_back("no font " + Quoted(font.asked) + ", drawn with " + Quoted(font.served) +
                               help);
        if (font.match == FontMatch::Missing)
            warnings.push_back("no font " + Quoted(font.asked) + ", drawn as boxes" + help);
        if (font.match != FontMatch::Missing && font.missingGlyphs > 0)
            warnings.push_back(LackText(font));
    }
    if (!outcome.damage.empty())
        warnings.push_back(outcome.damage + ": " + std::to_string(outcome.bytesUnpacked) +
                           " bytes came out of them");
    if (outcome.salvage.IsAny())
        warnings.push_back(SalvageText(outcome));
    if (outcome.result == kVXOk && outcome.headerAccepted && !outcome.end.isSaid)
        warnings.push_back(CutText(outcome.end));
    if (outcome.end.undrawn.line != 0)
        warnings.push_back(UndrawnText(outcome.end.undrawn));
    if (const uint64_t unknown = outcome.unknownCharacters; unknown > 0)
        warnings.push_back(std::to_string(unknown) +
                           (unknown == 1 ? " character of the text means nothing in its"
                                         : " characters of the text mean nothing in their") +
                           " font's character set, written as U+FFFD: vx text --json shows where");
    if (outcome.undrawnTexts > 0)
        warnings.push_back(
            std::to_string(outcome.undrawnTexts) + (outcome.undrawnTexts == 1 ? " text is" : " texts are") +
            " not drawn, there was nothing to take glyphs from: read the document with its fonts");
    if (const uint64_t placed = outcome.placedTexts; placed > 0)
        warnings.push_back(std::to_string(placed) +
                           (placed == 1 ? " text along a path or down a column stands"
                                        : " texts along paths or down columns stand") +
                           " character by character in the SVG, no line to edit: type " +
                           (placed == 1 ? "it" : "them") + " anew in the editor");
    return warnings;
}

std::vector<std::string> ListOmitted(const Omitted &omitted)
{
    std::vector<std::string> warnings;
    if (omitted.reports > 0)
        warnings.push_back(std::to_string(omitted.reports) + " more problems are not told of");
    if (omitted.fonts > 0)
        warnings.push_back(std::to_string(omitted.fonts) + " more fonts are not told of");
    if (omitted.layers > 0)
        warnings.push_back(std::to_string(omitted.layers) + " more layers are not told of");
    if (omitted.spots > 0)
        warnings.push_back(std::to_string(omitted.spots) + " more spot inks are not told of");
    return warnings;
}

std::string MalformedPlace(const Outcome &outcome)
{
    if (const std::string place = FaultText(outcome.fault); !place.empty())
        return ", " + place;
    return " near byte " + std::to_string(outcome.bytesRead) + " of " +
           std::to_string(outcome.bytesUnpacked) +
           (outcome.bytesUnpacked == outcome.bytesTotal ? "" : " unpacked");
}

std::string UnconfinedText(const Confinement &confinement)
{
    std::string text;
    if (!confinement.byLandlock)
        text = "no sandbox for files, no Landlock in this kernel (" + SystemText(confinement.landlockError) +
               ")";
    if (!confinement.bySeccomp)
        text += std::string(text.empty() ? "no sandbox for" : "; nor for") +
                " calls, no seccomp in this kernel (" + SystemText(confinement.seccompError) + ")";
    return text;
}

} // namespace vxhost
