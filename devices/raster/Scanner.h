// From outlines to rows of samples.
//
// A sample is inside a shape or it is not. Centres that lie exactly on an edge belong to the shape on their
// right or below, and an edge crosses a row at the same place whichever way it runs, so shapes that share an
// edge share out the samples along it: none is left out, none is given twice.
#pragma once

#include "devices/raster/Sweeper.h"

#include <algorithm>
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
    std::span<const Edge> Edges() const { return edges_; }
    // The samples that may be reported, in the rows that some edge crosses.
    Bounds Reported() const { return {bounds_.left, first_, bounds_.right, last_}; }
    bool IsOverfull() const
    {
        return edges_.size() > maxEdges_;
    } // edges were dropped, so the shape is not what was asked for

    // Calls row(y, spans) as a sweeper does.
    template <class Row>
    void Sweep(Row &&row)
    {
        sweeper_.Sweep(edges_, Reported(), row);
    }

  private:
    Bounds bounds_;
    size_t maxEdges_ = 0;
    int32_t first_ = 0, last_ = 0; // rows that some edge crosses
    std::vector<Edge> edges_;
    Sweeper sweeper_;
};

} // namespace vxhost::raster
