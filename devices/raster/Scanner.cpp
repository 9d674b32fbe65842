// Crossings are counted first and then dropped into place row by row, so nothing is sorted but the few crossings of one
// row, which are nearly in order already; a row that has more of them than samples counts them instead. A shape with
// very many of them is swept in several turns, so that memory follows its edges, not their height.
#include "devices/raster/Scanner.h"

namespace vxhost::raster
{

namespace
{

constexpr uint32_t kMaxCrossings = 1u << 20; // are collected in one turn, unless a single row has more

// Points that were computed along two ways differ in their last bits, and must be one point all the same:
// they are rounded to 1/65536 of a sample. Adding this leaves no room for the bits below; taking it away
// again brings the rest back.
constexpr double kRounder = 1.5 * (uint64_t{1} << 36);

double Snap(double v)
{
    return (v + kRounder) - kRounder;
}

// The first row or column whose centre is not before v, kept within limits.
int32_t FirstCentre(double v, int32_t low, int32_t high)
{
    // This has no branches, since a processor cannot guess where crossings lie. What is not a number becomes low.
    double centre = v - 0.5;
    centre = centre > low ? centre : low;
    centre = centre < high ? centre : high;
    const auto whole = static_cast<int32_t>(centre); // centre is not negative, since low is not
    return whole + static_cast<int32_t>(centre > whole);
}

// Sorts numbers that are nearly in order. False, with the order changed, when that takes more than so many moves each.
bool SortNearby(int32_t *begin, const int32_t *end, ptrdiff_t movesEach)
{
    ptrdiff_t moves = (end - begin) * movesEach;
    for (int32_t *next = begin + 1; next < end && moves >= 0; ++next) {
        const int32_t value = *next;
        int32_t *to = next;
        for (; to > begin && to[-1] > value; --to)
            *to = to[-1];
        *to = value;
        moves -= next - to;
    }
    return moves >= 0;
}

} // namespace

void Scanner::Begin(const Bounds &bounds, uint64_t maxBytes)
{
    bounds_ = bounds;
    maxEdges_ = static_cast<size_t>(maxBytes / sizeof(Edge));
    edges_.clear();
    first_ = bounds.bottom;
    last_ = bounds.top;
}

void Scanner::AddEdge(Point from, Point to)
{
    const double fromY = Snap(from.y), toY = Snap(to.y);
    const bool up = toY < fromY;
    const double top = up ? toY : fromY, bottom = up ? fromY : toY;
    const int32_t begin = FirstCentre(top, bounds_.top, bounds_.bottom);
    const int32_t end = FirstCentre(bottom, bounds_.top, bounds_.bottom);
    if (begin >= end || IsOverfull())
        return;
    const double fromX = Snap(from.x), toX = Snap(to.x);
    const double x = up ? toX : fromX;
    const double slope = ((up ? fromX : toX) - x) / (bottom - top);
    edges_.push_back({x, top, slope, begin, end, up ? 1 : 0});
    first_ = std::min(first_, begin);
    last_ = std::max(last_, end);
}

int32_t Scanner::CollectRows(int32_t top)
{
    // How many edges each row has: the number that begin there less those that ended, summed up.
    const auto rows = static_cast<size_t>(last_ - top);
    rowStart_.assign(rows + 1, 0);
    for (const Edge &edge : edges_) {
        if (edge.end <= top)
            continue;
        ++rowStart_[static_cast<size_t>(std::max(edge.begin, top) - top)];
        --rowStart_[static_cast<size_t>(edge.end - top)];
    }
    uint32_t count = 0, most = 0, total = 0;
    size_t taken = 0;
    for (; taken < rows; ++taken) {
        count += rowStart_[taken];
        if (taken > 0 && total + count > kMaxCrossings)
            break;
        rowStart_[taken] = total;
        total += count;
        most = std::max(most, count);
    }
    rowStart_[taken] = total;
    rowFill_.assign(rowStart_.begin(), rowStart_.begin() + static_cast<ptrdiff_t>(taken));
    if (crossings_.size() < total)
        crossings_.resize(total);
    if (spans_.size() < most / 2)
        spans_.resize(most / 2);

    const int32_t end = top + static_cast<int32_t>(taken);
    for (const Edge &edge : edges_) {
        const int32_t stop = std::min(edge.end, end);
        for (int32_t y = std::max(edge.begin, top); y < stop; ++y) {
            const double x = edge.x + (y + 0.5 - edge.y) * edge.slope;
            const int32_t column = FirstCentre(x, bounds_.left, bounds_.right);
            crossings_[rowFill_[static_cast<size_t>(y - top)]++] = column * 2 + edge.up;
        }
    }
    return end;
}

void Scanner::SortCrossings(int32_t *begin, int32_t *end)
{
    constexpr ptrdiff_t kMovesEach =
        16; // enough for any 32, and for a line of text, whose glyphs follow each other
    constexpr ptrdiff_t kPlacesACrossing = 4; // where sorting takes as long as looking at each place
    const ptrdiff_t places = (ptrdiff_t{bounds_.right} - bounds_.left + 1) * 2;
    if (SortNearby(begin, end, kMovesEach))
        return;
    if (end - begin < places / kPlacesACrossing)
        return std::sort(begin, end);
    const int32_t lowest = bounds_.left * 2;
    counts_.assign(static_cast<size_t>(places), 0);
    for (const int32_t *next = begin; next < end; ++next)
        ++counts_[static_cast<size_t>(*next - lowest)];
    for (size_t place = 0; place < counts_.size(); ++place)
        begin = std::fill_n(begin, counts_[place], lowest + static_cast<int32_t>(place));
}

std::span<const Span> Scanner::JoinCrossings(int32_t row)
{
    int32_t *next = crossings_.data() + rowStart_[static_cast<size_t>(row)];
    int32_t *const end = crossings_.data() + rowStart_[static_cast<size_t>(row) + 1];
    Span *const first = spans_.data();
    if (end - next == 2) { // most rows of most shapes
        *first = {std::min(next[0], next[1]) >> 1, std::max(next[0], next[1]) >> 1};
        return {first, first->begin < first->end ? size_t{1} : 0};
    }
    SortCrossings(next, end);

    size_t count = 0;
    int32_t winding = 0, begin = 0;
    for (; next < end; ++next) {
        const int32_t column = *next >> 1;
        if (winding == 0)
            begin = column;
        winding += (*next & 1) != 0 ? -1 : 1;
        if (winding != 0 || column == begin)
            continue;
        if (count > 0 && first[count - 1].end == begin)
            first[count - 1].end = column;
        else
            first[count++] = {begin, column};
    }
    return {first, count};
}

} // namespace vxhost::raster
