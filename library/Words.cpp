#include "library/Words.h"

#include "library/ValuesJson.h"

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

std::string TextOf(const TextLine &line)
{
    std::string text;
    for (const TextRun &run : line.runs)
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

Json LineJson(const TextLine &line)
{
    Json json;
    json["text"] = TextOf(line);
    json["origin"] = PointJson(line.start.at);
    json["angle"] = AngleOf(line.start.along);
    json["length"] = Rounded(line.length);
    json["height"] = Rounded(line.height);
    json["vertical"] = line.isColumn;
    for (const TextPlace &place : line.places)
        json["places"].push_back({Rounded(place.at.x), Rounded(place.at.y), AngleOf(place.along)});
    json["runs"] = Json::array();
    for (const TextRun &run : line.runs) {
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
    Json &made = *json;
    made["layer"] = text.layer == nullptr ? Json() : Json(text.layer->name);
    made["printing"] = text.layer == nullptr || text.layer->isPrinting;
    made["kind"] = NameOf(text.kind);
    made["box"] = BoxJson(text.box);
    made["lines"] = Json::array();
    for (const TextLine &line : text.lines)
        made["lines"].push_back(LineJson(line));
    made["unknownCharacters"] = text.unknownCharacters;
}

} // namespace vxhost
