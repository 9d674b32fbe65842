// Blends as the shadings of PDF: along a line, and from circle to circle.
//
// Owns the shading resources of a page. Each is made in a space of its own (the unit square, the unit circle), so that
// the blends of a document share the few ramps that it defines.
#pragma once

#include "devices/pdf/PdfFile.h"
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

class Shadings
{
  public:
    // Nothing when PDF has no shading that looks like it; it is to be painted as shapes then. That is so for circles
    // that do not lie one inside the other, and for blends that overprint and have an ink at some steps alone: at the
    // others that ink stays as it is on the page, which no shading can say.
    std::optional<ShadingUse> Use(const Shading &shading);

    void AddTo(PdfFile *file, QPDFObjectHandle *resources) const;

  private:
    // Everything that makes two shadings the same object.
    struct Ramp {
        ShadingKind kind = ShadingKind::Axial;
        Shading::Circle last;    // of a radial one, whose first is the unit circle
        std::vector<int> inks;   // of the four that it paints with; empty: gray
        bool isBlackInk = false; // gray as black ink
        std::vector<ColourSpan> spans;
    };

    static std::string KeyOf(const Ramp &ramp);
    static QPDFObjectHandle ColourSpaceOf(PdfFile *file, const Ramp &ramp);
    static QPDFObjectHandle FunctionOf(PdfFile *file, const Ramp &ramp);

    std::map<std::string, std::string, std::less<>> nameOfKey_;
    std::vector<Ramp> ramps_; // by number, which is in the name
    size_t bytes_ = 0;        // that the ramps take
};

} // namespace vxhost::pdf
