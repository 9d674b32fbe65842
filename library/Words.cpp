#include "library/Words.h"

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

// Any page will do: words are found wherever they stand.
Page AnyPage()
{
    Page page;
    page.box = {0, 0, 1, 1};
    return page;
}

} // namespace

Outcome ReadWords(Reading &reading, const WordsDevice::TextSink &sink)
{
    WordsDevice device(sink);
    Outcome outcome = reading.Draw(AnyPage(), device);
    outcome.unknownCharacters = device.UnknownCharacters();
    outcome.fonts.clear();
    outcome.spots.clear();
    return outcome;
}

std::string TextLines(const FoundText &text, std::string_view prefix)
{
    std::string lines;
    for (const TextLine &line : text.lines)
        lines.append(prefix).append(TextOf(line)).append("\n");
    return lines;
}

void AddText(const FoundText &text, nlohmann::ordered_json *json)
{
    const Box &box = text.box;
    Json &made = *json;
    made["layer"] = text.layer == nullptr ? Json() : Json(text.layer->name);
    made["printing"] = text.layer == nullptr || text.layer->isPrinting;
    made["kind"] = NameOf(text.kind);
    made["box"] = {Rounded(box.left), Rounded(box.bottom), Rounded(box.right), Rounded(box.top)};
    made["lines"] = Json::array();
    for (const TextLine &line : text.lines)
        made["lines"].push_back(LineJson(line));
    made["unknownCharacters"] = text.unknownCharacters;
}

} // namespace vxhost
