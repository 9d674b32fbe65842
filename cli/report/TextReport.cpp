#include "cli/report/TextReport.h"

#include "library/FactsJson.h"

#include <cmath>
#include <cstddef>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

double Rounded(double value)
{
    constexpr double kSteps = 1000; // of a point
    return std::round(value * kSteps) / kSteps;
}

std::string TextOf(const TextLine &line)
{
    std::string text;
    for (const TextRun &run : line)
        text += run.text;
    return text;
}

std::string_view NameOf(TextKind kind)
{
    switch (kind) {
    case TextKind::Path:
        return "path";
    case TextKind::Area:
        return "area";
    default:
        return "point";
    }
}

Json ColourJson(const Colour &colour)
{
    Json json;
    if (colour.space == ColourSpace::Gray)
        json["gray"] = colour.ink[0];
    else
        json["cmyk"] = colour.ink;
    // A text is filled with one colour at a time: blends are none.
    if (const SpotShare &share = colour.spots[0]; share.ink != nullptr) {
        json["spot"] = share.ink->name;
        json["amount"] = share.amount;
    }
    return json;
}

Json LineJson(const TextLine &line)
{
    Json json;
    json["text"] = TextOf(line);
    json["runs"] = Json::array();
    for (const TextRun &run : line) {
        Json &made = json["runs"].emplace_back();
        made["text"] = run.text;
        made["font"] = run.font->asked;
        made["served"] = run.font->served;
        made["size"] = Rounded(run.size);
        made["colour"] = ColourJson(run.colour);
    }
    return json;
}

} // namespace

std::string TextLines(const FoundText &text, std::string_view prefix)
{
    std::string lines;
    for (const TextLine &line : text.lines)
        lines.append(prefix).append(TextOf(line)).append("\n");
    return lines;
}

std::string TextJson(const FoundText &text, const std::string &input)
{
    const Box &box = text.box;
    Json json;
    json["file"] = input;
    json["layer"] = text.layer == nullptr ? Json() : Json(text.layer->name);
    json["printing"] = text.layer == nullptr || text.layer->isPrinting;
    json["kind"] = NameOf(text.kind);
    json["box"] = {Rounded(box.left), Rounded(box.bottom), Rounded(box.right), Rounded(box.top)};
    json["lines"] = Json::array();
    for (const TextLine &line : text.lines)
        json["lines"].push_back(LineJson(line));
    json["unknownCharacters"] = text.unknownCharacters;
    return JsonLine(json);
}

} // namespace vxhost
