// The device that paints nothing and finds the topmost object at a point of the page, as somebody sees it there.
#pragma once

#include "devices/raster/PointProbe.h"
#include "host/drawing/Device.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

class FontFile;

enum class ObjectKind : uint8_t { Fill, Stroke, Text, Blend };

struct FoundObject {
    ObjectKind kind = ObjectKind::Fill;
    Paint paint; // of a blend, what it has at the point
    Box box;     // around what its clip leaves of it
    std::optional<Layer> layer;
    double lineWidth = 0; // of a stroke, points; 0: the thinnest line that can be seen
    // These are the characters of a text that look the same, their font by the names asked for and served, and their size in points.
    std::string text;
    std::string font, served;
    double size = 0;
};

class ObjectFinder final : public Device
{
  public:
    // Lines are found up to half of within, points, beside their middle, however thin they are.
    ObjectFinder(Point at, double within);
    ~ObjectFinder() override;

    // Returns what is there; none: paper. Its inks are valid as long as this object.
    const std::optional<FoundObject> &Found() const { return found_; }

    void BeginPage(const Page &page) override;
    void Save() override;
    void Restore() override;
    void ClipPath(const Path &path) override;
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    bool CanShow(const TextFont &) override { return true; }
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    void BeginLayer(const Layer &layer) override { layers_.push_back(&layer); }
    void EndLayer() override { layers_.pop_back(); }
    Failure EndPage() override;

  private:
    bool IsNear(const Box &box, double by) const;
    Path OutlineOf(const GlyphRun &run, const PlacedGlyph &glyph);
    bool IsHit(const GlyphRun &run, const TextPaint &paint);
    void Find(ObjectKind kind, const Box &extent, const Paint &paint);

    const Point at_;
    const double within_;
    std::unique_ptr<PointProbe> probe_;
    std::vector<Box> clips_; // around each clip in force, the innermost last
    std::vector<const Layer *> layers_;
    std::map<const TextFont *, std::unique_ptr<FontFile>> fonts_;
    std::optional<FoundObject> found_;
    std::array<SpotInk, std::tuple_size_v<decltype(Colour::spots)>> inks_; // of what was found
};

} // namespace vxhost
