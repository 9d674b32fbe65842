#include "devices/pdf/Shadings.h"

#include "devices/pdf/Matrices.h"
#include "devices/vector/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

namespace vxhost::pdf
{

namespace
{

constexpr int kSampleBits = 16;
// A space of more inks is beyond what some readers take.
constexpr size_t kMaxInks = 8;
// Instances of one gradient differ by roundings. No output shows so small a part of the whole.
constexpr double kPlacesOfUnit = 50000;

double Rounded(double part)
{
    return std::round(part * kPlacesOfUnit) / kPlacesOfUnit;
}

// Makes the outer circle the unit circle. False when the circles do not lie one inside the other, shrinking.
bool Normalise(const Shading &shading, Matrix *matrix, Shading::Circle *last)
{
    const Shading::Circle &first = shading.first;
    if (!AreNested(first, shading.last))
        return false;
    const double r = first.radius;
    *matrix = Product({r, 0, 0, r, first.centre.x, first.centre.y}, shading.matrix);
    last->centre = {Rounded((shading.last.centre.x - first.centre.x) / r),
                    Rounded((shading.last.centre.y - first.centre.y) / r)};
    last->radius = Rounded(shading.last.radius / r);
    return true;
}

// An ink, and how many of a blend's colours have it.
struct InkCount {
    const SpotInk *ink = nullptr;
    size_t colours = 0;
};

// Returns the inks of a blend, spot inks first.
std::vector<InkCount> CountInks(const Shading &shading, size_t *colours)
{
    std::vector<InkCount> spots;
    std::vector<InkCount> counts;
    for (const SpotInk &ink : kProcessInks)
        counts.push_back({&ink});
    for (const ColourSpan &span : shading.spans) {
        *colours += span.colours.size();
        for (const Colour &colour : span.colours) {
            const InkShares shares = FindShares(colour);
            for (size_t i = 0; i < shares.count; ++i) {
                std::vector<InkCount> &among = i < shares.spotCount ? spots : counts;
                auto found = std::ranges::find(among, shares.inks[i], &InkCount::ink);
                if (found == among.end())
                    found = among.insert(found, {shares.inks[i]});
                ++found->colours;
            }
        }
    }
    counts.insert(counts.begin(), spots.begin(), spots.end());
    return counts;
}

// False when a blend that overprints has one of the inks at some steps alone, or none at all, and when there are too many, or
// two of one name.
bool FindSpace(const Shading &shading, PaintSpace *space)
{
    bool isGray = false;
    for (const ColourSpan &span : shading.spans)
        isGray |= !span.colours.empty() && span.colours.front().space == ColourSpace::Gray;
    space->isBlackInk = isGray && shading.overprint;
    if (isGray)
        return true;
    size_t colours = 0;
    const std::vector<InkCount> inks = CountInks(shading, &colours);
    const bool isMixed = shading.overprint || inks.size() > kInkCount;
    for (const InkCount &count : inks) {
        if (!isMixed || count.colours > 0)
            space->inks.push_back(count.ink);
        if (shading.overprint && count.colours > 0 && count.colours < colours)
            return false;
    }
    return !space->inks.empty() && space->inks.size() <= kMaxInks && HaveOwnNames(space->inks);
}

std::string NameOf(size_t number)
{
    std::string name = "Blend";
    name += std::to_string(number + 1);
    return name;
}

// Appends the numbers that the colour space takes, in its order.
void AppendComponents(const Colour &colour, const PaintSpace &space, std::vector<double> *to)
{
    if (space.inks.empty())
        to->push_back(space.isBlackInk ? 1 - colour.ink[0] : colour.ink[0]);
    const InkShares shares = FindShares(colour);
    for (const SpotInk *ink : space.inks) {
        const auto found = std::ranges::find(shares.inks, ink);
        to->push_back(found != shares.inks.end()
                          ? shares.amounts[static_cast<size_t>(found - shares.inks.begin())]
                          : 0);
    }
}

std::string UnitDomain(size_t dimensions)
{
    std::string limits = "0 1";
    for (size_t i = 1; i < dimensions; ++i)
        limits += " 0 1";
    return ArrayValue(limits);
}

std::string Components(std::span<const double> values)
{
    std::string numbers;
    for (const double value : values)
        numbers.append(numbers.empty() ? "" : " ").append(NumberText(value));
    return ArrayValue(numbers);
}

// Two colours, or one, keep their numbers; more become samples.
Reference RampFunction(const ColourSpan &span, const PaintSpace &space, PdfFile *file)
{
    std::vector<double> values;
    for (const Colour &colour : span.colours)
        AppendComponents(colour, space, &values);
    const size_t components = values.size() / span.colours.size();
    Dictionary function;
    function.Add("Domain", UnitDomain(1));
    if (span.colours.size() <= 2) {
        const std::span<const double> all(values);
        function.Add("FunctionType", 2).Add("N", 1).Add("C0", Components(all.first(components)));
        return file->Share(function.Add("C1", Components(all.last(components))).Value());
    }
    function.Add("FunctionType", 0).Add("Range", UnitDomain(components)).Add("BitsPerSample", kSampleBits);
    function.Add("Size", ArrayValue({static_cast<double>(span.colours.size())}));
    std::string samples;
    for (const double value : values) {
        const auto level = static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 0xFFFF));
        samples += static_cast<char>(level >> 8);
        samples += static_cast<char>(level & 0xFF);
    }
    return file->ShareStream(function, samples);
}

// The ramps of all spans that have a width, stitched together if they are several. Nothing when there is none.
std::optional<Reference> FunctionOf(const Shading &shading, const PaintSpace &space, PdfFile *file)
{
    std::vector<Reference> ramps;
    std::string bounds;
    double from = 0;
    for (const ColourSpan &span : shading.spans) {
        const double to = Rounded(span.to);
        if (span.colours.empty() || !(to > from))
            continue;
        if (!ramps.empty())
            bounds.append(FactorText(from)).append(" ");
        ramps.push_back(RampFunction(span, space, file));
        from = to;
    }
    if (ramps.empty())
        return std::nullopt;
    if (ramps.size() == 1)
        return ramps.front();
    Dictionary function;
    function.Add("FunctionType", 3).Add("Domain", UnitDomain(1)).Add("Functions", ArrayValue(ramps));
    function.Add("Bounds", ArrayValue(bounds)).Add("Encode", UnitDomain(ramps.size()));
    return file->Share(function.Value());
}

std::string ColourSpaceOf(const PaintSpace &space, InkSpaces *inks)
{
    if (space.isBlackInk)
        return ValueOf(inks->MakeBlack());
    if (space.inks.empty())
        return "/DeviceGray";
    const bool isProcess = std::ranges::equal(
        space.inks, kProcessInks, [](const SpotInk *ink, const SpotInk &process) { return ink == &process; });
    return isProcess ? "/DeviceCMYK" : ValueOf(inks->Make(space.inks));
}

} // namespace

// Each goes on beyond both of its ends: the clip draws the shape's edge, and the inner disc of a radial one is filled.
std::optional<ShadingUse> Shadings::Use(const Shading &shading, PdfFile *file, InkSpaces *inks)
{
    ShadingUse use;
    use.matrix = shading.matrix;
    const bool isAxial = shading.kind == ShadingKind::Axial;
    Shading::Circle last;
    if (!isAxial && !Normalise(shading, &use.matrix, &last))
        return std::nullopt;
    PaintSpace space;
    if (!IsInvertible(use.matrix) || !FindSpace(shading, &space))
        return std::nullopt;
    const std::optional<Reference> function = FunctionOf(shading, space, file);
    if (!function)
        return std::nullopt;
    Dictionary blend;
    blend.Add("ShadingType", isAxial ? 2 : 3).Add("ColorSpace", ColourSpaceOf(space, inks));
    blend.Add("Coords", isAxial ? ArrayValue({0, 0, 1, 0})
                                : ArrayValue({0, 0, 1, last.centre.x, last.centre.y, last.radius}));
    blend.Add("Function", *function).Add("Extend", "[true true]");
    const Reference written = file->Share(blend.Value());
    auto found = std::ranges::lower_bound(blends_, written.number, {}, &Reference::number);
    if (found == blends_.end())
        found = blends_.insert(found, written);
    use.name = NameOf(static_cast<size_t>(found - blends_.begin()));
    return use;
}

Reference Shadings::AddResources(PdfFile *file) const
{
    const Reference resources = file->Begin();
    file->Write("<<");
    for (size_t i = 0; i < blends_.size(); ++i)
        file->Write(NameValue(NameOf(i)) + " " + ValueOf(blends_[i]) + "\n");
    file->Write(">>");
    file->End();
    return resources;
}

} // namespace vxhost::pdf
