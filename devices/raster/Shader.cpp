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

// Spans whose colours meet within so many of 255 run on: the last step of a blend falls a little short of its end.
constexpr int kRunsOn = 1;

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

} // namespace

bool Shader::Begin(const Shading &shading, const Matrix &toSamples, int samples, bool simulateOverprint)
{
    shading_ = &shading;
    overprint_ = simulateOverprint;
    firstSpan_ = endSpan_ = 0;
    const double scale = 1.0 / samples;
    toUnit_ = Inverse(Product(Product(shading.matrix, toSamples), {scale, 0, 0, scale, 0, 0}));
    return IsUsable(toUnit_) && (shading.kind == ShadingKind::Axial || AreNested(shading));
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

// How many pixels the parameter takes from 0 to 1, where that is most.
double Shader::PixelsAcross() const
{
    if (shading_->kind == ShadingKind::Axial)
        return 1 / std::hypot(toUnit_.a, toUnit_.c);
    const double shrinks = shading_->first.radius - shading_->last.radius;
    const double moves = Length(shading_->last.centre - shading_->first.centre);
    const double area = std::abs(toUnit_.a * toUnit_.d - toUnit_.b * toUnit_.c);
    const double pixelsPerUnit = std::hypot(toUnit_.a, toUnit_.b, std::hypot(toUnit_.c, toUnit_.d)) /
                                 area; // of the longer axis or more
    return (shrinks + moves) * pixelsPerUnit;
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
    replaces_ = true;
    inks_.clear();
    for (double i = 0; i <= intervals; ++i) {
        const double parameter = start_ + length * (i / intervals);
        while (first < last && parameter > first->to)
            ++first;
        inks_.push_back(InkOf(ColourAt(*first, parameter)));
        replaces_ &= inks_.back().Replaces();
    }
}

// Of the smallest circle around the point.
double Shader::Parameter(Point unit) const
{
    const Shading::Circle &first = shading_->first, &last = shading_->last;
    const Point move = last.centre - first.centre, from = unit - first.centre;
    const double grows = last.radius - first.radius;
    // The distance from the centre is the radius, where squares are a·t² - 2·b·t + c = 0. a and c are not positive, nor
    // is b then, and the smaller solution is wanted.
    const double a = Dot(move, move) - grows * grows;
    const double b = Dot(from, move) + first.radius * grows;
    const double c = Dot(from, from) - first.radius * first.radius;
    return c / (b - std::sqrt(std::max(b * b - a * c, 0.0)));
}

size_t Shader::IndexOf(double place) const
{
    const auto last = static_cast<double>(inks_.size() - 1);
    return place > 0 ? static_cast<size_t>(std::min(place, last) + 0.5) : 0;
}

template <class IndexAt>
void Shader::PaintEach(int left, int right, uint64_t mask, InkBuffer *buffer, IndexAt &&indexAt)
{
    if (!replaces_) {
        for (int x = left; x < right; ++x)
            buffer->Paint(x, x + 1, mask, inks_[indexAt(x)]);
        return;
    }
    row_.resize(static_cast<size_t>(right - left));
    for (int x = left; x < right; ++x)
        row_[static_cast<size_t>(x - left)] = inks_[indexAt(x)].value;
    buffer->Paint(left, row_, mask);
}

void Shader::Paint(int y, int left, int right, uint64_t mask, InkBuffer *buffer)
{
    const auto unit = [&](int x) { return toUnit_.Map({x + 0.5, y + 0.5}); };
    if (shading_->kind == ShadingKind::Radial) {
        PaintEach(left, right, mask, buffer,
                  [&](int x) { return IndexOf((Parameter(unit(x)) - start_) * perUnit_); });
        return;
    }
    const double place = (unit(left).x - start_) * perUnit_, step = toUnit_.a * perUnit_;
    if (step == 0)
        buffer->Paint(left, right, mask, inks_[IndexOf(place)]);
    else
        PaintEach(left, right, mask, buffer, [&](int x) { return IndexOf(place + step * (x - left)); });
}

} // namespace vxhost::raster
