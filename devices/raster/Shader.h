// The inks of a shading, pixel by pixel.
//
// A shading is painted in parts. Within one the colours run on, and a pixel has the ink of its centre; where two parts
// meet the colours jump, and the samples of a pixel belong to one or to the other.
#pragma once

#include "devices/raster/InkBuffer.h"
#include "devices/raster/Samples.h"
#include "host/drawing/Shading.h"

#include <vector>

namespace vxhost::raster
{

class Shader
{
  public:
    // False for what cannot be turned from pixels into parameters: an area of nothing, circles not inside each other.
    // The shading must last until the last part is painted.
    bool Begin(const Shading &shading, const Matrix &toSamples, int samples, bool simulateOverprint);

    // Goes to the first part, the next, and returns false behind the last.
    bool NextPart();
    const Path &Outline() const { return outline_; }
    // Once a part, before it is painted.
    void MixInks();
    // Neighbouring pixels of row y, which is selected in the buffer: the samples of mask.
    void Paint(int y, int left, int right, uint64_t mask, InkBuffer *buffer);

  private:
    Ink InkOf(const Colour &colour) const { return FindInk({colour, shading_->overprint}, overprint_); }
    bool RunsOn(const ColourSpan &span, const ColourSpan &next) const;
    double PixelsAcross() const;
    double Parameter(Point unit) const;
    size_t IndexOf(double place) const;
    template <class IndexAt>
    void PaintEach(int left, int right, uint64_t mask, InkBuffer *buffer, IndexAt &&indexAt);

    const Shading *shading_ = nullptr;
    bool overprint_ = false;
    Matrix toUnit_; // pixels to the space that the shading is in

    size_t firstSpan_ = 0, endSpan_ = 0; // of the part
    Path outline_;

    // The inks of the part, at equal distances from the parameter start_ on.
    std::vector<Ink> inks_;
    bool replaces_ = false; // all of them
    double start_ = 0;
    double perUnit_ = 0; // inks from a parameter to one more by 1
    std::vector<InkWord> row_;
};

} // namespace vxhost::raster
