// Paints as attributes: the colour of the screen, and beside it the numbers of the document.
//
// A picture for screens has no inks to leave as they are. Where an overprint would let something show through, the
// element multiplies with what is under it, which looks much like one ink upon another.
#pragma once

#include "devices/colour/ScreenColours.h"
#include "devices/svg/XmlWriter.h"
#include "host/drawing/Paint.h"

#include <memory>
#include <string>

namespace vxhost::svg
{

// What an element is painted as: the names of its attributes.
enum class PaintUse : uint8_t { Fill, Stroke };

class PaintAttributes
{
  public:
    PaintAttributes(std::unique_ptr<ScreenColours> colours, bool simulateOverprint)
        : colours_(std::move(colours)), simulateOverprint_(simulateOverprint)
    {
    }

    // " fill="#rrggbb" data-cmyk="…" data-overprint="true"", or " stroke="…" data-stroke-cmyk="…" …".
    void Write(const Paint &paint, PaintUse use, XmlWriter *xml);
    // " stop-color="#rrggbb" data-cmyk="…"".
    void WriteStop(const Colour &colour, XmlWriter *xml);
    // " style="mix-blend-mode:multiply"".
    static void WriteMultiply(XmlWriter *xml) { xml->Markup(" style=\"mix-blend-mode:multiply\""); }

    bool Multiplies(const Paint &paint) const;
    Rgb ScreenColour(const Colour &colour) const { return colours_->Convert(InksOf(colour)); }

  private:
    std::unique_ptr<ScreenColours> colours_;
    bool simulateOverprint_;
};

// "#rrggbb"
void WriteColour(Rgb rgb, XmlWriter *xml);

} // namespace vxhost::svg
