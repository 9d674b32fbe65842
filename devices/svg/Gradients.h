// Shadings as gradients.
//
// A document paints one ramp in many places, so ramps and places are elements of their own: a place refers to its ramp.
// Owns the account of the ramps that stand in the file already; it is bounded, and a ramp that fell out of it is
// written again.
#pragma once

#include "devices/svg/PaintAttributes.h"
#include "devices/svg/XmlWriter.h"
#include "host/drawing/Shading.h"

#include <cstdint>
#include <string>
#include <unordered_map>

namespace vxhost::svg
{

class Gradients
{
  public:
    Gradients(const Matrix &toPicture, PaintAttributes *paints, XmlWriter *xml)
        : toPicture_(toPicture), paints_(paints), xml_(xml)
    {
    }

    // False, with nothing written, for what gradients cannot show. They show bands, and circles inside each other.
    bool Paint(const Shading &shading);

  private:
    struct Ramp {
        uint64_t id = 0;
        bool multiplies = false;
    };

    bool PaintAxial(const Shading &shading, const Matrix &matrix);
    bool PaintRadial(const Shading &shading, const Matrix &matrix);
    const Ramp &FindRamp(const Shading &shading, double innerRadius);
    Ramp WriteRamp(const Shading &shading, double innerRadius);
    void BeginGradient(const char *element, const Ramp &ramp);
    void EndShape(const Shading &shading, const Ramp &ramp);

    Matrix toPicture_;
    PaintAttributes *paints_;
    XmlWriter *xml_;
    std::unordered_map<std::string, Ramp> ramps_; // by RampKey
    size_t rampBytes_ = 0;
    uint64_t lastRamp_ = 0, lastGradient_ = 0;
};

} // namespace vxhost::svg
