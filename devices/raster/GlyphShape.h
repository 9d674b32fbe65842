// One glyph in its own frame: what it covers does not depend on where on the page it stands, but for the fractions of a
// pixel by which its origin is beside the pixels.
//
// Places are whole numbers of the 65536th parts of a sample, so a glyph that is moved by whole pixels is the same glyph to
// the last bit, whether it was kept or is made anew.
#pragma once

#include "devices/raster/InkBuffer.h"
#include "devices/raster/Precision.h"
#include "devices/raster/Samples.h"
#include "host/drawing/Path.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vxhost::raster
{

constexpr int kFractionBits = 16;
static_assert(kPlacement * (1 << kFractionBits) == 1);

// Where a glyph stands on the page: a pixel, and the parts of a sample that its origin is right of and below its corner.
struct GlyphPlace {
    int32_t pixelX = 0, pixelY = 0;
    int32_t fractionX = 0, fractionY = 0;
};

// Makes a place of an origin in samples, of which a pixel has 1 << shift a side. False for one so far away that the
// glyph cannot be seen.
bool FindPlace(Point origin, int shift, GlyphPlace *place);

// The rows of samples that a glyph covers. They are counted from the pixel of its origin, and so are the ends of spans,
// which are in parts of a sample: the fraction of x is still to be added.
struct GlyphSpans {
    int32_t top = 0;
    int32_t left = 0, right = 0;   // of all spans at most
    std::vector<uint32_t> rowEnds; // places in spans, one for each row
    std::vector<Span> spans;

    std::span<const Span> Row(size_t row) const
    {
        const size_t begin = row == 0 ? 0 : rowEnds[row - 1];
        return std::span(spans).subspan(begin, rowEnds[row] - begin);
    }
    // The first column whose centre is not before that end of a span, of a glyph at that fraction of x.
    static int32_t ColumnOf(int32_t end, int32_t fractionX)
    {
        constexpr int32_t kBeforeHalf = (1 << (kFractionBits - 1)) - 1;
        return (end + fractionX + kBeforeHalf) >> kFractionBits;
    }
};

// The same for one fraction of x: the pixels that have any of the samples, row by row.
struct GlyphMasks {
    int32_t left = 0, top = 0, width = 0; // pixels, from that of the origin
    std::vector<uint32_t> rowEnds;        // places in runs, one for each row
    std::vector<MaskedRun> runs;
};

class GlyphShape
{
  public:
    // False for an outline that is too large for a frame of its own.
    bool Make(const Path &outline, const Matrix &emsToSamples);
    // A box of samples around all that it covers at that place.
    Bounds BoundsAt(const GlyphPlace &place, int shift) const;
    size_t Bytes() const { return edges_.capacity() * sizeof(Edge); }

    void AddEdge(Point from, Point to); // of the outline, while that is flattened

  private:
    friend class GlyphScanner;
    struct Edge {
        double x, slope;     // of the upper end, in parts, and from a part of y to the next
        int32_t top, bottom; // parts
        int32_t up;          // 1 when the outline runs upwards, else 0
    };
    size_t FindMostCrossings() const;

    std::vector<Edge> edges_;
    Bounds box_;               // of all edges
    size_t mostCrossings_ = 0; // of any row
    bool fits_ = true;
};

// Finds the spans of glyphs. It does what a scanner does for any shape, but counts nothing first: a glyph that fits has so
// few rows and crossings that each row has room for all that there may be.
class GlyphScanner
{
  public:
    void Find(const GlyphShape &shape, int32_t fractionY, GlyphSpans *spans);

  private:
    std::vector<int32_t> crossings_; // column · 2 + up
    std::vector<uint32_t> counts_;   // of each row
};

// Finds the masks at a fraction of x, in a pixel of 1, 2 or 4 samples a side.
class MaskFinder
{
  public:
    void Find(const GlyphSpans &spans, int32_t fractionX, int samples, GlyphMasks *masks);

  private:
    template <int32_t kSamples>
    void FindRows(const GlyphSpans &spans, int32_t fractionX, GlyphMasks *masks);
    template <int32_t kSamples>
    MaskedRun *AddRuns(uint32_t words, MaskedRun *next) const;

    std::vector<uint64_t> bits_; // of the rows of samples in a row of pixels, one after the other
};

} // namespace vxhost::raster
