#include "devices/pdf/Shadings.h"

#include "devices/pdf/Matrices.h"
#include "devices/vector/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace vxhost::pdf
{

namespace
{

// Blends beyond these are painted as shapes: a document that never repeats a blend must not fill the memory.
constexpr size_t kMaxBlends = 16384;
constexpr size_t kMaxRampBytes = size_t{16} << 20;
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

void AppendBytes(const double *values, size_t count, std::string *to)
{
    to->append(reinterpret_cast<const char *>(values), count * sizeof *values);
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

// A ramp as it is kept and compared. Two colours, or one, keep their numbers; more become samples. The first byte says
// which it is, the second of how many components.
constexpr char kLinear = 'l', kSampled = 's';
constexpr size_t kRampHead = 2;

std::string RampOf(const ColourSpan &span, const PaintSpace &space)
{
    std::vector<double> values;
    for (const Colour &colour : span.colours)
        AppendComponents(colour, space, &values);
    const size_t components = values.size() / span.colours.size();
    if (span.colours.size() == 1)
        values.insert(values.end(), values.begin(), values.begin() + static_cast<std::ptrdiff_t>(components));
    std::string ramp = {span.colours.size() <= 2 ? kLinear : kSampled, static_cast<char>(components)};
    if (ramp[0] == kLinear) {
        AppendBytes(values.data(), values.size(), &ramp);
        return ramp;
    }
    for (const double value : values) {
        const auto level = static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 0xFFFF));
        ramp += static_cast<char>(level >> 8);
        ramp += static_cast<char>(level & 0xFF);
    }
    return ramp;
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

QPDFObjectHandle LinearFunction(PdfFile *file, const std::string &ramp)
{
    std::vector<double> values((ramp.size() - kRampHead) / sizeof(double));
    std::memcpy(values.data(), ramp.data() + kRampHead, values.size() * sizeof(double));
    const auto colour = [&](size_t first) {
        QPDFObjectHandle array = QPDFObjectHandle::newArray();
        for (size_t i = first; i < first + values.size() / 2; ++i)
            array.appendItem(QPDFObjectHandle::newReal(NumberText(values[i])));
        return array;
    };
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(2));
    function.replaceKey("/Domain", Domain(1));
    function.replaceKey("/C0", colour(0));
    function.replaceKey("/C1", colour(values.size() / 2));
    function.replaceKey("/N", QPDFObjectHandle::newInteger(1));
    return file->Add(function);
}

QPDFObjectHandle SampledFunction(PdfFile *file, const std::string &ramp)
{
    const auto components = static_cast<size_t>(static_cast<uint8_t>(ramp[1]));
    const size_t samples = (ramp.size() - kRampHead) / (components * kSampleBits / 8);
    QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(0));
    dictionary.replaceKey("/Domain", Domain(1));
    dictionary.replaceKey("/Range", Domain(components));
    dictionary.replaceKey(
        "/Size", QPDFObjectHandle::newArray({QPDFObjectHandle::newInteger(static_cast<int64_t>(samples))}));
    dictionary.replaceKey("/BitsPerSample", QPDFObjectHandle::newInteger(kSampleBits));
    return file->AddStream(dictionary, std::string_view(ramp).substr(kRampHead));
}

QPDFObjectHandle ColourSpaceOf(PdfFile *file, const PaintSpace &space)
{
    if (space.isBlackInk)
        return InkSpace(file, {&kProcessInks[kInkCount - 1]});
    if (space.inks.empty())
        return MakeName("DeviceGray");
    const bool isProcess = std::ranges::equal(
        space.inks, kProcessInks, [](const SpotInk *ink, const SpotInk &process) { return ink == &process; });
    return isProcess ? MakeName("DeviceCMYK") : InkSpace(file, space.inks);
}

} // namespace

std::optional<ShadingUse> Shadings::Use(const Shading &shading)
{
    Blend blend;
    ShadingUse use;
    use.matrix = shading.matrix;
    blend.kind = shading.kind;
    if (shading.kind == ShadingKind::Radial && !Normalise(shading, &use.matrix, &blend.last))
        return std::nullopt;
    if (!IsInvertible(use.matrix) || !FindSpace(shading, &blend.space))
        return std::nullopt;
    double from = 0;
    for (const ColourSpan &span : shading.spans) {
        const double to = Rounded(span.to);
        if (span.colours.empty() || !(to > from))
            continue;
        from = to;
        const std::optional<size_t> ramp = FindOrAddRamp(RampOf(span, blend.space));
        if (!ramp)
            return std::nullopt;
        blend.spans.push_back({to, *ramp});
    }
    const std::optional<size_t> number = blend.spans.empty() ? std::nullopt : FindOrAdd(std::move(blend));
    if (!number)
        return std::nullopt;
    use.name = NameOf(*number);
    return use;
}

std::optional<size_t> Shadings::FindOrAddRamp(std::string ramp)
{
    const auto found = ramps_.find(ramp);
    if (found != ramps_.end())
        return found->second;
    rampBytes_ += ramp.size();
    if (rampBytes_ > kMaxRampBytes)
        return std::nullopt;
    return ramps_.emplace(std::move(ramp), ramps_.size()).first->second;
}

std::optional<size_t> Shadings::FindOrAdd(Blend blend)
{
    std::string key = KeyOf(blend);
    const auto found = blendOfKey_.find(key);
    if (found != blendOfKey_.end())
        return found->second;
    if (blends_.size() == kMaxBlends)
        return std::nullopt;
    blends_.push_back(std::move(blend));
    return blendOfKey_.emplace(std::move(key), blends_.size() - 1).first->second;
}

std::string Shadings::KeyOf(const Blend &blend)
{
    std::string key;
    key += blend.kind == ShadingKind::Axial ? 'a' : 'r';
    key += blend.space.isBlackInk ? 'b' : 'g';
    for (const SpotInk *ink : blend.space.inks)
        key.append(std::to_string(reinterpret_cast<uintptr_t>(ink))).append(" ");
    const double circle[] = {blend.last.centre.x, blend.last.centre.y, blend.last.radius};
    AppendBytes(circle, std::size(circle), &key);
    return key + KeyOf(blend.spans);
}

std::string Shadings::KeyOf(const std::vector<Span> &spans)
{
    std::string key;
    for (const Span &span : spans) {
        const double values[] = {span.to, static_cast<double>(span.ramp)};
        AppendBytes(values, std::size(values), &key);
    }
    return key;
}

// The function of one ramp, or that of several stitched together.
QPDFObjectHandle Shadings::FunctionOf(const std::vector<Span> &spans,
                                      const std::vector<QPDFObjectHandle> &ramps)
{
    if (spans.size() == 1)
        return ramps[spans.front().ramp];
    QPDFObjectHandle bounds = QPDFObjectHandle::newArray(), parts = QPDFObjectHandle::newArray();
    for (const Span &span : spans) {
        parts.appendItem(ramps[span.ramp]);
        if (&span != &spans.back())
            bounds.appendItem(MakeNumber(span.to));
    }
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(3));
    function.replaceKey("/Domain", Domain(1));
    function.replaceKey("/Functions", parts);
    function.replaceKey("/Bounds", bounds);
    function.replaceKey("/Encode", Domain(spans.size()));
    return function;
}

// What shadings have in common is one object for all: there may be thousands of them, and the file is written at the end.
// Each goes on beyond both of its ends: the clip draws the shape's edge, and the inner disc of a radial one is filled.
void Shadings::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    std::vector<QPDFObjectHandle> functions(ramps_.size());
    for (const auto &[ramp, number] : ramps_)
        functions[number] = ramp[0] == kLinear ? LinearFunction(file, ramp) : SampledFunction(file, ramp);
    std::map<Inks, QPDFObjectHandle> spaces; // gray has another place for its black ink
    std::map<std::string, QPDFObjectHandle> functionOfSpans;
    const QPDFObjectHandle yes = QPDFObjectHandle::newBool(true);
    const QPDFObjectHandle both = QPDFObjectHandle::newArray({yes, yes});
    const QPDFObjectHandle axial = QPDFObjectHandle::newInteger(2), radial = QPDFObjectHandle::newInteger(3);
    const QPDFObjectHandle zero = MakeNumber(0), one = MakeNumber(1);
    const QPDFObjectHandle line = QPDFObjectHandle::newArray({zero, zero, one, zero});
    for (size_t i = 0; i < blends_.size(); ++i) {
        const Blend &blend = blends_[i];
        const bool isAxial = blend.kind == ShadingKind::Axial;
        const Inks spaceKey = blend.space.isBlackInk ? Inks{nullptr} : blend.space.inks;
        QPDFObjectHandle &space = spaces[spaceKey];
        if (!space.isInitialized())
            space = ColourSpaceOf(file, blend.space);
        QPDFObjectHandle &function = functionOfSpans[KeyOf(blend.spans)];
        if (!function.isInitialized())
            function = FunctionOf(blend.spans, functions);
        if (!function.isIndirect())
            function = file->Add(function);
        const Shading::Circle &last = blend.last;
        QPDFObjectHandle shading = QPDFObjectHandle::newDictionary();
        shading.replaceKey("/ShadingType", isAxial ? axial : radial);
        shading.replaceKey("/ColorSpace", space);
        shading.replaceKey("/Coords", isAxial ? line
                                              : QPDFObjectHandle::newArray(
                                                    {zero, zero, one, MakeNumber(last.centre.x),
                                                     MakeNumber(last.centre.y), MakeNumber(last.radius)}));
        shading.replaceKey("/Function", function);
        shading.replaceKey("/Extend", both);
        resources->replaceKey(pdf::KeyOf(NameOf(i)), file->Add(shading));
    }
}

} // namespace vxhost::pdf
