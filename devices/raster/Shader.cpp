// A table of inks is mixed once a part, as fine as the part is large on the picture or as its inks have values; a pixel
// then costs a look into it.
#include "devices/raster/Shader.h"

#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>

namespace vxhost::raster
{

namespace
{

constexpr double kMaxInks = 1024;
constexpr double kInksPerPixel = 2;

constexpr int kBatch = 128; // pixels

// Spans whose colours meet within so many of 255 run on: the last step of a blend falls a little short of its end.
constexpr int kRunsOn = 1;

// Four curves make a circle that is nowhere smaller than this.
constexpr double kInsideCurves = 0.999;

Matrix Inverse(const Matrix &m)
{
    const double area = m.a * m.d - m.b * m.c;
    return {m.d / area,
            -m.b / area,
            -m.c / area,
            m.a / area,
            (m.c * m.ty - m.d * m.tx) / area,
            (m.b * m.tx - m.a * m.ty) / area};
}

bool IsUsable(const Matrix &m)
{
    return std::ranges::all_of(std::initializer_list<double>{m.a, m.b, m.c, m.d, m.tx, m.ty},
                               [](double value) { return std::abs(value) < kFar; });
}

bool AreNested(const Shading &shading)
{
    const double shrinks = shading.first.radius - shading.last.radius;
    return shrinks > 0 && shading.last.radius >= 0 &&
           Length(shading.last.centre - shading.first.centre) <= shrinks;
}

Colour ColourAt(const ColourSpan &span, double parameter)
{
    const auto last = static_cast<double>(span.colours.size() - 1);
    const double place = (parameter - span.from) / (span.to - span.from) * last;
    if (!(place > 0)) // a span without length as well
        return span.colours.front();
    if (place >= last)
        return span.colours.back();
    const auto index = static_cast<size_t>(place);
    const double part = place - static_cast<double>(index);
    Colour colour = span.colours[index];
    for (int i = 0; i < 4; ++i)
        colour.ink[i] += (span.colours[index + 1].ink[i] - colour.ink[i]) * part;
    return colour;
}

// An ink's places begin half of one before it. The order of the operands makes what is no number 0.
constexpr double kHalf = 0.5;
int32_t IndexOf(float place, float last)
{
    return static_cast<int32_t>(std::min(std::max(0.0F, place), last));
}

} // namespace

bool Shader::Begin(const Shading &shading, const Matrix &toSamples, int samples, bool simulateOverprint)
{
    shading_ = &shading;
    overprint_ = simulateOverprint;
    firstSpan_ = endSpan_ = 0;
    samples_ = samples;
    const double pixels = 1.0 / samples;
    toUnit_ = Inverse(Product(Product(shading.matrix, toSamples), {pixels, 0, 0, pixels, 0, 0}));
    if (shading.kind == ShadingKind::Axial)
        return IsUsable(toUnit_);
    if (!AreNested(shading))
        return false;
    const double scale = 1 / shading.first.radius;
    const Point move = (shading.last.centre - shading.first.centre) * scale;
    const double grows = shading.last.radius * scale - 1;
    toCircles_ = Product(
        toUnit_, {scale, 0, 0, scale, -shading.first.centre.x * scale, -shading.first.centre.y * scale});
    circles_ = {static_cast<float>(move.x), static_cast<float>(move.y), static_cast<float>(grows),
                static_cast<float>(Dot(move, move) - grows * grows)};
    return IsUsable(toUnit_) && IsUsable(toCircles_);
}

bool Shader::RunsOn(const ColourSpan &span, const ColourSpan &next) const
{
    const Ink a = InkOf(span.colours.back()), b = InkOf(next.colours.front());
    bool isNear = true;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto inkA = static_cast<int>(a.value >> shift & 0xFF),
                   inkB = static_cast<int>(b.value >> shift & 0xFF);
        isNear &= std::abs(inkA - inkB) <= kRunsOn;
    }
    return isNear && a.keep == b.keep;
}

bool Shader::NextPart()
{
    const std::vector<ColourSpan> &spans = shading_->spans;
    firstSpan_ = endSpan_;
    if (firstSpan_ == spans.size())
        return false;
    while (++endSpan_ < spans.size() && RunsOn(spans[endSpan_ - 1], spans[endSpan_])) {
    }
    outline_ = OutlineOf(*shading_, spans[firstSpan_].from, spans[endSpan_ - 1].to);
    return true;
}

// A pixel's distance from the centre is the radius, where squares are a·t² - 2·b·t + c = 0. a and c are not positive,
// nor is b then, and the smaller solution is wanted.
struct Shader::RadialPlaces {
    const Circles &circles;
    float x, y, stepX, stepY; // of the first pixel, and on to the next
    float first, perUnit;

    float operator()(float i) const
    {
        const float atX = x + stepX * i, atY = y + stepY * i;
        const float b = atX * circles.moveX + atY * circles.moveY + circles.grows;
        const float c = atX * atX + atY * atY - 1;
        return first + perUnit * (c / (b - std::sqrt(std::max(0.0F, b * b - circles.a * c))));
    }
};

// Certainly: its corners lie in the part, which has no dents.
bool Shader::Covers(const Bounds &samples) const
{
    const double from = shading_->spans[firstSpan_].from, to = shading_->spans[endSpan_ - 1].to;
    const Shading::Circle &first = shading_->first, &last = shading_->last;
    const Point centre = first.centre + (last.centre - first.centre) * from;
    const double radius = kInsideCurves * (first.radius + (last.radius - first.radius) * from);
    const auto isInside = [&](int32_t x, int32_t y) {
        const Point unit = toUnit_.Map({x / samples_, y / samples_});
        if (shading_->kind == ShadingKind::Radial)
            return Length(unit - centre) < radius;
        return unit.x > from && unit.x < to && unit.y > 0 && unit.y < 1;
    };
    return isInside(samples.left, samples.top) && isInside(samples.right, samples.top) &&
           isInside(samples.left, samples.bottom) && isInside(samples.right, samples.bottom);
}

// How many pixels the parameter takes from 0 to 1, where that is most.
double Shader::PixelsAcross() const
{
    if (shading_->kind == ShadingKind::Axial)
        return 1 / std::hypot(toUnit_.a, toUnit_.c);
    const double shrinks = shading_->first.radius - shading_->last.radius;
    const double moves = Length(shading_->last.centre - shading_->first.centre);
    const double area = std::abs(toUnit_.a * toUnit_.d - toUnit_.b * toUnit_.c);
    // The longer axis of an ellipse is no longer than this diagonal.
    const double diagonal = std::hypot(toUnit_.a, toUnit_.b, std::hypot(toUnit_.c, toUnit_.d)) / area;
    return (shrinks + moves) * diagonal;
}

void Shader::MixInks()
{
    // What is of one colour at either end needs no inks: places beyond the ends have those of the ends.
    const ColourSpan *first = &shading_->spans[firstSpan_], *last = &shading_->spans[endSpan_ - 1];
    while (first < last && first->colours.size() == 1)
        ++first;
    while (first < last && last->colours.size() == 1)
        --last;
    if (first == last && first->colours.size() == 1) {
        first = &shading_->spans[firstSpan_];
        last = &shading_->spans[endSpan_ - 1];
    }

    const double length = last->to - first->from;
    const double wanted = std::ceil(length * PixelsAcross() * kInksPerPixel);
    const double intervals = wanted < kMaxInks ? std::max(wanted, 2.0) - 1 : kMaxInks - 1;
    start_ = first->from;
    perUnit_ = intervals / length;
    inks_.clear();
    kept_.clear();
    InkWord kept = 0;
    for (int i = 0; i <= static_cast<int>(intervals); ++i) {
        const double parameter = start_ + length * (i / intervals);
        while (first < last && parameter > first->to)
            ++first;
        const Ink ink = InkOf(ColourAt(*first, parameter));
        inks_.push_back(ink.value);
        kept_.push_back(ink.keep);
        kept |= ink.keep;
    }
    if (kept == 0)
        kept_.clear();
}

Ink Shader::InkAt(int32_t index) const
{
    const auto at = static_cast<size_t>(index);
    return {inks_[at], kept_.empty() ? 0 : kept_[at]};
}

// placeAt of a pixel's distance from left. Places are found in batches of loops without a branch, which the compiler
// turns into vectors.
template <class PlaceAt>
void Shader::PaintEach(int left, int right, uint64_t mask, InkBuffer *buffer, const PlaceAt &placeAt) const
{
    const bool replaces = kept_.empty() && buffer->IsWhole(mask);
    InkWord *pixels = replaces ? buffer->Replace(left, right) : nullptr;
    const InkWord *inks = inks_.data();
    const auto last = static_cast<float>(inks_.size() - 1);
    for (int begin = left; begin < right; begin += kBatch) {
        int32_t index[kBatch];
        const int count = std::min(kBatch, right - begin), offset = begin - left;
        for (int i = 0; i < count; ++i)
            index[i] = IndexOf(placeAt(static_cast<float>(offset + i)), last);
        if (replaces) {
            for (int i = 0; i < count; ++i)
                *pixels++ = inks[index[i]];
        } else {
            for (int i = 0; i < count; ++i)
                buffer->Paint(begin + i, begin + i + 1, mask, InkAt(index[i]));
        }
    }
}

void Shader::Paint(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const
{
    const Point centre = {left + 0.5, y + 0.5};
    const auto perUnit = static_cast<float>(perUnit_);
    if (shading_->kind == ShadingKind::Radial) {
        const Point at = toCircles_.Map(centre);
        PaintEach(left, right, mask, buffer,
                  RadialPlaces{circles_, static_cast<float>(at.x), static_cast<float>(at.y),
                               static_cast<float>(toCircles_.a), static_cast<float>(toCircles_.b),
                               static_cast<float>(kHalf - start_ * perUnit_), perUnit});
        return;
    }
    const auto first = static_cast<float>((toUnit_.Map(centre).x - start_) * perUnit_ + kHalf),
               step = static_cast<float>(toUnit_.a * perUnit_);
    if (step == 0)
        buffer->Paint(left, right, mask, InkAt(IndexOf(first, static_cast<float>(inks_.size() - 1))));
    else
        PaintEach(left, right, mask, buffer, [=](float i) { return first + step * i; });
}

} // namespace vxhost::raster
