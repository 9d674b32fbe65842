// From outlines to rows of samples: non-zero winding, one point a sample.
//
// A sample is inside a shape or it is not. Centres that lie exactly on an edge belong to the shape on their
// right or below, and an edge crosses a row at the same place whichever way it runs, so shapes that share an
// edge share out the samples along it: none is left out, none is given twice.
#pragma once

#include "devices/raster/Samples.h"

#include <span>
#include <vector>

namespace vxhost::raster
{

class Scanner
{
  public:
    // Forgets the last shape. Samples outside of bounds will not be reported. Edges beyond maxBytes are
    // dropped.
    void Begin(const Bounds &bounds, uint64_t maxBytes);

    // One side of a closed outline; the order of sides does not matter.
    void AddEdge(Point from, Point to);
    size_t EdgeCount() const { return edges_.size(); }
    bool IsOverfull() const
    {
        return edges_.size() > maxEdges_;
    } // edges were dropped, so the shape is not what was asked for

    // Calls row(y, spans) for each row of samples that the shape covers, from the top; spans are in order,
    // not empty and do not touch.
    template <class Row>
    void Sweep(Row &&row)
    {
        for (int32_t top = first_; top < last_;) {
            const int32_t end = CollectRows(top);
            for (int32_t y = top; y < end; ++y) {
                const std::span<const Span> spans = JoinCrossings(y - top);
                if (!spans.empty())
                    row(y, spans);
            }
            top = end;
        }
    }

  private:
    struct Edge {
        double x, y;        // the upper end
        double slope;       // of x, from a row to the next
        int32_t begin, end; // rows whose centres it crosses
        int32_t up;         // 1 when the outline runs upwards, else 0
    };

    int32_t CollectRows(int32_t top); // crossings of as many rows as fit; returns the row after them
    struct Joiner;
    bool JoinByColumns(const int32_t *begin, const int32_t *end, Joiner *joiner);
    std::span<const Span> JoinCrossings(int32_t row); // valid until the next call

    Bounds bounds_;
    size_t maxEdges_ = 0;
    int32_t first_ = 0, last_ = 0; // rows that some edge crosses
    std::vector<Edge> edges_;
    std::vector<int32_t> crossings_; // of the rows collected: sample · 2 + up
    std::vector<uint32_t> rowStart_; // places in crossings_: one for each row, and the end
    std::vector<uint32_t> rowFill_;  // where the row's next crossing goes
    std::vector<int32_t>
        turns_; // windings begun less those ended in each column of a row that has many crossings
    std::vector<uint64_t> turned_; // a bit for each column that has any; both are zero between two rows
    std::vector<Span> spans_;      // room for the spans of one row
};

} // namespace vxhost::raster
