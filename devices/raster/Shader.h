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
    bool IsOnlyPart() const { return firstSpan_ == 0 && endSpan_ == shading_->spans.size(); }
    const Path &Outline() const { return outline_; }
    bool Covers(const Bounds &samples) const; // surely, so that its outline does not matter
    // Once a part, before it is painted.
    void MixInks();
    // Neighbouring pixels of row y, which is selected in the buffer: the samples of mask. Those of one ink, as a single pixel
    // at an edge, have a way of their own, since what is ready for many takes longer to begin.
    void Paint(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const
    {
        if (right - left == 1 || isLevel_)
            PaintAlike(y, left, right, mask, buffer);
        else
            PaintRow(y, left, right, mask, buffer);
    }

  private:
    // A colour of a span: two inks in a word, in 256ths of their levels, with room for a product above each.
    struct Step {
        uint64_t even, odd;
        InkWord keep;
    };
    Ink InkOf(const Colour &colour) const { return FindInk({colour, shading_->overprint}, overprint_); }
    bool RunsOn(const ColourSpan &span, const ColourSpan &next) const;
    double PixelsAcross() const;
    Step StepOf(const Colour &colour) const;
    static InkWord Mix(const Step &from, const Step &to, uint64_t part);
    void MixSpan(const ColourSpan &span, size_t count);
    Ink InkAt(float place) const; // from 0 to the last one's
    float LastPlace() const { return static_cast<float>(inks_.size() - 1); }
    template <class Use>
    void WithPlaces(int y, int left, Use &&use) const;
    void PaintAlike(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const;
    void PaintRow(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const;

    // A radial shading is a cone seen from its tip: a parameter is made of the distance to the tip and that along the
    // way of the centres.
    struct Cone {
        double tip, perX, perLength;
    };
    struct RadialPlaces;

    const Shading *shading_ = nullptr;
    bool overprint_ = false;
    bool isLevel_ = false; // axial, and each row of pixels of one colour
    Matrix toUnit_;        // pixels to the space that the shading is in
    double samples_ = 1;   // a side of a pixel
    Matrix toCone_;        // pixels to the space of the cone, whose tip is 0, 0
    Cone cone_ = {};

    size_t firstSpan_ = 0, endSpan_ = 0; // of the part
    Path outline_;

    std::vector<Step> steps_; // of a span

    // The inks of the part, at equal distances from the parameter start_ on. A place counts in them.
    std::vector<InkWord> inks_;
    std::vector<InkWord> kept_; // with each of them; none when all replace
    double start_ = 0;
    double perUnit_ = 0;                       // inks from a parameter to one more by 1
    float tip_ = 0, perX_ = 0, perLength_ = 0; // of the cone, in places
};

} // namespace vxhost::raster
