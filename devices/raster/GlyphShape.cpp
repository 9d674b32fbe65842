// The scanner finds the spans, in a space whose columns are the parts of a sample: it knows no difference.
#include "devices/raster/GlyphShape.h"

#include "devices/raster/Flatten.h"

#include <algorithm>
#include <limits>
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
    scanner->Sweep([&](int32_t y, std::span<const Span> row) {
        spans->rowEnds.resize(static_cast<size_t>(y), static_cast<uint32_t>(spans->spans.size()));
        for (const Span &span : row)
            spans->spans.push_back({span.begin + box_.left, span.end + box_.left});
        spans->rowEnds.push_back(static_cast<uint32_t>(spans->spans.size()));
    });
    return true;
}

// As in the painter, the end of a span changes the rest of the samples of its row in its pixel, and all of that row in the
// pixels behind. The first are the lower half of a change, the others the upper half.
void MaskFinder::Find(const GlyphSpans &spans, int32_t fractionX, int shift, GlyphMasks *masks)
{
    const int32_t last = (1 << shift) - 1;
    const uint32_t row = (2U << last) - 1;
    const auto whole = static_cast<uint16_t>((2U << ((1 << 2 * shift) - 1)) - 1);
    const auto columnOf = [&](int32_t end) { return GlyphSpans::ColumnOf(end, fractionX); };
    masks->rowEnds.clear();
    masks->runs.clear();
    masks->top = spans.top >> shift;
    int32_t least = std::numeric_limits<int32_t>::max(), most = std::numeric_limits<int32_t>::min();
    for (const Span &span : spans.spans) {
        least = std::min(least, span.begin);
        most = std::max(most, span.end);
    }
    if (least >= most)
        return;
    const int32_t left = columnOf(least) >> shift;
    masks->left = left;
    masks->width = (columnOf(most) >> shift) + 1 - left;
    const auto width = static_cast<size_t>(masks->width);
    if (changes_.size() < width)
        changes_.resize(width);
    uint32_t *const changes = changes_.data();
    size_t runs = 0;
    const auto endRow = [&] {
        if (masks->runs.size() < runs + width)
            masks->runs.resize(runs + width);
        MaskedRun *next = masks->runs.data() + runs;
        uint32_t inside = 0;
        uint16_t before = 0;
        for (size_t x = 0; x < width; ++x) {
            const uint32_t change = std::exchange(changes[x], 0);
            const auto mask = static_cast<uint16_t>(change ^ inside);
            inside ^= change >> 16;
            if (mask == whole && before == whole) {
                ++next[-1].count;
            } else {
                *next = {static_cast<uint16_t>(x), 1, mask};
                next += static_cast<int>(mask != 0); // no branch: nobody can guess where a glyph is blank
            }
            before = mask;
        }
        runs = static_cast<size_t>(next - masks->runs.data());
        masks->rowEnds.push_back(static_cast<uint32_t>(runs));
    };
    for (size_t i = 0; i < spans.rowEnds.size(); ++i) {
        const int32_t y = spans.top + static_cast<int32_t>(i);
        if ((y & last) == 0 && i > 0)
            endRow();
        const int at = (y & last) << shift;
        const auto addEnd = [&](int32_t end) {
            const int32_t column = columnOf(end);
            changes[(column >> shift) - left] ^= (row << (column & last) & row) << at | row << (at + 16);
        };
        for (const Span &span : spans.Row(i)) {
            addEnd(span.begin);
            addEnd(span.end);
        }
    }
    endRow();
    masks->runs.resize(runs);
}

} // namespace vxhost::raster
