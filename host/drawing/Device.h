// The one interface that a new output implements.
//
// The drawing state (path, matrix, colour, line attributes, save and restore) is kept once, by Drawing; a
// device receives finished things in the order in which they are painted. Calls come from one thread. A
// device reports failure from EndPage only; after its own failure it ignores what else it is given. But each procedure
// may throw std::bad_alloc; then there is no output.
#pragma once

#include "host/Failure.h"
#include "host/drawing/GlyphRun.h"
#include "host/drawing/Layer.h"
#include "host/drawing/Paint.h"
#include "host/drawing/Path.h"
#include "host/drawing/Shading.h"
#include "host/reading/HeaderDate.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

namespace vxhost
{

struct Box {
    double left = 0, bottom = 0, right = 0, top = 0;
    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    // The same corners, whichever way round they were written.
    Box Upright() const
    {
        return {std::min(left, right), std::min(bottom, top), std::max(left, right), std::max(bottom, top)};
    }
};

// A sheet is cut around its middle: it has the page, and what is beyond.
struct Sheet {
    Box trim;              // what is left when it is cut
    Box bleed;             // what the drawing is painted in, as far beyond the trim on each side
    bool hasMarks = false; // beyond that are marks that say where to cut
};

// What a device needs to know before the first paint.
struct Page {
    Box box;           // the part of page space to show, left < right and bottom < top
    std::string title; // from the document's header, UTF-8, may be empty
    std::string creator;
    std::string created = {};              // the date, as somebody wrote it in the header
    std::optional<CalendarDate> date = {}; // the same as it is read; none: it cannot be
    bool isDateOrderOpen = false;          // the date can be read in two ways
    std::optional<int64_t> fileDate =
        {}; // when its file was written to last, in seconds since 1970; none: there is no file
    bool hasLayers = false;          // some may come
    std::optional<Sheet> sheet = {}; // in the box; none: the page is cut where the box ends
    double tooWide = 0, tooHigh = 0; // by how much the drawing is larger than its room on the page, points
};

class Device
{
  public:
    Device() = default;
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;
    virtual ~Device() = default;

    virtual void BeginPage(const Page &page) = 0;

    // Save and Restore bracket changes of the clip, the only state that a device keeps. They are always
    // balanced when EndPage comes.
    virtual void Save() = 0;
    virtual void Restore() = 0;
    virtual void
    ClipPath(const Path &path) = 0; // intersects; non-zero winding; an empty path clips everything

    virtual void FillPath(const Path &path, const Paint &paint) = 0; // non-zero winding
    virtual void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) = 0;

    // Paints under the clip. Without an implementation of its own a device receives flat shapes.
    virtual void Shade(const Shading &shading) { PaintAsShapes(shading, this); }

    // Whether the device sets text in that font itself, which may have no bytes; text that it does not set reaches it as shapes. A
    // device may open the font to find out; what it writes does not depend on who asks.
    virtual bool CanShow(const TextFont &) { return false; }
    // Paints run by run, in fonts that it can show. A text that clips comes with all of its runs, whose outlines are
    // united and then intersected with the clip.
    virtual void ShowText(std::span<const GlyphRun>, const TextPaint &) {}

    // Whether the device paints the shapes of text one by one under that matrix, which has no translation; else those of a
    // text reach it as one path.
    virtual bool PaintsGlyphs(const Matrix & /*emsToPage*/) const { return false; }
    // Comes before the shapes of a text that is filled, which share the matrix and the paint. Nothing comes between.
    virtual void BeginGlyphs(const Matrix & /*emsToPage*/, const Paint &) {}
    // Fills an outline in ems. Those of one number are one outline, as long as the page lasts; 0 is that of any.
    virtual void FillGlyph(const Path & /*outline*/, uint64_t /*number*/, Point /*origin*/) {}

    // These four tell what a drawing says beyond its shapes, to outputs that can say it too. Layers nest, groups nest within a layer, and
    // whatever is open is ended before EndPage. Either may cross Save and Restore.
    virtual void BeginLayer(const Layer &) {}
    virtual void EndLayer() {}
    virtual void BeginGroup() {}
    virtual void EndGroup() {}

    // Completes the output, and returns what went wrong, if something did.
    virtual Failure EndPage() = 0;

    // Tells, after a page that has not failed, that its output needs it once more, from BeginPage on.
    virtual bool WantsPageAgain() const { return false; }

    // Tells how many texts of that page stand character by character, where lines were asked for.
    virtual uint64_t PlacedTexts() const { return 0; }
};

} // namespace vxhost
