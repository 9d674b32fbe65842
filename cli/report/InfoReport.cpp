#include "cli/report/InfoReport.h"

#include "cli/report/FontsReport.h"
#include "cli/report/ResultJson.h"
#include "host/reading/Utf8.h"
#include "library/Decimal.h"
#include "library/FactsJson.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kLabelWidth = 16;

// Makes "  label           value"; an empty value makes nothing at all.
std::string Row(std::string_view label, std::string_view value)
{
    return value.empty() ? "" : fmt::format("  {:<{}}{}\n", label, kLabelWidth, Printable(value, 1000));
}

std::string Joined(const std::vector<std::string> &values)
{
    return fmt::format("{}", fmt::join(values, ", "));
}

std::string Count(uint64_t count, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string UsedColours(const Outcome &outcome)
{
    std::vector<std::string> used;
    if (outcome.counts.gray)
        used.emplace_back("gray");
    if (outcome.counts.cmyk)
        used.emplace_back("CMYK");
    if (outcome.counts.overprint)
        used.emplace_back("overprint");
    std::string text = used.empty() ? "none" : Joined(used);
    return outcome.monochrome ? text + "; declared black and white" : text;
}

// Makes one row a font; where the document shows no text, a row of what the header declares.
std::string FontRows(const Result &result)
{
    if (result.outcome.fonts.empty())
        return Row("fonts", Joined(result.header.fonts));
    std::string rows;
    for (const FontUse &font : result.outcome.fonts)
        rows += Row(rows.empty() ? "fonts" : "", font.asked + ": " + FontUseText(font));
    return rows;
}

std::string Usage(const Counts &counts)
{
    return Joined({Count(counts.fills, "fill", "fills"), Count(counts.strokes, "stroke", "strokes"),
                   Count(counts.clips, "clip", "clips"),
                   Count(counts.segments, "path segment", "path segments"),
                   Count(counts.shows, "text", "texts")});
}

// Each layer, and what is not as it is with most.
std::string LayerRows(const std::vector<Layer> &layers)
{
    std::string rows;
    for (size_t i = 0; i < layers.size(); ++i) {
        const Layer &layer = layers[i];
        std::string depth;
        // A worker is not believed: a parent counts only if it stands before its layer.
        for (size_t at = i; layers[at].parent >= 0 && static_cast<size_t>(layers[at].parent) < at;
             at = static_cast<size_t>(layers[at].parent))
            depth += "  ";
        std::vector<std::string> flags;
        const std::pair<bool, const char *> words[] = {{!layer.isPrinting, "does not print"},
                                                       {!layer.isVisible, "not visible"},
                                                       {!layer.isPreviewed, "outlines in an editor"},
                                                       {!layer.isEnabled, "locked"},
                                                       {layer.isDimmed, "dimmed"}};
        for (const auto &[is, word] : words) {
            if (is)
                flags.emplace_back(word);
        }
        rows += Row(rows.empty() ? "layers" : "",
                    depth + layer.name + (flags.empty() ? "" : ": " + Joined(flags)));
    }
    return rows;
}

std::string SpotRows(const std::vector<SpotUse> &spots)
{
    std::string rows;
    for (const SpotUse &spot : spots) {
        const std::string tints =
            spot.leastTint == spot.mostTint
                ? fmt::format("tint {}", Decimal(spot.leastTint, 4))
                : fmt::format("tints {} to {}", Decimal(spot.leastTint, 4), Decimal(spot.mostTint, 4));
        rows += Row(rows.empty() ? "spot inks" : "",
                    fmt::format("{}: {} {} {} {}, {}{}", spot.name.empty() ? "no name" : spot.name,
                                Decimal(spot.alternate[0], 4), Decimal(spot.alternate[1], 4),
                                Decimal(spot.alternate[2], 4), Decimal(spot.alternate[3], 4), tints,
                                CanHavePlate(spot.name) ? "" : ", no plate in PDF"));
    }
    return rows;
}

// Returns the date as it was found, and as it is read.
std::string CreatedText(const HeaderFacts &header)
{
    if (header.created)
        return fmt::format("{}, which is {}", header.creationDate, IsoText(*header.created));
    return header.isDateOrderOpen
               ? header.creationDate + ", the month or the day first: say which with --date-order"
               : header.creationDate;
}

} // namespace

std::string InfoText(const std::string &input, const Result &result, const std::string &error)
{
    const Outcome &outcome = result.outcome;
    const HeaderFacts &header = result.header;
    if (!outcome.headerAccepted)
        return "";
    const Box &box = outcome.box;
    std::string text =
        fmt::format("{}: VX document, version {}\n", Printable(InputName(input), 4096), header.version);
    text += Row("title", header.title);
    text += Row("creator", header.creator);
    text += Row("created", CreatedText(header));
    text += Row("box", fmt::format("{} {} {} {}", Decimal(box.left), Decimal(box.bottom), Decimal(box.right),
                                   Decimal(box.top)));
    text +=
        Row("size", fmt::format("{} x {} pt, {} x {} mm", Decimal(box.Width()), Decimal(box.Height()),
                                Decimal(Millimetres(box.Width()), 2), Decimal(Millimetres(box.Height()), 2)));
    text += Row("colour", UsedColours(outcome));
    text += Row("process colours", Joined(header.processColours));
    text += Row("custom colours", Joined(header.customColours));
    text += LayerRows(outcome.layers);
    text += SpotRows(outcome.spots);
    text += FontRows(result);
    text += Row("uses", Usage(outcome.counts));
    text += Row("file", fmt::format("{} bytes{}, line ends {}{}{}", outcome.bytesTotal,
                                    outcome.bytesUnpacked == outcome.bytesTotal
                                        ? ""
                                        : fmt::format(", {} unpacked", outcome.bytesUnpacked),
                                    header.lineEnds.empty() ? "none" : header.lineEnds,
                                    header.epsWrapper ? ", in a binary EPS wrapper" : "",
                                    outcome.end.isSaid ? "" : ", cut short"));
    text += Row("damage", outcome.damage);
    if (const Undrawn &undrawn = outcome.end.undrawn; undrawn.line != 0)
        text += Row("not drawn", fmt::format("{} bytes, behind a line %%EOF within a section, line {}",
                                             undrawn.bytes, undrawn.line));
    text += Row("left open", OpenText(outcome.end.open));
    for (const Report &report : outcome.reports) {
        if (!IsCounted(outcome.unshown, report.number))
            text += Row("problem", report.message.empty() ? report.title : report.message);
    }
    for (const std::string &unshown : UnshownTexts(outcome.unshown))
        text += Row("problem", unshown);
    if (!error.empty())
        text += Row("problem", error);
    return text;
}

std::string InfoJson(const std::string &input, const Result &result, const std::string &error)
{
    nlohmann::ordered_json json;
    json["file"] = input;
    if (!error.empty())
        json["error"] = error;
    AddResult(result, &json);
    return JsonLine(json);
}

} // namespace vxhost
