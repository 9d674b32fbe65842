// Crossings are counted first and then dropped into place row by row, so nothing is sorted but the few crossings of one
// row, which are nearly in order already; a row that has many of them notes them by column instead. A shape with
// very many of them is swept in several turns, so that memory follows its edges, not their height.
#include "devices/raster/Sweeper.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr uint32_t kMaxCrossings = 1u << 20; // are collected in one turn, unless a single row has more

int32_t TurnOf(int32_t crossing)
{
    return 1 - (crossing & 1) * 2;
}

// Sorts numbers that are nearly in order, as those of a line of text are, whose glyphs follow each other.
void SortNearby(int32_t *begin, int32_t *end)
{
    constexpr ptrdiff_t kMovesEach = 16; // enough for any 32
    ptrdiff_t moves = (end - begin) * kMovesEach;
    for (int32_t *next = begin + 1; next < end; ++next) {
        const int32_t value = *next;
        int32_t *to = next;
        for (; to > begin && to[-1] > value; --to)
            *to = to[-1];
        *to = value;
        moves -= next - to;
        if (moves < 0)
            return std::sort(begin, end);
    }
}

} // namespace

int32_t Sweeper::CollectRows(std::span<const Edge> edges, int32_t top)
{
    // Counts the edges of each row: the number that begin there less those that ended, summed up.
    const auto rows = static_cast<size_t>(bounds_.bottom - top);
    rowStart_.assign(rows + 1, 0);
    for (const Edge &edge : edges) {
        if (edge.end <= top || edge.begin >= bounds_.bottom)
            continue;
        ++rowStart_[static_cast<size_t>(std::max(edge.begin, top) - top)];
        --rowStart_[static_cast<size_t>(std::min(edge.end, bounds_.bottom) - top)];
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
    for (const Edge &edge : edges) {
        const int32_t stop = std::min(edge.end, end);
        for (int32_t y = std::max(edge.begin, top); y < stop; ++y) {
            const double x = edge.x + (y + 0.5 - edge.y) * edge.slope;
            const int32_t column = FirstCentre(x, bounds_.left, bounds_.right);
            crossings_[rowFill_[static_cast<size_t>(y - top)]++] = column * 2 + edge.up;
        }
    }
    return end;
}

// Makes spans of columns that come in order: where the winding leaves 0 one begins, where it is 0 again it ends.
struct Sweeper::Joiner {
    Span *const first;
    size_t count = 0;
    int32_t winding = 0, begin = 0;

    void Turn(int32_t column, int32_t turns)
    {
        if (winding == 0)
            begin = column;
        winding += turns;
        if (winding != 0 || column == begin)
            return;
        if (count > 0 && first[count - 1].end == begin)
            first[count - 1].end = column;
        else
            first[count++] = {begin, column};
    }
};

// Adds up the turns in each column, with a bit to find it by, so that nothing is sorted. False, and nothing done, for
// crossings that are so few or so far apart that sorting them takes less.
bool Sweeper::JoinByColumns(const int32_t *begin, const int32_t *end, Joiner *joiner)
{
    constexpr ptrdiff_t kFewest = 8;
    constexpr ptrdiff_t kWordsACrossing = 2; // that may be looked through
    if (end - begin < kFewest)
        return false;
    const auto columnOf = [&](int32_t crossing) {
        return static_cast<size_t>((crossing >> 1) - bounds_.left);
    };
    const auto [least, most] = std::minmax_element(begin, end);
    const size_t firstWord = columnOf(*least) / 64, lastWord = columnOf(*most) / 64;
    if (lastWord - firstWord > static_cast<size_t>((end - begin) * kWordsACrossing))
        return false;
    const auto columns = static_cast<size_t>(bounds_.right - bounds_.left) + 1;
    if (turns_.size() < columns) {
        turns_.resize(columns);
        turned_.resize(columns / 64 + 1);
    }
    for (const int32_t *next = begin; next < end; ++next) {
        const size_t column = columnOf(*next);
        turns_[column] += TurnOf(*next);
        turned_[column / 64] |= uint64_t{1} << (column % 64);
    }
    for (size_t word = firstWord; word <= lastWord; ++word) {
        for (uint64_t rest = std::exchange(turned_[word], 0); rest != 0; rest &= rest - 1) {
            const size_t column = word * 64 + static_cast<size_t>(std::countr_zero(rest));
            joiner->Turn(static_cast<int32_t>(column) + bounds_.left, std::exchange(turns_[column], 0));
        }
    }
    return true;
}

std::span<const Span> Sweeper::JoinCrossings(int32_t row)
{
    int32_t *const begin = crossings_.data() + rowStart_[static_cast<size_t>(row)];
    int32_t *const end = crossings_.data() + rowStart_[static_cast<size_t>(row) + 1];
    Span *const first = spans_.data();
    if (end - begin == 2) { // most rows of most shapes
        *first = {std::min(begin[0], begin[1]) >> 1, std::max(begin[0], begin[1]) >> 1};
        return {first, first->begin < first->end ? size_t{1} : 0};
    }
    Joiner joiner = {first};
    if (!JoinByColumns(begin, end, &joiner)) {
        SortNearby(begin, end);
        for (const int32_t *next = begin; next < end; ++next)
            joiner.Turn(*next >> 1, TurnOf(*next));
    }
    return {first, joiner.count};
}

} // namespace vxhost::raster
