#include "library/FactsJson.h"

#include "host/JsonText.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

std::string_view NameOf(FontMatch match)
{
    switch (match) {
    case FontMatch::Exact:
        return "exact";
    case FontMatch::StandIn:
        return "stand-in";
    case FontMatch::Substitute:
        return "substitute";
    default:
        return "missing";
    }
}

Json CountsJson(const Counts &counts)
{
    Json json;
    json["clips"] = counts.clips;
    json["cmyk"] = counts.cmyk;
    json["fills"] = counts.fills;
    json["gray"] = counts.gray;
    json["overprint"] = counts.overprint;
    json["segments"] = counts.segments;
    json["shows"] = counts.shows;
    json["strokes"] = counts.strokes;
    return json;
}

// Tells of what there is, and nothing of the rest.
Json NonzeroJson(std::initializer_list<std::pair<const char *, uint64_t>> counts)
{
    Json json = Json::object();
    for (const auto &[name, count] : counts) {
        if (count > 0)
            json[name] = count;
    }
    return json;
}

Json OpenThingsJson(const OpenThings &open)
{
    return NonzeroJson({{"groups", open.groups},
                        {"compoundPaths", open.compoundPaths},
                        {"saves", open.saves},
                        {"layers", open.layers},
                        {"gradients", open.gradients},
                        {"texts", open.texts}});
}

Json UnshownJson(const Unshown &unshown)
{
    return NonzeroJson({{"patterns", unshown.patterns},
                        {"placedPictures", unshown.placedPictures},
                        {"postscript", unshown.postscript},
                        {"binary", unshown.binary},
                        {"betweenLayers", unshown.betweenLayers}});
}

Json UndrawnJson(const Undrawn &undrawn)
{
    Json json = Json::object();
    if (undrawn.line != 0) {
        json["line"] = undrawn.line;
        json["bytes"] = undrawn.bytes;
    }
    return json;
}

Json FaultJson(const DocumentFault &fault)
{
    Json json;
    json["line"] = fault.line;
    if (fault.column > 0)
        json["column"] = fault.column;
    json["text"] = fault.text;
    return json;
}

Json SalvageJson(const Salvage &salvage)
{
    Json json;
    json["faults"] = salvage.faults;
    json["first"] = Json::array();
    for (const DocumentFault &fault : salvage.first)
        json["first"].push_back(FaultJson(fault));
    json["cut"] = salvage.isCut;
    return json;
}

Json ReportsJson(const std::vector<Report> &reports)
{
    Json list = Json::array();
    for (const Report &report : reports) {
        Json &json = list.emplace_back();
        json["message"] = report.message;
        json["number"] = report.number;
        json["title"] = report.title;
    }
    return list;
}

// Returns the number as the document wrote it, before 16.16 rounded it.
double InkAmount(double value)
{
    return std::round(value * 1e4) / 1e4;
}

Json LayersJson(const std::vector<Layer> &layers)
{
    Json list = Json::array();
    for (const Layer &layer : layers) {
        Json &json = list.emplace_back();
        json["name"] = layer.name;
        json["visible"] = layer.isVisible;
        json["preview"] = layer.isPreviewed;
        json["enabled"] = layer.isEnabled;
        json["printing"] = layer.isPrinting;
        json["dimmed"] = layer.isDimmed;
        json["colour"] = {layer.rgb[0], layer.rgb[1], layer.rgb[2]};
        json["parent"] = layer.parent;
    }
    return list;
}

Json SpotsJson(const std::vector<SpotUse> &spots)
{
    Json list = Json::array();
    for (const SpotUse &spot : spots) {
        Json &json = list.emplace_back();
        json["name"] = spot.name;
        json["cmyk"] = Json::array();
        for (const double part : spot.alternate)
            json["cmyk"].push_back(InkAmount(part));
        json["tints"] = {InkAmount(spot.leastTint), InkAmount(spot.mostTint)};
        json["mixtures"] = std::ranges::count(spots, spot.name, &SpotUse::name);
        json["plate"] = CanHavePlate(spot.name);
    }
    return list;
}

} // namespace

Json FontUsesJson(const std::vector<FontUse> &fonts)
{
    Json list = Json::array();
    for (const FontUse &font : fonts) {
        Json &json = list.emplace_back();
        json["asked"] = font.asked;
        json["characters"] = font.characters;
        json["file"] = font.file;
        json["match"] = NameOf(font.match);
        json["missingGlyphs"] = font.missingGlyphs;
        json["served"] = font.served;
        json["strings"] = font.strings;
    }
    return list;
}

void AddFacts(const HeaderFacts &header, const Outcome &outcome, nlohmann::ordered_json *json)
{
    const Box &box = outcome.box;
    auto &facts = *json;
    facts["vx"] = outcome.headerAccepted;
    if (!outcome.headerAccepted)
        return;
    facts["version"] = header.version;
    facts["title"] = header.title;
    facts["creator"] = header.creator;
    facts["creationDate"] = header.creationDate;
    facts["date"] = header.created ? IsoText(*header.created) : "";
    if (header.isDateOrderOpen)
        facts["dateOrder"] = "open";
    facts["box"] = {box.left, box.bottom, box.right, box.top};
    facts["points"] = {box.Width(), box.Height()};
    facts["millimetres"] = {Millimetres(box.Width()), Millimetres(box.Height())};
    facts["monochrome"] = outcome.monochrome;
    facts["processColours"] = header.processColours;
    facts["customColours"] = header.customColours;
    facts["declaredFonts"] = header.fonts;
    facts["layers"] = LayersJson(outcome.layers);
    facts["inks"] = SpotsJson(outcome.spots);
    facts["fonts"] = FontUsesJson(outcome.fonts);
    facts["uses"] = CountsJson(outcome.counts);
    facts["problems"] = ReportsJson(outcome.reports);
    facts["unshown"] = UnshownJson(outcome.unshown);
    facts["whole"] = outcome.end.isSaid;
    facts["open"] = OpenThingsJson(outcome.end.open);
    facts["undrawn"] = UndrawnJson(outcome.end.undrawn);
    if (outcome.fault.line > 0)
        facts["fault"] = FaultJson(outcome.fault);
    if (outcome.salvage.IsAny())
        facts["salvage"] = SalvageJson(outcome.salvage);
    facts["bytes"] = outcome.bytesTotal;
    facts["unpackedBytes"] = outcome.bytesUnpacked;
    facts["lineEnds"] = header.lineEnds;
    facts["epsWrapper"] = header.epsWrapper;
    facts["wrapping"] = header.wrapping;
    facts["damage"] = outcome.damage;
    facts["result"] = outcome.result;
}

std::string JsonLine(const nlohmann::ordered_json &json)
{
    return EscapeControls(json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + "\n";
}

} // namespace vxhost
