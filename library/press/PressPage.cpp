#include "library/press/PressPage.h"

#include "library/FactsJson.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

constexpr unsigned char kTemplate[] = {
#include "PressPage.inc"
};

// The template has this where the facts go.
constexpr std::string_view kMark = "{{facts}}";

// Returns a data URL. Bytes are taken three by three.
std::string PngUrl(std::string_view png)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string url = "data:image/png;base64,";
    url.reserve(url.size() + (png.size() + 2) / 3 * 4);
    for (size_t at = 0; at < png.size(); at += 3) {
        const auto byte = [&](size_t i) {
            return at + i < png.size() ? static_cast<uint32_t>(static_cast<uint8_t>(png[at + i])) : 0;
        };
        const uint32_t bits = byte(0) << 16 | byte(1) << 8 | byte(2);
        for (size_t i = 0; i < 4; ++i)
            url += at + i <= png.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
    }
    return url;
}

std::string ColourText(Rgb colour)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "#";
    for (const uint8_t level : {colour.r, colour.g, colour.b}) {
        text += kDigits[level >> 4];
        text += kDigits[level & 15];
    }
    return text;
}

// No text of a drawing may end the element that the facts stand in, or begin a comment there.
std::string ForScript(std::string_view json)
{
    std::string text;
    text.reserve(json.size());
    for (const char c : json) {
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    }
    return text;
}

} // namespace

Failure WritePressPage(PressPage page, const ByteSink &sink)
{
    page.facts["picture"] = PngUrl(std::exchange(page.picture, {}));
    page.facts["heatMap"] = PngUrl(std::exchange(page.heatMap, {}));
    page.facts["plates"] = nlohmann::ordered_json::array();
    for (PagePlate &plate : page.plates)
        page.facts["plates"].push_back({{"ink", std::move(plate.ink)},
                                        {"colour", ColourText(plate.colour)},
                                        {"png", PngUrl(std::exchange(plate.png, {}))}});
    const std::string_view text(reinterpret_cast<const char *>(kTemplate), sizeof kTemplate);
    const size_t mark = text.find(kMark);
    const std::string facts = ForScript(JsonLine(page.facts));
    for (const std::string_view part :
         {text.substr(0, mark), std::string_view(facts), text.substr(mark + kMark.size())}) {
        if (Failure failure = sink(std::as_bytes(std::span(part))))
            return failure;
    }
    return {};
}

} // namespace vxhost
