// The scanner finds the spans, in a space whose columns are the parts of a sample: it knows no difference.
#include "devices/raster/GlyphShape.h"

#include "devices/raster/Flatten.h"

#include <algorithm>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr double kParts = 1 << kFractionBits; // of a sample

// Glyphs reach so many samples from their origin at most, so that twice their width in parts is an int32_t.
constexpr double kReach = 1 << 12;

// The nearest whole number of parts, of a distance that is less than kFarthest samples.
constexpr double kFarthest = 1 << 30;
int64_t ToParts(double samples)
{
    constexpr int64_t kPositive = int64_t{1} << 47; // what is cut off a positive number is its fraction
    return static_cast<int64_t>(samples * kParts + (static_cast<double>(kPositive) + 0.5)) - kPositive;
}

template <int32_t kDivisor>
int32_t FloorDivide(int32_t number)
{
    return (number - (number < 0 ? kDivisor - 1 : 0)) / kDivisor;
}

} // namespace

bool FindPlace(Point origin, int shift, GlyphPlace *place)
{
    // Written so that what is not a number is far away.
    if (!(std::abs(origin.x) < kFarthest && std::abs(origin.y) < kFarthest))
        return false;
    const int pixelBits = kFractionBits + shift;
    const int64_t x = ToParts(origin.x), y = ToParts(origin.y), parts = (int64_t{1} << pixelBits) - 1;
    *place = {static_cast<int32_t>(x >> pixelBits), static_cast<int32_t>(y >> pixelBits),
              static_cast<int32_t>(x & parts), static_cast<int32_t>(y & parts)};
    return true;
}

void GlyphShape::AddEdge(Point from, Point to)
{
    for (const Point p : {from, to})
        fits_ = fits_ && std::abs(p.x) < kReach && std::abs(p.y) < kReach;
    if (!fits_)
        return;
    const auto parts = [](double samples) { return static_cast<int32_t>(ToParts(samples)); };
    const Edge edge = {parts(from.x), parts(from.y), parts(to.x), parts(to.y)};
    if (edge.fromY == edge.toY)
        return;
    box_.left = std::min({box_.left, edge.fromX, edge.toX});
    box_.right = std::max({box_.right, edge.fromX, edge.toX});
    box_.top = std::min({box_.top, edge.fromY, edge.toY});
    box_.bottom = std::max({box_.bottom, edge.fromY, edge.toY});
    edges_.push_back(edge);
}

bool GlyphShape::Make(const Path &outline, const Matrix &emsToSamples)
{
    constexpr auto kEnd = static_cast<int32_t>(kReach) << kFractionBits;
    edges_.clear();
    box_ = {kEnd, kEnd, -kEnd, -kEnd};
    fits_ = true;
    ClosedOutline<GlyphShape> closed{this, {}, {}};
    constexpr auto kAll = static_cast<int32_t>(kReach);
    Flatten(outline, emsToSamples, {-kAll, -kAll, kAll, kAll}, 0, closed);
    closed.Close();
    return fits_;
}

Bounds GlyphShape::BoundsAt(const GlyphPlace &place, int shift) const
{
    const int32_t left = place.pixelX << shift, top = place.pixelY << shift;
    const auto sample = [](int32_t part, int32_t fraction) { return (part + fraction) >> kFractionBits; };
    return {left + sample(box_.left, place.fractionX), top + sample(box_.top, place.fractionY),
            left + sample(box_.right, place.fractionX) + 1, top + sample(box_.bottom, place.fractionY) + 1};
}

bool GlyphShape::FindSpans(int32_t fractionY, uint64_t maxBytes, Scanner *scanner, GlyphSpans *spans) const
{
    spans->rowEnds.clear();
    spans->spans.clear();
    if (edges_.empty())
        return true;
    // The scanner counts from the upper left corner of the box, since it knows no numbers below 0.
    const int32_t top = (box_.top + fractionY) >> kFractionBits,
                  bottom = ((box_.bottom + fractionY) >> kFractionBits) + 1;
    scanner->Begin({0, 0, box_.right - box_.left + 1, bottom - top}, maxBytes);
    const int32_t toTop = fractionY - top * (1 << kFractionBits);
    const auto inBox = [&](int32_t x, int32_t y) {
        return Point{static_cast<double>(x - box_.left), (y + toTop) * kPlacement};
    };
    for (const Edge &edge : edges_)
        scanner->AddEdge(inBox(edge.fromX, edge.fromY), inBox(edge.toX, edge.toY));
    if (scanner->IsOverfull())
        return false;
    spans->top = top;
    spans->left = box_.left;
    spans->right = box_.right;
    scanner->Sweep([&](int32_t y, std::span<const Span> row) {
        spans->rowEnds.resize(static_cast<size_t>(y), static_cast<uint32_t>(spans->spans.size()));
        for (const Span &span : row)
            spans->spans.push_back({span.begin + box_.left, span.end + box_.left});
        spans->rowEnds.push_back(static_cast<uint32_t>(spans->spans.size()));
    });
    return true;
}

void MaskFinder::Find(const GlyphSpans &spans, int32_t fractionX, int samples, GlyphMasks *masks)
{
    masks->rowEnds.clear();
    if (spans.spans.empty())
        return;
    if (samples == 4)
        FindRows<4>(spans, fractionX, masks);
    else if (samples == 2)
        FindRows<2>(spans, fractionX, masks);
    else
        FindRows<1>(spans, fractionX, masks);
}

// Each row of samples is bits, one for each sample from the left: the end of a span changes all from its column on.
template <int32_t kSamples>
void MaskFinder::FindRows(const GlyphSpans &spans, int32_t fractionX, GlyphMasks *masks)
{
    constexpr int32_t kBits = 64, kPixels = kBits / kSamples; // of a word
    const auto columnOf = [&](int32_t end) { return GlyphSpans::ColumnOf(end, fractionX); };
    masks->left = FloorDivide<kSamples>(columnOf(spans.left));
    masks->top = FloorDivide<kSamples>(spans.top);
    const int32_t left = masks->left * kSamples;
    const int32_t words = (columnOf(spans.right) - left) / kBits + 1;
    masks->width = (columnOf(spans.right) - left) / kSamples + 1;
    bits_.assign(static_cast<size_t>(words * kSamples), 0);
    const auto rows = static_cast<int32_t>(spans.rowEnds.size());
    size_t runs = 0;
    for (int32_t row = masks->top * kSamples - spans.top; row < rows; row += kSamples) {
        for (int32_t k = std::max(-row, 0); k < std::min(kSamples, rows - row); ++k) {
            uint64_t *const bits = bits_.data() + k * words;
            const std::span<const Span> ends = spans.Row(static_cast<size_t>(row + k));
            if (words == 1) { // most glyphs
                uint64_t inside = 0;
                for (const Span &span : ends)
                    inside ^= ~uint64_t{0} << (columnOf(span.begin) - left) ^
                              ~uint64_t{0} << (columnOf(span.end) - left);
                *bits = inside;
                continue;
            }
            for (const Span &span : ends) {
                for (const int32_t end : {span.begin, span.end}) {
                    const int32_t column = columnOf(end) - left;
                    bits[column / kBits] ^= ~uint64_t{0} << column % kBits;
                    for (int32_t word = column / kBits + 1; word < words; ++word)
                        bits[word] ^= ~uint64_t{0};
                }
            }
        }
        if (masks->runs.size() < runs + static_cast<size_t>(words * kPixels))
            masks->runs.resize(runs + static_cast<size_t>(words * kPixels));
        runs = AddRuns<kSamples>(words, masks->runs.data() + runs) - masks->runs.data();
        masks->rowEnds.push_back(static_cast<uint32_t>(runs));
        std::ranges::fill(bits_, 0);
    }
}

// Makes masks of rows of bits, and returns the end of the runs.
template <int32_t kSamples>
MaskedRun *MaskFinder::AddRuns(int32_t words, MaskedRun *next) const
{
    constexpr int32_t kPixels = 64 / kSamples;
    constexpr uint64_t kRow = (1U << kSamples) - 1;
    constexpr auto kWhole = static_cast<uint16_t>((uint64_t{1} << kSamples * kSamples) - 1);
    for (int32_t word = 0; word < words; ++word) {
        uint16_t before = 0;
        uint64_t row[kSamples], any = 0;
        for (int32_t k = 0; k < kSamples; ++k)
            any |= row[k] = bits_[static_cast<size_t>(k * words + word)];
        for (int32_t x = word * kPixels; any != 0; ++x, any >>= kSamples) {
            uint64_t samples = 0;
            for (int32_t k = 0; k < kSamples; ++k) {
                samples |= (row[k] & kRow) << k * kSamples;
                row[k] >>= kSamples;
            }
            const auto mask = static_cast<uint16_t>(samples);
            if (mask == kWhole && before == kWhole) {
                ++next[-1].count;
            } else {
                *next = {static_cast<uint16_t>(x), 1, mask};
                next += static_cast<int>(mask != 0); // no branch: nobody can guess where a glyph is blank
            }
            before = mask;
        }
    }
    return next;
}

} // namespace vxhost::raster
