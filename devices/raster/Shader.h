// The inks of a shading, pixel by pixel.
//
// A shading is painted in parts. Within one the colours run on, and a pixel has the ink of its centre; where two parts
// meet the colours jump, and the samples of a pixel belong to one or to the other.
#pragma once

#include "devices/raster/InkBuffer.h"
#include "devices/raster/InkChannels.h"
#include "devices/raster/Samples.h"
#include "host/drawing/Shading.h"

#include <vector>

namespace vxhost::raster
{

// The inks of a part, which are found for its pixels wherever they are.
class ShadedPart
{
  public:
    // Paints the samples of mask in neighbouring pixels of row y, which is selected in the buffer. Pixels of one ink,
    // such as a single one at an edge, go a shorter way: the loops for many take longer to begin.
    void Paint(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const
    {
        if (right - left == 1 || isLevel_)
            PaintAlike(y, left, right, mask, buffer);
        else
            PaintRow(y, left, right, mask, buffer);
    }

  private:
    friend class Shader;

    Ink InkAt(float place) const; // from 0 to the last one's
    float LastPlace() const { return static_cast<float>(inks_.size() - 1); }
    template <class Use>
    void WithPlaces(int y, int left, Use &&use) const;
    void PaintAlike(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const;
    void PaintRow(int y, int left, int right, uint64_t mask, InkBuffer *buffer) const;

    struct RadialPlaces;

    ShadingKind kind_ = ShadingKind::Axial;
    bool isLevel_ = false; // an axial shading in which each row of pixels has one colour
    Matrix toUnit_;        // pixels to the space that the shading is in
    Matrix toCone_;        // pixels to the space of the cone, whose tip is 0, 0

    // The inks of the part, at equal distances from the parameter start_ on. A place is a number of them.
    std::vector<InkWord> inks_;
    std::vector<InkWord> kept_; // the inks that each of them keeps; empty when all replace
    double start_ = 0;
    double perUnit_ = 0;                       // inks for a parameter from 0 to 1
    float tip_ = 0, perX_ = 0, perLength_ = 0; // of the cone, in places
};

class Shader
{
  public:
    // False for what cannot be turned from pixels into parameters: an area of nothing, circles not inside each other.
    // The shading and the channels must last until the last part is painted.
    bool Begin(const Shading &shading, const Matrix &toSamples, int samples, const InkChannels &channels);

    // Goes to the first part, then to the next. False behind the last one.
    bool NextPart();
    bool IsOnlyPart() const { return firstSpan_ == 0 && endSpan_ == shading_->spans.size(); }
    const Path &Outline() const { return outline_; }
    bool Covers(const Bounds &samples) const; // true only if the part's outline surely lies outside of them
    // Is called once for each part, before it is painted.
    void MixInks();
    // As it is until the next one.
    const ShadedPart &Part() const { return part_; }

  private:
    // A colour of a span: two inks in a word, in 256ths of their levels, with room for a product above each.
    struct Step {
        uint64_t even, odd;
        InkWord keep;
    };
    Ink InkOf(const Colour &colour) const { return channels_->Find({colour, shading_->overprint}); }
    bool RunsOn(const ColourSpan &span, const ColourSpan &next) const;
    double PixelsAcross() const;
    Step StepOf(const Colour &colour) const;
    static InkWord Mix(const Step &from, const Step &to, uint64_t part);
    void MixSpan(const ColourSpan &span, size_t count);

    // A radial shading is a cone seen from its tip: a parameter is made of the distance to the tip and that along the
    // way of the centres.
    struct Cone {
        double tip, perX, perLength;
    };

    const Shading *shading_ = nullptr;
    const InkChannels *channels_ = nullptr;
    double samples_ = 1; // a side of a pixel
    Cone cone_ = {};

    size_t firstSpan_ = 0, endSpan_ = 0; // of the part
    Path outline_;

    std::vector<Step> steps_; // of a span
    ShadedPart part_;
};

} // namespace vxhost::raster
