#include "devices/svg/StrokeAttributes.h"

#include <algorithm>

namespace vxhost::svg
{

namespace
{

// The width in points of a line that is to be as thin as can be seen, for viewers that do not know lines in pixels.
constexpr double kThinnest = 0.5;

} // namespace

Frame FindStrokeFrame(const StrokeStyle &style, const Matrix &toPicture)
{
    return FindFrame(Product(style.matrix, toPicture));
}

void WriteStroke(const StrokeStyle &style, const Frame &frame, XmlWriter *xml)
{
    const double width = style.width * frame.scale;
    const bool isThinnest = width < kSmallestNumber;
    const bool isDashed = std::ranges::any_of(
        style.dashes, [&](double length) { return length * frame.scale >= kSmallestNumber; });
    xml->Attribute("stroke-width", isThinnest ? kThinnest : width);
    // The lengths of dashes would be in pixels as well.
    if (isThinnest && !isDashed)
        xml->Markup(" vector-effect=\"non-scaling-stroke\"");
    if (style.cap != LineCap::Butt)
        xml->Markup(style.cap == LineCap::Round ? " stroke-linecap=\"round\"" : " stroke-linecap=\"square\"");
    if (style.join != LineJoin::Miter)
        xml->Markup(style.join == LineJoin::Round ? " stroke-linejoin=\"round\""
                                                  : " stroke-linejoin=\"bevel\"");
    else if (style.miterLimit != kDefaultMiterLimit)
        xml->Attribute("stroke-miterlimit", style.miterLimit);
    if (!isDashed)
        return;
    xml->Markup(" stroke-dasharray=\"");
    for (size_t i = 0; i < style.dashes.size(); ++i) {
        if (i > 0)
            xml->Markup(" ");
        xml->Number(style.dashes[i] * frame.scale);
    }
    xml->Markup("\"");
    if (style.dashPhase * frame.scale >= kSmallestNumber)
        xml->Attribute("stroke-dashoffset", style.dashPhase * frame.scale);
}

} // namespace vxhost::svg
