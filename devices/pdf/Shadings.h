// Blends as the shadings of PDF: along a line, and from circle to circle.
//
// Owns the shading resources of a page. Each is made in a space of its own (the unit square, the unit circle), and its
// colours are kept apart from its place: instances of one gradient differ in their places alone.
#pragma once

#include "devices/pdf/InkSpaces.h"
#include "host/drawing/Shading.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

// How a shading is to be painted: its resource, under the matrix, clipped to the square or the circle of that space.
struct ShadingUse {
    std::string name;
    Matrix matrix; // from the shading's space to the page
};

// A blend paints with gray, with black ink alone, or with inks.
struct PaintSpace {
    bool isBlackInk = false;
    Inks inks; // empty: gray
};

class Shadings
{
  public:
    // Nothing when PDF has no shading that looks like it; it is to be painted as shapes then. That is so for circles
    // that do not lie one inside the other, and for blends that overprint and have an ink at some steps alone: at the
    // others that ink stays as it is on the page, which no shading can say. It is also so when they have more inks than a
    // space should, and when there are more of them than memory should be filled with.
    std::optional<ShadingUse> Use(const Shading &shading);

    void AddTo(PdfFile *file, QPDFObjectHandle *resources) const;

  private:
    struct Span {
        double to = 1;
        size_t ramp = 0;
    };
    struct Blend {
        ShadingKind kind = ShadingKind::Axial;
        Shading::Circle last; // of a radial one; its first is the unit circle
        PaintSpace space;
        std::vector<Span> spans;
    };

    // The number of a kept blend that is like this one, which is added if there is none. Nothing when there is no room.
    std::optional<size_t> FindOrAdd(Blend blend);
    std::optional<size_t> FindOrAddRamp(std::string ramp);
    static std::string KeyOf(const Blend &blend);
    static std::string KeyOf(const std::vector<Span> &spans);
    static QPDFObjectHandle FunctionOf(const std::vector<Span> &spans,
                                       const std::vector<QPDFObjectHandle> &ramps);

    std::map<std::string, size_t, std::less<>> blendOfKey_, ramps_; // ramps as they are written, by number
    std::vector<Blend> blends_;                                     // by number, which is in the name
    size_t rampBytes_ = 0;
};

} // namespace vxhost::pdf
