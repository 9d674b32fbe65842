// From the edges of a shape to rows of samples: non-zero winding, one point a sample.
#pragma once

#include "devices/raster/Samples.h"

#include <span>
#include <vector>

namespace vxhost::raster
{

// One side of a closed outline.
struct Edge {
    double x, y;        // the upper end
    double slope;       // of x, from a row to the next
    int32_t begin, end; // rows whose centres it crosses
    int32_t up;         // 1 when the outline runs upwards, else 0
};

// The first row or column whose centre is not before v, kept within limits.
inline int32_t FirstCentre(double v, int32_t low, int32_t high)
{
    // This has no branches, since a processor cannot guess where crossings lie. What is not a number becomes low.
    double centre = v - 0.5;
    centre = centre > low ? centre : low;
    centre = centre < high ? centre : high;
    const auto whole = static_cast<int32_t>(centre); // centre is not negative, since low is not
    return whole + static_cast<int32_t>(centre > whole);
}

class Sweeper
{
  public:
    // Calls row(y, spans) for each row of samples within bounds that the shape covers, from the top; spans are in order,
    // not empty and do not touch. Which spans a row has does not depend on which others are swept.
    template <class Row>
    void Sweep(std::span<const Edge> edges, const Bounds &bounds, Row &&row)
    {
        bounds_ = bounds;
        for (int32_t top = bounds.top; top < bounds.bottom;) {
            const int32_t end = CollectRows(edges, top);
            for (int32_t y = top; y < end; ++y) {
                const std::span<const Span> spans = JoinCrossings(y - top);
                if (!spans.empty())
                    row(y, spans);
            }
            top = end;
        }
    }

  private:
    // Collects the crossings of as many rows as fit; returns the row after them.
    int32_t CollectRows(std::span<const Edge> edges, int32_t top);
    struct Joiner;
    bool JoinByColumns(const int32_t *begin, const int32_t *end, Joiner *joiner);
    std::span<const Span> JoinCrossings(int32_t row); // valid until the next call

    Bounds bounds_;
    std::vector<int32_t> crossings_; // of the rows collected: sample · 2 + up
    std::vector<uint32_t> rowStart_; // places in crossings_: one for each row, and the end
    std::vector<uint32_t> rowFill_;  // where the row's next crossing goes
    std::vector<int32_t>
        turns_; // windings begun less those ended in each column of a row that has many crossings
    std::vector<uint64_t> turned_; // a bit for each column that has any; both are zero between two rows
    std::vector<Span> spans_;      // room for the spans of one row
};

} // namespace vxhost::raster
