#include "cli/report/FontsReport.h"

#include "cli/report/ResultJson.h"
#include "host/reading/Utf8.h"
#include "library/FactsJson.h"

#include <fmt/format.h>

#include <algorithm>

namespace vxhost
{

namespace
{

constexpr size_t kMaxName = 255;

std::string Why(const FontUse &font)
{
    switch (font.match) {
    case FontMatch::Exact:
        return "itself";
    case FontMatch::StandIn:
        return fmt::format("stand-in {}, of the same widths", Printable(font.served, kMaxName));
    case FontMatch::Substitute:
        return fmt::format("substitute {}", Printable(font.served, kMaxName));
    default:
        return font.strings > 0 ? "missing, boxes" : "missing";
    }
}

std::string Counted(uint64_t count, const char *noun)
{
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

template <typename Fonts, typename NameOf>
size_t WidestName(const Fonts &fonts, NameOf &&nameOf)
{
    size_t widest = 0;
    for (const auto &font : fonts)
        widest = std::max(widest, nameOf(font).size());
    return widest;
}

} // namespace

std::string FontUseText(const FontUse &font)
{
    std::string text = fmt::format("{}; {}, {}", Why(font), Counted(font.strings, "string"),
                                   Counted(font.characters, "character"));
    return font.missingGlyphs > 0 ? text + fmt::format(", {} missing", font.missingGlyphs) : text;
}

std::string FontsText(const std::string &input, const Result &result, const std::string & /*error*/)
{
    const Outcome &outcome = result.outcome;
    if (!outcome.headerAccepted)
        return "";
    std::string text = fmt::format("{}: {}\n", Printable(InputName(input), 4096),
                                   outcome.fonts.empty() ? "no text" : Counted(outcome.fonts.size(), "font"));
    const size_t width =
        WidestName(outcome.fonts, [](const FontUse &font) { return Printable(font.asked, kMaxName); });
    for (const FontUse &font : outcome.fonts) {
        text += fmt::format("  {:<{}}  {}\n", Printable(font.asked, kMaxName), width, FontUseText(font));
        if (!font.file.empty())
            text += fmt::format("  {:<{}}  {}\n", "", width, Printable(font.file, 4096));
    }
    return text;
}

std::string FontsJson(const std::string &input, const Result &result, const std::string &error)
{
    const Outcome &outcome = result.outcome;
    nlohmann::ordered_json json;
    json["file"] = input;
    json["vx"] = outcome.headerAccepted;
    if (!error.empty())
        json["error"] = error;
    json["fonts"] = FontUsesJson(outcome.fonts);
    AddConfinement(result, &json);
    if (result.omitted.fonts > 0)
        json["omitted"]["fonts"] = result.omitted.fonts;
    return JsonLine(json);
}

std::string FontListText(const FontList &fonts)
{
    std::string text;
    for (int32_t i = 0; i < fonts.Count(); ++i) {
        const FontList::Entry &font = fonts.At(i);
        text += Printable(font.postScriptName, kMaxName);
        if (!font.servedBy.empty())
            text += ", stand-in " + Printable(font.servedBy, kMaxName);
        text += fmt::format(": {}\n", font.file.empty() ? "boxes" : Printable(font.file, 4096));
    }
    return text;
}

std::string FontListJson(const FontList &fonts)
{
    std::string text;
    for (int32_t i = 0; i < fonts.Count(); ++i) {
        const FontList::Entry &font = fonts.At(i);
        nlohmann::ordered_json json;
        json["name"] = font.postScriptName;
        json["family"] = font.familyName;
        json["served"] = font.servedBy.empty() ? font.postScriptName : font.servedBy;
        json["file"] = font.file;
        text += JsonLine(json);
    }
    return text;
}

} // namespace vxhost
