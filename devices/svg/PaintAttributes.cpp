#include "devices/svg/PaintAttributes.h"

#include <algorithm>

namespace vxhost::svg
{

namespace
{

// Nothing shows through solid black, whatever the other inks are.
bool IsSolidBlack(const Colour &colour)
{
    return colour.space == ColourSpace::Gray ? colour.ink[0] == 0 : colour.ink[3] == 1;
}

bool LeavesAnInk(const Colour &colour)
{
    return colour.space == ColourSpace::Gray || std::ranges::find(colour.ink, 0.0) != std::end(colour.ink);
}

// Writes "cmyk="…"" or "gray="…"" behind the prefix.
void WriteInks(const Colour &colour, std::string_view prefix, XmlWriter *xml)
{
    xml->Markup(prefix);
    xml->Markup(colour.space == ColourSpace::Gray ? "gray=\"" : "cmyk=\"");
    xml->Number(colour.ink[0]);
    for (int i = 1; i < 4 && colour.space == ColourSpace::Cmyk; ++i) {
        xml->Markup(" ");
        xml->Number(colour.ink[i]);
    }
    xml->Markup("\"");
    const std::string name(prefix.substr(1));
    std::string_view number; // of the ink
    for (const SpotShare &share : colour.spots) {
        if (share.ink == nullptr)
            continue;
        xml->Attribute(name + "ink" + std::string(number), share.ink->name);
        xml->Attribute(name + "tint" + std::string(number), 1 - share.amount);
        number = "-2";
    }
}

} // namespace

void WriteColour(Rgb rgb, XmlWriter *xml)
{
    constexpr char kDigits[] = "0123456789abcdef";
    char text[7] = {'#'};
    char *to = text + 1;
    for (const uint8_t level : {rgb.r, rgb.g, rgb.b}) {
        *to++ = kDigits[level >> 4];
        *to++ = kDigits[level & 15];
    }
    xml->Markup({text, sizeof text});
}

bool PaintAttributes::Multiplies(const Paint &paint) const
{
    return simulateOverprint_ && paint.overprint && LeavesAnInk(paint.colour) && !IsSolidBlack(paint.colour);
}

void PaintAttributes::Write(const Paint &paint, PaintUse use, XmlWriter *xml)
{
    const bool isFill = use == PaintUse::Fill;
    xml->Markup(isFill ? " fill=\"" : " stroke=\"");
    WriteColour(ScreenColour(paint.colour), xml);
    xml->Markup("\"");
    WriteInks(paint.colour, isFill ? " data-" : " data-stroke-", xml);
    if (paint.overprint)
        xml->Markup(isFill ? " data-overprint=\"true\"" : " data-stroke-overprint=\"true\"");
}

void PaintAttributes::WriteStop(const Colour &colour, XmlWriter *xml)
{
    xml->Markup(" stop-color=\"");
    WriteColour(ScreenColour(colour), xml);
    xml->Markup("\"");
    WriteInks(colour, " data-", xml);
}

} // namespace vxhost::svg
