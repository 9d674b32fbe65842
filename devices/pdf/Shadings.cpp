#include "devices/pdf/Shadings.h"

#include "devices/pdf/Matrices.h"
#include "devices/vector/Numbers.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

namespace vxhost::pdf
{

namespace
{

// Half of the least step that a screen shows; parts of the whole.
constexpr double kTolerance = 1.0 / 512;
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

// A part of a ramp in which each component goes straight.
struct RampPiece {
    double from = 0, to = 1;
    std::vector<double> first, last; // components
};

// The directions, component by component, in which a straight way from a colour passes near enough to all colours so far.
struct Corridor {
    std::array<double, kMaxInks> low, high;

    Corridor() { low.fill(-INFINITY), high.fill(INFINITY); }
    // Narrows it to those that pass the colour. Whether the way that leads to the colour itself lies inside.
    bool Narrow(std::span<const double> from, std::span<const double> to, double distance)
    {
        bool leads = true;
        for (size_t i = 0; i < from.size(); ++i) {
            const double change = to[i] - from[i];
            leads = leads && low[i] * distance <= change && change <= high[i] * distance;
            low[i] = std::max(low[i], (change - kTolerance) / distance);
            high[i] = std::min(high[i], (change + kTolerance) / distance);
        }
        return leads;
    }
};

// Colours are left out as long as the straight way past them stays within the tolerance.
void AddPieces(const ColourSpan &span, double from, double to, const PaintSpace &space,
               std::vector<RampPiece> *pieces)
{
    std::vector<double> values;
    for (const Colour &colour : span.colours)
        AppendComponents(colour, space, &values);
    const size_t components = values.size() / span.colours.size();
    const size_t end = std::max<size_t>(span.colours.size() - 1, 1);
    // One colour alone is both ends.
    const auto colour = [&](size_t i) {
        return std::span<const double>(values).subspan(std::min(i, span.colours.size() - 1) * components,
                                                       components);
    };
    const auto place = [&](size_t i) {
        return i == end ? to
                        : Rounded(from + (to - from) * static_cast<double>(i) / static_cast<double>(end));
    };
    const auto add = [&](size_t first, size_t last) {
        if (place(last) > place(first))
            pieces->push_back({place(first),
                               place(last),
                               {colour(first).begin(), colour(first).end()},
                               {colour(last).begin(), colour(last).end()}});
    };
    size_t anchor = 0;
    Corridor corridor;
    for (size_t i = 1; i <= end; ++i) {
        if (corridor.Narrow(colour(anchor), colour(i), static_cast<double>(i - anchor)))
            continue;
        add(anchor, i - 1);
        anchor = i - 1;
        corridor = {};
        (void)corridor.Narrow(colour(anchor), colour(i), 1); // any way leads to the next
    }
    add(anchor, end);
}

std::vector<RampPiece> FindPieces(const Shading &shading, const PaintSpace &space)
{
    std::vector<RampPiece> pieces;
    double from = 0;
    for (const ColourSpan &span : shading.spans) {
        const double to = Rounded(span.to);
        if (span.colours.empty() || !(to > from))
            continue;
        AddPieces(span, from, to, space, &pieces);
        from = to;
    }
    return pieces;
}

// Turns a ramp that goes from the outer circle to the inner one into one that goes from the point where the circles would shrink to
// nothing, with the last colour up to the inner one.
void TurnOutwards(double innerRadius, std::vector<RampPiece> *pieces)
{
    std::ranges::reverse(*pieces);
    for (RampPiece &piece : *pieces) {
        const auto radius = [&](double at) { return Rounded(1 - at * (1 - innerRadius)); };
        piece = {radius(piece.to), radius(piece.from), piece.last, piece.first};
    }
    std::erase_if(*pieces, [](const RampPiece &piece) { return !(piece.to > piece.from); });
    if (!pieces->empty() && pieces->front().from > 0)
        pieces->insert(pieces->begin(),
                       {0, pieces->front().from, pieces->front().first, pieces->front().first});
}

std::string PieceFunction(const RampPiece &piece)
{
    Dictionary function;
    function.Add("FunctionType", 2).Add("Domain", UnitDomain(1)).Add("N", 1);
    return function.Add("C0", Components(piece.first)).Add("C1", Components(piece.last)).Value();
}

// The pieces, stitched together if they are several. Editors read no other functions, and those of one piece are not worth an
// object each.
Reference FunctionOf(const std::vector<RampPiece> &pieces, PdfFile *file)
{
    if (pieces.size() == 1)
        return file->Share(PieceFunction(pieces.front()));
    std::string functions, bounds;
    for (const RampPiece &piece : pieces) {
        functions += PieceFunction(piece);
        if (&piece != &pieces.front())
            bounds.append(bounds.empty() ? "" : " ").append(FactorText(piece.from));
    }
    Dictionary function;
    function.Add("FunctionType", 3).Add("Domain", UnitDomain(1)).Add("Functions", ArrayValue(functions));
    function.Add("Bounds", ArrayValue(bounds)).Add("Encode", UnitDomain(pieces.size()));
    return file->Share(function.Value());
}

std::string MatrixValue(const Matrix &matrix)
{
    std::string numbers;
    for (const double factor : {matrix.a, matrix.b, matrix.c, matrix.d})
        numbers.append(FactorText(factor)).append(" ");
    return ArrayValue(numbers + NumberText(matrix.tx) + " " + NumberText(matrix.ty));
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
std::optional<ShadingUse> Shadings::Use(const Shading &shading, bool asPattern, PdfFile *file,
                                        InkSpaces *inks)
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
    std::vector<RampPiece> pieces = FindPieces(shading, space);
    if (!isAxial)
        TurnOutwards(last.radius, &pieces);
    if (pieces.empty())
        return std::nullopt;
    const Point tip = last.centre * (1 / (1 - last.radius));
    Dictionary blend;
    blend.Add("ShadingType", isAxial ? 2 : 3).Add("ColorSpace", ColourSpaceOf(space, inks));
    blend.Add("Coords", isAxial ? ArrayValue({0, 0, 1, 0}) : ArrayValue({tip.x, tip.y, 0, 0, 0, 1}));
    blend.Add("Function", FunctionOf(pieces, file)).Add("Extend", "[true true]");
    Reference written = file->Share(blend.Value());
    if (asPattern) {
        Dictionary pattern;
        pattern.Add("PatternType", 2).Add("Shading", written).Add("Matrix", MatrixValue(use.matrix));
        written = file->Share(pattern.Value());
    }
    std::vector<Reference> &all = asPattern ? patterns_ : shadings_;
    auto found = std::ranges::lower_bound(all, written.number, {}, &Reference::number);
    if (found == all.end())
        found = all.insert(found, written);
    use.name = NameOf(static_cast<size_t>(found - all.begin()));
    return use;
}

void Shadings::AddTo(PdfFile *file, Dictionary *resources) const
{
    const auto add = [&](std::string_view key, const std::vector<Reference> &all) {
        if (all.empty())
            return;
        const Reference names = file->Begin();
        file->Write("<<");
        for (size_t i = 0; i < all.size(); ++i)
            file->Write(NameValue(NameOf(i)) + " " + ValueOf(all[i]) + "\n");
        file->Write(">>");
        file->End();
        resources->Add(key, names);
    };
    add("Shading", shadings_);
    add("Pattern", patterns_);
}

bool Covers(const Shading &shading, const Box &box)
{
    if (!shading.ground.IsEmpty())
        return true;
    if (!IsInvertible(shading.matrix))
        return false;
    const Matrix toUnit = Inverse(shading.matrix);
    const Shading::Circle &circle = shading.first;
    const auto isPainted = [&](Point corner) {
        const Point at = toUnit.Map(corner);
        return shading.kind == ShadingKind::Axial ? 0 <= at.x && at.x <= 1 && 0 <= at.y && at.y <= 1
                                                  : Length(at - circle.centre) <= circle.radius;
    };
    return isPainted({box.left, box.bottom}) && isPainted({box.right, box.bottom}) &&
           isPainted({box.right, box.top}) && isPainted({box.left, box.top});
}

} // namespace vxhost::pdf
