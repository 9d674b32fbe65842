// Strokes as attributes, in the space where their pen is round.
#pragma once

#include "devices/svg/XmlWriter.h"
#include "devices/vector/Frame.h"
#include "host/drawing/Paint.h"

namespace vxhost::svg
{

// What the root element says once, and elements say only where theirs differs.
constexpr double kDefaultMiterLimit = 10;

// The frame of a stroke whose path goes to the picture by toPicture.
Frame FindStrokeFrame(const StrokeStyle &style, const Matrix &toPicture);

// Writes " stroke-width="…"" and whatever else differs from a stroke without attributes. The element has the frame's
// transform.
void WriteStroke(const StrokeStyle &style, const Frame &frame, XmlWriter *xml);

} // namespace vxhost::svg
