#include "devices/pdf/Shadings.h"

#include "devices/pdf/InkSpaces.h"
#include "devices/pdf/Matrices.h"
#include "devices/pdf/Numbers.h"

#include <algorithm>
#include <cmath>

namespace vxhost::pdf
{

namespace
{

// Ramps beyond this are painted as shapes: a document that never repeats one must not fill the memory.
constexpr size_t kMaxBytes = size_t{64} << 20;
// Circles that touch have no ring between them that a reader could follow.
constexpr double kClosest = 1e-4;
constexpr int kSampleBits = 16;

// Makes the outer circle the unit circle. False when the circles do not lie one inside the other, shrinking.
bool Normalise(const Shading &shading, Matrix *matrix, Shading::Circle *last)
{
    const Shading::Circle &first = shading.first;
    const double distance =
        std::hypot(shading.last.centre.x - first.centre.x, shading.last.centre.y - first.centre.y);
    if (!(first.radius > 0) || !(distance <= first.radius * (1 - kClosest) - shading.last.radius))
        return false;
    const double r = first.radius;
    *matrix = Product({r, 0, 0, r, first.centre.x, first.centre.y}, shading.matrix);
    last->centre = {(shading.last.centre.x - first.centre.x) / r,
                    (shading.last.centre.y - first.centre.y) / r};
    last->radius = std::max(shading.last.radius / r, 0.0);
    return true;
}

// Which inks a blend paints with. Nothing when one of them is there at some steps alone and the others keep it.
std::optional<std::vector<int>> FindInks(const Shading &shading)
{
    std::vector<int> inks;
    for (int ink = 0; ink < kInkCount; ++ink) {
        bool isSomewhere = false, isEverywhere = true;
        for (const ColourSpan &span : shading.spans) {
            for (const Colour &colour : span.colours)
                (colour.ink[ink] != 0 ? isSomewhere : isEverywhere) = colour.ink[ink] != 0;
        }
        if (!shading.overprint || isSomewhere)
            inks.push_back(ink);
        if (shading.overprint && isSomewhere && !isEverywhere)
            return std::nullopt;
    }
    return inks;
}

void AppendBytes(const double *values, size_t count, std::string *to)
{
    to->append(reinterpret_cast<const char *>(values), count * sizeof *values);
}

QPDFObjectHandle Numbers(std::initializer_list<double> values)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const double value : values)
        array.appendItem(MakeNumber(value));
    return array;
}

// What the colour space of the ramp takes, in its order.
std::vector<double> ComponentsOf(const Colour &colour, const std::vector<int> &inks, bool isBlackInk)
{
    if (inks.empty())
        return {isBlackInk ? 1 - colour.ink[0] : colour.ink[0]};
    std::vector<double> components(inks.size());
    std::ranges::transform(inks, components.begin(), [&](int ink) { return colour.ink[ink]; });
    return components;
}

QPDFObjectHandle Domain(size_t dimensions)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (size_t i = 0; i < dimensions; ++i) {
        array.appendItem(QPDFObjectHandle::newInteger(0));
        array.appendItem(QPDFObjectHandle::newInteger(1));
    }
    return array;
}

QPDFObjectHandle ArrayOf(const std::vector<double> &values)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const double value : values)
        array.appendItem(QPDFObjectHandle::newReal(NumberText(value)));
    return array;
}

// Two colours, or one: exact numbers.
QPDFObjectHandle LinearFunction(const std::vector<double> &from, const std::vector<double> &to)
{
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(2));
    function.replaceKey("/Domain", Domain(1));
    function.replaceKey("/C0", ArrayOf(from));
    function.replaceKey("/C1", ArrayOf(to));
    function.replaceKey("/N", QPDFObjectHandle::newInteger(1));
    return function;
}

QPDFObjectHandle SampledFunction(PdfFile *file, const std::vector<std::vector<double>> &samples)
{
    std::string bytes;
    for (const std::vector<double> &sample : samples) {
        for (const double value : sample) {
            const auto level = static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 0xFFFF));
            bytes += static_cast<char>(level >> 8);
            bytes += static_cast<char>(level & 0xFF);
        }
    }
    QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(0));
    dictionary.replaceKey("/Domain", Domain(1));
    dictionary.replaceKey("/Range", Domain(samples.front().size()));
    dictionary.replaceKey("/Size", QPDFObjectHandle::newArray(
                                       {QPDFObjectHandle::newInteger(static_cast<int64_t>(samples.size()))}));
    dictionary.replaceKey("/BitsPerSample", QPDFObjectHandle::newInteger(kSampleBits));
    return file->AddStream(dictionary, bytes);
}

QPDFObjectHandle SpanFunction(PdfFile *file, const ColourSpan &span, const std::vector<int> &inks,
                              bool isBlackInk)
{
    std::vector<std::vector<double>> samples;
    for (const Colour &colour : span.colours)
        samples.push_back(ComponentsOf(colour, inks, isBlackInk));
    if (samples.size() <= 2)
        return LinearFunction(samples.front(), samples.back());
    return SampledFunction(file, samples);
}

} // namespace

std::optional<ShadingUse> Shadings::Use(const Shading &shading)
{
    Ramp ramp;
    ShadingUse use;
    use.matrix = shading.matrix;
    ramp.kind = shading.kind;
    if (shading.kind == ShadingKind::Radial && !Normalise(shading, &use.matrix, &ramp.last))
        return std::nullopt;
    for (const ColourSpan &span : shading.spans) {
        if (!span.colours.empty() && span.to > span.from)
            ramp.spans.push_back(span);
    }
    if (ramp.spans.empty() || !IsInvertible(use.matrix))
        return std::nullopt;
    if (ramp.spans.front().colours.front().space == ColourSpace::Gray) {
        ramp.isBlackInk = shading.overprint;
    } else {
        std::optional<std::vector<int>> inks = FindInks(shading);
        if (!inks || inks->empty())
            return std::nullopt;
        ramp.inks = std::move(*inks);
    }
    std::string key = KeyOf(ramp);
    auto found = nameOfKey_.find(key);
    if (found == nameOfKey_.end()) {
        bytes_ += 2 * key.size();
        if (bytes_ > kMaxBytes)
            return std::nullopt;
        found = nameOfKey_.emplace(std::move(key), "Blend" + std::to_string(ramps_.size() + 1)).first;
        ramps_.push_back(std::move(ramp));
    }
    use.name = found->second;
    return use;
}

std::string Shadings::KeyOf(const Ramp &ramp)
{
    std::string key;
    key += ramp.kind == ShadingKind::Axial ? 'a' : 'r';
    key += ramp.isBlackInk ? 'b' : 'g';
    for (const int ink : ramp.inks)
        key += static_cast<char>('0' + ink);
    const double circle[] = {ramp.last.centre.x, ramp.last.centre.y, ramp.last.radius};
    AppendBytes(circle, std::size(circle), &key);
    for (const ColourSpan &span : ramp.spans) {
        const double ends[] = {span.from, span.to, static_cast<double>(span.colours.size())};
        AppendBytes(ends, std::size(ends), &key);
        for (const Colour &colour : span.colours)
            AppendBytes(colour.ink, std::size(colour.ink), &key);
    }
    return key;
}

QPDFObjectHandle Shadings::ColourSpaceOf(PdfFile *file, const Ramp &ramp)
{
    if (ramp.isBlackInk)
        return BlackInkSpace();
    if (ramp.inks.empty())
        return MakeName("DeviceGray");
    return ramp.inks.size() == kInkCount ? MakeName("DeviceCMYK") : InkSpace(file, ramp.inks);
}

QPDFObjectHandle Shadings::FunctionOf(PdfFile *file, const Ramp &ramp)
{
    if (ramp.spans.size() == 1)
        return SpanFunction(file, ramp.spans.front(), ramp.inks, ramp.isBlackInk);
    QPDFObjectHandle functions = QPDFObjectHandle::newArray(), bounds = QPDFObjectHandle::newArray(),
                     encode = QPDFObjectHandle::newArray();
    for (const ColourSpan &span : ramp.spans) {
        functions.appendItem(SpanFunction(file, span, ramp.inks, ramp.isBlackInk));
        encode.appendItem(QPDFObjectHandle::newInteger(0));
        encode.appendItem(QPDFObjectHandle::newInteger(1));
        if (&span != &ramp.spans.back())
            bounds.appendItem(MakeNumber(span.to));
    }
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(3));
    function.replaceKey("/Domain", Domain(1));
    function.replaceKey("/Functions", functions);
    function.replaceKey("/Bounds", bounds);
    function.replaceKey("/Encode", encode);
    return function;
}

// Both ends go on beyond the shape, whose edge is the clip's to draw; a radial one fills its inner disc so.
void Shadings::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    const QPDFObjectHandle yes = QPDFObjectHandle::newBool(true);
    for (size_t i = 0; i < ramps_.size(); ++i) {
        const Ramp &ramp = ramps_[i];
        const bool isAxial = ramp.kind == ShadingKind::Axial;
        QPDFObjectHandle shading = QPDFObjectHandle::newDictionary();
        shading.replaceKey("/ShadingType", QPDFObjectHandle::newInteger(isAxial ? 2 : 3));
        shading.replaceKey("/ColorSpace", ColourSpaceOf(file, ramp));
        shading.replaceKey("/Coords", isAxial ? Numbers({0, 0, 1, 0})
                                              : Numbers({0, 0, 1, ramp.last.centre.x, ramp.last.centre.y,
                                                         ramp.last.radius}));
        shading.replaceKey("/Function", FunctionOf(file, ramp));
        shading.replaceKey("/Extend", QPDFObjectHandle::newArray({yes, yes}));
        resources->replaceKey("/Blend" + std::to_string(i + 1), file->Add(shading));
    }
}

} // namespace vxhost::pdf
