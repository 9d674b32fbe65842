#include "devices/raster/GlyphShape.h"

#include "devices/raster/Flatten.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr double kParts = 1 << kFractionBits; // of a sample

// Glyphs reach so many samples from their origin at most, so that twice their width in parts is an int32_t.
constexpr double kReach = 1 << 11;

// The nearest whole number of parts, of a distance that is less than kFarthest samples.
constexpr double kFarthest = 1 << 30;
int64_t ToParts(double samples)
{
    constexpr int64_t kPositive = int64_t{1} << 47; // what is cut off a positive number is its fraction
    return static_cast<int64_t>(samples * kParts + (static_cast<double>(kPositive) + 0.5)) - kPositive;
}

constexpr uint32_t kBits = 64; // of a word

int32_t NearestPart(double part)
{
    constexpr int32_t kPositive = 1 << 30;
    return static_cast<int32_t>(part + (kPositive + 0.5)) - kPositive;
}

// Most rows have two, and nearly all have less than ten.
void SortFew(std::span<int32_t> numbers)
{
    constexpr size_t kFew = 32;
    if (numbers.size() > kFew) {
        std::ranges::sort(numbers);
        return;
    }
    for (size_t i = 1; i < numbers.size(); ++i) {
        const int32_t number = numbers[i];
        size_t to = i;
        for (; to > 0 && numbers[to - 1] > number; --to)
            numbers[to] = numbers[to - 1];
        numbers[to] = number;
    }
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
    const int32_t fromX = parts(from.x), fromY = parts(from.y), toX = parts(to.x), toY = parts(to.y);
    if (fromY == toY)
        return;
    box_.left = std::min({box_.left, fromX, toX});
    box_.right = std::max({box_.right, fromX, toX});
    box_.top = std::min({box_.top, fromY, toY});
    box_.bottom = std::max({box_.bottom, fromY, toY});
    const double slope = static_cast<double>(toX - fromX) / (toY - fromY);
    if (toY < fromY)
        edges_.push_back({static_cast<double>(toX), slope, toY, fromY, 1});
    else
        edges_.push_back({static_cast<double>(fromX), slope, fromY, toY, 0});
}

bool GlyphShape::Make(const Path &outline, const Matrix &emsToSamples)
{
    constexpr auto kAll = static_cast<int32_t>(kReach), kEnd = kAll << kFractionBits;
    edges_.clear();
    box_ = {kEnd, kEnd, -kEnd, -kEnd};
    fits_ = true;
    ClosedOutline<GlyphShape> closed{this, {}, {}};
    Flatten(outline, emsToSamples, {-kAll, -kAll, kAll, kAll}, 0, closed);
    closed.Close();
    mostCrossings_ = FindMostCrossings();
    constexpr size_t kMostCrossings = size_t{1} << 18; // of all rows
    const auto rows = static_cast<size_t>(std::max(box_.bottom - box_.top, 0) >> kFractionBits) + 2;
    return fits_ && mostCrossings_ <= kMostCrossings / rows;
}

// A row crosses the edges that begin at it or above it and end below it.
size_t GlyphShape::FindMostCrossings() const
{
    std::vector<std::pair<int32_t, int32_t>> ends; // and what each adds to the edges that are crossed
    ends.reserve(edges_.size() * 2);
    for (const Edge &edge : edges_) {
        ends.emplace_back(edge.top, 1);
        ends.emplace_back(edge.bottom, -1);
    }
    std::ranges::sort(ends);
    int32_t crossed = 0, most = 0;
    for (const auto &[y, adds] : ends) {
        crossed += adds;
        most = std::max(most, crossed);
    }
    return static_cast<size_t>(most);
}

Bounds GlyphShape::BoundsAt(const GlyphPlace &place, int shift) const
{
    const int32_t left = place.pixelX << shift, top = place.pixelY << shift;
    const auto sample = [](int32_t part, int32_t fraction) { return (part + fraction) >> kFractionBits; };
    return {left + sample(box_.left, place.fractionX), top + sample(box_.top, place.fractionY),
            left + sample(box_.right, place.fractionX) + 1, top + sample(box_.bottom, place.fractionY) + 1};
}

void GlyphScanner::Find(const GlyphShape &shape, int32_t fractionY, GlyphSpans *spans)
{
    spans->rowEnds.clear();
    spans->spans.clear();
    if (shape.edges_.empty())
        return;
    constexpr int32_t kHalf = 1 << (kFractionBits - 1);
    const int32_t top = (shape.box_.top + fractionY) >> kFractionBits;
    const int32_t rows = ((shape.box_.bottom + fractionY) >> kFractionBits) - top + 1;
    spans->top = top;
    spans->left = shape.box_.left;
    spans->right = shape.box_.right;
    const size_t room = shape.mostCrossings_;
    if (crossings_.size() < room * static_cast<size_t>(rows))
        crossings_.resize(room * static_cast<size_t>(rows));
    counts_.assign(static_cast<size_t>(rows), 0);
    for (const GlyphShape::Edge &edge : shape.edges_) {
        // The rows whose centres are not before one end, and before the other.
        const int32_t first = (edge.top + fractionY + kHalf - 1) >> kFractionBits;
        const int32_t end = (edge.bottom + fractionY + kHalf - 1) >> kFractionBits;
        for (int32_t y = first; y < end; ++y) {
            const int32_t below = (y << kFractionBits) + kHalf - (edge.top + fractionY);
            const int32_t column = NearestPart(edge.x + below * edge.slope);
            const auto row = static_cast<size_t>(y - top);
            crossings_[row * room + counts_[row]++] = column * 2 + edge.up;
        }
    }
    for (size_t row = 0; row < counts_.size(); ++row) {
        const std::span<int32_t> crossings(crossings_.data() + row * room, counts_[row]);
        SortFew(crossings);
        int32_t winding = 0, begin = 0;
        for (const int32_t crossing : crossings) {
            const int32_t column = crossing >> 1;
            if (winding == 0)
                begin = column;
            winding += 1 - (crossing & 1) * 2;
            if (winding == 0 && begin < column)
                spans->spans.push_back({begin, column});
        }
        spans->rowEnds.push_back(static_cast<uint32_t>(spans->spans.size()));
    }
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
    constexpr uint32_t kPixels = kBits / kSamples; // of a word
    const auto columnOf = [&](int32_t end) { return GlyphSpans::ColumnOf(end, fractionX); };
    masks->left = FloorDivide<kSamples>(columnOf(spans.left));
    masks->top = FloorDivide<kSamples>(spans.top);
    const int32_t left = masks->left * kSamples;
    const auto columns = static_cast<uint32_t>(columnOf(spans.right) - left) + 1;
    const uint32_t words = (columns + kBits - 1) / kBits;
    masks->width = static_cast<int32_t>(columns + kSamples - 1) / kSamples;
    bits_.assign(size_t{words} * kSamples, 0);
    const auto rows = static_cast<int32_t>(spans.rowEnds.size());
    size_t runs = 0;
    for (int32_t row = masks->top * kSamples - spans.top; row < rows; row += kSamples) {
        for (int32_t k = std::max(-row, 0); k < std::min(kSamples, rows - row); ++k) {
            uint64_t *const bits = bits_.data() + static_cast<size_t>(k) * words;
            const int32_t at = row + k;
            const std::span<const Span> ends = spans.Row(static_cast<size_t>(at));
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
                    const auto column = static_cast<uint32_t>(columnOf(end) - left);
                    bits[column / kBits] ^= ~uint64_t{0} << column % kBits;
                    for (uint32_t word = column / kBits + 1; word < words; ++word)
                        bits[word] ^= ~uint64_t{0};
                }
            }
        }
        if (masks->runs.size() < runs + words * kPixels)
            masks->runs.resize(runs + words * kPixels);
        runs = static_cast<size_t>(AddRuns<kSamples>(words, masks->runs.data() + runs) - masks->runs.data());
        masks->rowEnds.push_back(static_cast<uint32_t>(runs));
        std::ranges::fill(bits_, 0);
    }
}

// Makes masks of rows of bits, and returns the end of the runs.
template <int32_t kSamples>
MaskedRun *MaskFinder::AddRuns(uint32_t words, MaskedRun *next) const
{
    constexpr uint32_t kPixels = kBits / kSamples;
    constexpr uint64_t kRow = (1U << kSamples) - 1;
    constexpr auto kWhole = static_cast<uint16_t>((uint64_t{1} << kSamples * kSamples) - 1);
    for (uint32_t word = 0; word < words; ++word) {
        std::array<uint64_t, kSamples> rows;
        uint64_t any = 0, all = ~uint64_t{0};
        for (size_t k = 0; k < kSamples; ++k) {
            rows[k] = bits_[k * words + word];
            any |= rows[k];
            all &= rows[k];
        }
        // What is blank and what is whole is passed in one step.
        for (uint32_t x = 0; x < kBits && any >> x != 0;) {
            x += static_cast<uint32_t>(std::countr_zero(any >> x)) / kSamples * kSamples;
            const uint32_t whole = static_cast<uint32_t>(std::countr_one(all >> x)) / kSamples;
            const auto column = static_cast<uint16_t>(word * kPixels + x / kSamples);
            if (whole > 0) {
                *next++ = {column, static_cast<uint16_t>(whole), kWhole};
                x += whole * kSamples;
                continue;
            }
            uint64_t mask = 0;
            for (size_t k = 0; k < kSamples; ++k)
                mask |= (rows[k] >> x & kRow) << k * kSamples;
            *next++ = {column, 1, static_cast<uint16_t>(mask)};
            x += kSamples;
        }
    }
    return next;
}

} // namespace vxhost::raster
