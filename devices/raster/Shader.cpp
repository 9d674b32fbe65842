// A table of inks is mixed once a part, as fine as the part is large on the picture or as its inks have values; a pixel
// then costs a look into it.
#include "devices/raster/Shader.h"

#include "devices/raster/Precision.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>

namespace vxhost::raster
{

namespace
{

constexpr int kBatch = 128; // pixels

constexpr uint64_t kParts = 1 << 16; // the way from one colour of a span to the next has so many parts

// Four curves make a circle that is nowhere smaller than this.
constexpr double kInsideCurves = 0.999;

bool IsUsable(const Matrix &m)
{
    return std::ranges::all_of(std::initializer_list<double>{m.a, m.b, m.c, m.d, m.tx, m.ty},
                               [](double value) { return std::abs(value) < kFar; });
}

// The places of an ink begin half a place before it. The order of the operands turns what is no number into 0.
constexpr double kHalf = 0.5;
float Clamped(float place, float last)
{
    return std::max(0.0F, std::min(place, last));
}

} // namespace

bool Shader::Begin(const Shading &shading, const Matrix &toSamples, int samples, const InkChannels &channels)
{
    shading_ = &shading;
    channels_ = &channels;
    firstSpan_ = endSpan_ = 0;
    part_.kind_ = shading.kind;
    samples_ = samples;
    const double pixels = 1.0 / samples;
    part_.toUnit_ = Inverse(Product(Product(shading.matrix, toSamples), {pixels, 0, 0, pixels, 0, 0}));
    part_.isLevel_ = shading.kind == ShadingKind::Axial && part_.toUnit_.a == 0;
    if (shading.kind == ShadingKind::Axial)
        return IsUsable(part_.toUnit_);
    if (!AreNested(shading.first, shading.last))
        return false;
    // In radii of the first circle and along the way of the centres, the circle of t around a point (x, y) solves
    //   (x - move t)² + y² = (1 + grows t)².
    // With a = move² - grows², below 0, u = grows x + move and v = √-a y, the smaller solution is
    //   t = (move u / grows - a / grows + √(u² + v²)) / a.
    const double scale = 1 / shading.first.radius;
    const Point way = (shading.last.centre - shading.first.centre) * scale;
    const double move = Length(way), grows = shading.last.radius * scale - 1, a = move * move - grows * grows;
    const Point along = move > 0 ? way * (1 / move) : Point{1, 0};
    const double across = std::sqrt(-a);
    const Matrix toRadii = {
        scale, 0, 0, scale, -shading.first.centre.x * scale, -shading.first.centre.y * scale};
    const Matrix toCone = {grows * along.x, -across * along.y, grows * along.y, across * along.x, move, 0};
    part_.toCone_ = Product(Product(part_.toUnit_, toRadii), toCone);
    cone_ = {-1 / grows, move / (grows * a), 1 / a};
    return IsUsable(part_.toUnit_) && IsUsable(part_.toCone_);
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

// It does if the corners lie in the part, which has no dents.
bool Shader::Covers(const Bounds &samples) const
{
    const double from = shading_->spans[firstSpan_].from, to = shading_->spans[endSpan_ - 1].to;
    const Shading::Circle &first = shading_->first, &last = shading_->last;
    const Point centre = first.centre + (last.centre - first.centre) * from;
    const double radius = kInsideCurves * (first.radius + (last.radius - first.radius) * from);
    const auto isInside = [&](int32_t x, int32_t y) {
        const Point unit = part_.toUnit_.Map({x / samples_, y / samples_});
        if (shading_->kind == ShadingKind::Radial)
            return Length(unit - centre) < radius;
        return unit.x > from && unit.x < to && unit.y > 0 && unit.y < 1;
    };
    return isInside(samples.left, samples.top) && isInside(samples.right, samples.top) &&
           isInside(samples.left, samples.bottom) && isInside(samples.right, samples.bottom);
}

// How many pixels the parameter takes from 0 to 1, along the longest way.
double Shader::PixelsAcross() const
{
    if (shading_->kind == ShadingKind::Axial)
        return 1 / std::hypot(part_.toUnit_.a, part_.toUnit_.c);
    const double shrinks = shading_->first.radius - shading_->last.radius;
    const double moves = Length(shading_->last.centre - shading_->first.centre);
    const double area = std::abs(Determinant(part_.toUnit_));
    // The longer axis of an ellipse is no longer than this diagonal.
    const double diagonal =
        std::hypot(part_.toUnit_.a, part_.toUnit_.b, std::hypot(part_.toUnit_.c, part_.toUnit_.d)) / area;
    return (shrinks + moves) * diagonal;
}

void Shader::MixInks()
{
    // Spans of one colour at either end need no inks of their own: places beyond the ends have those of the ends.
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
    part_.start_ = first->from;
    part_.perUnit_ = intervals / length;
    part_.tip_ = static_cast<float>((cone_.tip - part_.start_) * part_.perUnit_ + kHalf);
    part_.perX_ = static_cast<float>(cone_.perX * part_.perUnit_);
    part_.perLength_ = static_cast<float>(cone_.perLength * part_.perUnit_);
    part_.inks_.clear();
    part_.kept_.clear();
    for (const ColourSpan *span = first; span < last; ++span)
        MixSpan(*span, static_cast<size_t>((span->to - part_.start_) * part_.perUnit_) + 1);
    MixSpan(*last, static_cast<size_t>(intervals) + 1);
    if (std::ranges::all_of(part_.kept_, [](InkWord keep) { return keep == 0; }))
        part_.kept_.clear();
}

Shader::Step Shader::StepOf(const Colour &colour) const
{
    const InkLevels levels = channels_->Levels(colour);
    const auto part = [&levels](size_t i) {
        return static_cast<uint64_t>(static_cast<int64_t>(levels[i] * 256));
    };
    return {part(0) | part(2) << 32, part(1) | part(3) << 32, shading_->overprint ? InkOf(colour).keep : 0};
}

InkWord Shader::Mix(const Step &from, const Step &to, uint64_t part)
{
    const auto mix = [part](uint64_t a, uint64_t b) { return (a * (kParts - part) + b * part) >> 24; };
    const uint64_t even = mix(from.even, to.even), odd = mix(from.odd, to.odd);
    return static_cast<InkWord>((even & 0xFF) | (odd & 0xFF) << 8 | (even >> 16 & 0xFF0000) |
                                (odd >> 8 & 0xFF000000));
}

// Appends the inks of the span, up to so many in all.
void Shader::MixSpan(const ColourSpan &span, size_t count)
{
    steps_.clear();
    for (const Colour &colour : span.colours)
        steps_.push_back(StepOf(colour));
    const size_t last = steps_.size() - 1;
    const auto end = static_cast<double>(last * kParts);
    const double perUnit =
        end / (span.to - span.from); // not a number, or infinite, for a span without length
    const double first = (part_.start_ - span.from) * perUnit, perInk = perUnit / part_.perUnit_;
    for (size_t i = part_.inks_.size(); i < count; ++i) {
        const double place = first + static_cast<double>(i) * perInk;
        const auto parts = static_cast<uint64_t>(static_cast<int64_t>(place > 0 ? std::min(place, end) : 0));
        const auto at = static_cast<size_t>(parts / kParts);
        const Step &step = steps_[at], &next = steps_[std::min<size_t>(at + 1, last)];
        part_.inks_.push_back(Mix(step, next, parts % kParts));
        if (shading_->overprint)
            part_.kept_.push_back(parts % kParts == 0 ? step.keep : step.keep & next.keep);
    }
}

// The places of pixels in a radial shading: the smaller the circle that a pixel lies on, the larger its place.
struct ShadedPart::RadialPlaces {
    float x, y, stepX, stepY; // in the cone, of the first pixel, and on to the next
    float tip, perX, perLength;

    float operator()(float i) const
    {
        const float atX = x + stepX * i, atY = y + stepY * i;
        return tip + perX * atX + perLength * std::sqrt(atX * atX + atY * atY);
    }
};

Ink ShadedPart::InkAt(float place) const
{
    const auto at = static_cast<size_t>(place);
    return {inks_[at], kept_.empty() ? 0 : kept_[at]};
}

// Calls use with what tells the place of a pixel by its distance from left.
template <class Use>
void ShadedPart::WithPlaces(int y, int left, Use &&use) const
{
    const Point centre = {left + 0.5, y + 0.5};
    if (kind_ == ShadingKind::Radial) {
        const Point at = toCone_.Map(centre);
        use(RadialPlaces{static_cast<float>(at.x), static_cast<float>(at.y), static_cast<float>(toCone_.a),
                         static_cast<float>(toCone_.b), tip_, perX_, perLength_});
    } else {
        const auto first = static_cast<float>((toUnit_.Map(centre).x - start_) * perUnit_ + kHalf);
        use([first, step = static_cast<float>(toUnit_.a * perUnit_)](float i) { return first + step * i; });
    }
}

void ShadedPart::PaintAlike(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const
{
    WithPlaces(y, left, [&](const auto &placeAt) {
        buffer->Paint(left, right, mask, InkAt(Clamped(placeAt(0), LastPlace())));
    });
}

// Places are found in batches of loops without a branch, which the compiler turns into vectors.
void ShadedPart::PaintRow(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const
{
    const bool replaces = kept_.empty() && buffer->IsWhole(mask);
    InkWord *pixels = replaces ? buffer->Replace(left, right) : nullptr;
    const InkWord *inks = inks_.data();
    const float last = LastPlace();
    WithPlaces(y, left, [&](const auto &placeAt) {
        for (int begin = left; begin < right; begin += kBatch) {
            float places[kBatch];
            const int count = std::min(kBatch, right - begin), offset = begin - left;
            for (int i = 0; i < count; ++i)
                places[i] = Clamped(placeAt(static_cast<float>(offset + i)), last);
            if (replaces) {
                for (int i = 0; i < count; ++i)
                    *pixels++ = inks[static_cast<int32_t>(places[i])];
            } else {
                for (int i = 0; i < count; ++i)
                    buffer->Paint(begin + i, begin + i + 1, mask, InkAt(places[i]));
            }
        }
    });
}

} // namespace vxhost::raster
