// Strip blends: finds the linear blends among parallelograms that follow each other, side to side.
//
// A blend is painted as strips, with a cap before and one behind; between three and more stops there are strips of
// several blends. All that make one straight band become one axial shading.
#pragma once

#include "host/drawing/Device.h"
#include "host/drawing/StepQueue.h"

#include <vector>

namespace vxhost
{

class StripBlend
{
  public:
    // Holds the shape back, or does nothing and returns false when it is no parallelogram. What can no longer become
    // part of a shading goes on to the device, which is the same one for all calls.
    bool Add(const Path &path, const Paint &paint, Device *device);
    // All that is held back goes on.
    void Flush(Device *device);
    bool IsEmpty() const { return strips_.IsEmpty() && waiting_.empty() && band_.empty(); }

  private:
    // The corners as a strip is drawn: along one edge, over on the far side, and back along the other edge.
    struct Quad {
        Point near0, far0, far1, near1;
        // The same corners begun elsewhere: turned orientation / 2 times, and mirrored if it is odd, 0 to 7. 0 and 1
        // keep the direction.
        Quad Oriented(int orientation) const;
    };
    // A ramp, or, without spans, a strip of one colour.
    struct Piece {
        Quad quad;
        Paint paint;                   // of the first strip
        std::vector<ColourSpan> spans; // from 0 to 1 across the piece
        double end = 0;                // from 0 to 1 across the band; set by MakesBand
        bool IsRamp() const { return !spans.empty(); }
    };

    static bool ReadQuad(const Path &path, Quad *quad);
    bool Continues(const Quad &quad, const Paint &paint) const;
    void EndStrips(Device *device);
    void TakePiece(Device *device);
    Piece MakePiece(size_t steps) const;
    void AddPiece(Piece piece, Device *device);
    void BeginBand(Piece ramp, Device *device);
    bool Join(const Piece &piece, bool behind);
    bool MakesBand();
    void EndBand(Device *device);
    void FillWaiting(size_t count, Device *device);

    // strips_ may hold something together with waiting_ or with band_, but never with both.
    StepQueue<Quad> strips_;     // neighbours of about one width
    Point start_;                // of the first of them
    std::vector<Piece> waiting_; // pieces of one colour, before a ramp that may come
    std::vector<Piece> band_;    // pieces joined one behind the other, a ramp among them
    Path path_;                  // keeps its storage
};

} // namespace vxhost
