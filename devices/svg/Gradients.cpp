#include "devices/svg/Gradients.h"

#include "devices/svg/PathData.h"
#include "devices/svg/RampStops.h"
#include "devices/vector/Frame.h"

#include <algorithm>
#include <cmath>

namespace vxhost::svg
{

namespace
{

constexpr size_t kMaxRampBytes = size_t{4} << 20;

using Circle = Shading::Circle;

// The point where circles end that go on shrinking beyond the inner one.
Point Apex(const Circle &outer, const Circle &inner)
{
    const double way = outer.radius / (outer.radius - inner.radius);
    return {outer.centre.x + (inner.centre.x - outer.centre.x) * way,
            outer.centre.y + (inner.centre.y - outer.centre.y) * way};
}

void AppendNumber(double value, std::string *to)
{
    char text[kMaxNumber];
    to->append(text, WriteNumber(value, text));
    *to += ' ';
}

// All that the stops of a ramp are made of, as it would be written: the same ramp elsewhere on the page differs by
// roundings.
std::string RampKey(const Shading &shading, double innerRadius)
{
    std::string key;
    AppendNumber(innerRadius, &key);
    key += shading.overprint ? 'o' : ' ';
    for (const ColourSpan &span : shading.spans) {
        AppendNumber(span.from, &key);
        AppendNumber(span.to, &key);
        for (const Colour &colour : span.colours) {
            key += colour.space == ColourSpace::Gray ? 'g' : 'c';
            for (int i = 0; i < (colour.space == ColourSpace::Gray ? 1 : 4); ++i)
                AppendNumber(colour.ink[i], &key);
            for (const SpotShare &share : colour.spots) {
                if (share.ink == nullptr)
                    continue;
                key.append(std::to_string(reinterpret_cast<uintptr_t>(share.ink))).append(" ");
                AppendNumber(share.amount, &key);
            }
        }
    }
    return key;
}

constexpr double kAxial = -1; // stands for the inner radius of an axial shading

} // namespace

bool Gradients::Paint(const Shading &shading)
{
    const Matrix matrix = Product(shading.matrix, toPicture_);
    return shading.kind == ShadingKind::Axial ? PaintAxial(shading, matrix) : PaintRadial(shading, matrix);
}

bool Gradients::PaintAxial(const Shading &shading, const Matrix &matrix)
{
    const double area = Determinant(matrix);
    if (area == 0)
        return false;
    const Ramp ramp = FindRamp(shading, kAxial);
    // The colours of a shading stay the same along the picture of its y axis, those of a gradient along lines square to
    // it.
    const Point start = matrix.Map({0, 0});
    const Point normal = {matrix.d, -matrix.c};
    const double way = area / (normal.x * normal.x + normal.y * normal.y);
    BeginGradient("linearGradient", ramp);
    xml_->Attribute("x1", start.x);
    xml_->Attribute("y1", start.y);
    xml_->Attribute("x2", start.x + normal.x * way);
    xml_->Attribute("y2", start.y + normal.y * way);
    xml_->Markup("/>\n<path d=\"");
    const Path square = {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
                         {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    WritePathData(square, matrix, xml_);
    xml_->Markup("\"");
    EndShape(shading, ramp);
    return true;
}

// The gradient runs from the apex, where the inner disc's colour starts, to the outer circle, so that it needs no
// second radius, which many viewers do not know.
bool Gradients::PaintRadial(const Shading &shading, const Matrix &matrix)
{
    const Circle &outer = shading.first;
    const Frame frame = FindFrame(matrix);
    if (frame.isFlat || !AreNested(outer, shading.last))
        return false;
    const Ramp ramp = FindRamp(shading, shading.last.radius / outer.radius);
    const auto place = [&](Point point) { return frame.fromPicture.Map(matrix.Map(point)); };
    const Point centre = place(outer.centre), focus = place(Apex(outer, shading.last));
    const auto writeCircle = [&] {
        xml_->Attribute("cx", centre.x);
        xml_->Attribute("cy", centre.y);
        xml_->Attribute("r", outer.radius * frame.scale);
    };
    BeginGradient("radialGradient", ramp);
    writeCircle();
    if (focus != centre) {
        xml_->Attribute("fx", focus.x);
        xml_->Attribute("fy", focus.y);
    }
    if (shading.ground.IsEmpty()) {
        xml_->Markup("/>\n<circle");
        writeCircle();
    } else {
        xml_->Markup("/>\n<path d=\"");
        WritePathData(shading.ground, Product(toPicture_, frame.fromPicture), xml_);
        xml_->Markup("\"");
    }
    if (!frame.isPlain)
        xml_->Transform(frame.toPicture);
    EndShape(shading, ramp);
    return true;
}

const Gradients::Ramp &Gradients::FindRamp(const Shading &shading, double innerRadius)
{
    std::string key = RampKey(shading, innerRadius);
    const auto found = ramps_.find(key);
    if (found != ramps_.end())
        return found->second;
    if (rampBytes_ + key.size() > kMaxRampBytes) {
        ramps_.clear();
        rampBytes_ = 0;
    }
    rampBytes_ += key.size();
    return ramps_.emplace(std::move(key), WriteRamp(shading, innerRadius)).first->second;
}

Gradients::Ramp Gradients::WriteRamp(const Shading &shading, double innerRadius)
{
    std::vector<RampStop> stops =
        FindRampStops(shading.spans, [this](const Colour &colour) { return paints_->ScreenColour(colour); });
    if (innerRadius != kAxial) {
        std::ranges::reverse(stops);
        for (RampStop &stop : stops)
            stop.at = 1 - stop.at * (1 - innerRadius);
    }
    Ramp ramp;
    ramp.id = ++lastRamp_;
    xml_->Markup("<linearGradient id=\"r");
    xml_->Number(static_cast<double>(ramp.id));
    xml_->Markup("\">");
    for (const RampStop &stop : stops) {
        xml_->Markup("<stop");
        xml_->Attribute("offset", stop.at);
        paints_->WriteStop(stop.colour, xml_);
        xml_->Markup("/>");
        ramp.multiplies = ramp.multiplies || paints_->Multiplies({stop.colour, shading.overprint});
    }
    xml_->Markup("</linearGradient>\n");
    return ramp;
}

void Gradients::BeginGradient(const char *element, const Ramp &ramp)
{
    xml_->Markup("<");
    xml_->Markup(element);
    xml_->Markup(" id=\"g");
    xml_->Number(static_cast<double>(++lastGradient_));
    xml_->Markup("\" xlink:href=\"#r");
    xml_->Number(static_cast<double>(ramp.id));
    xml_->Markup("\" gradientUnits=\"userSpaceOnUse\"");
}

void Gradients::EndShape(const Shading &shading, const Ramp &ramp)
{
    xml_->Markup(" fill=\"url(#g");
    xml_->Number(static_cast<double>(lastGradient_));
    xml_->Markup(")\"");
    if (shading.overprint)
        xml_->Markup(" data-overprint=\"true\"");
    if (ramp.multiplies)
        PaintAttributes::WriteMultiply(xml_);
    xml_->Markup("/>\n");
}

} // namespace vxhost::svg
