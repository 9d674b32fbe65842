// Paints nothing, and looks for what a press would get wrong. The device sees what the outputs see: shapes on the page, texts and
// smooth blends.
#pragma once

#include "devices/preflight/Extents.h"
#include "devices/preflight/Findings.h"
#include "devices/preflight/FlatBlends.h"
#include "devices/preflight/InkMap.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace vxhost
{

class PreflightDevice final : public Device
{
  public:
    // The map is that of the same page. Both must outlive the device.
    PreflightDevice(const InkMap &inks, Findings *findings)
        : inks_(inks), findings_(*findings), limits_(findings->Limits()), blends_(limits_)
    {
    }

    void BeginPage(const Page &page) override;
    void Save() override { clips_.push_back(clips_.back()); }
    void Restore() override { clips_.pop_back(); }
    void ClipPath(const Path &path) override;
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    bool CanShow(const TextFont &) override { return true; } // the outlines of its glyphs would say less
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    void BeginLayer(const Layer &layer) override { layers_.push_back(&layer); }
    void EndLayer() override { layers_.pop_back(); }
    Failure EndPage() override;

    // Returns where a font is first used, by the name asked for.
    const std::map<std::string, FindingPlace> &PlacesOfFonts() const { return fonts_; }

  private:
    // Tells of paint that is lost: beyond the page, or without ink where it overprints. Returns what is left of the box; kNoBox:
    // nothing shows.
    Box WatchPaint(const Box &extent, bool hasInk, bool overprint);
    void WatchLine(double width, const Box &visible);
    void WatchFont(const TextFont &font, const Box &visible);
    void WatchLetters(const GlyphRun &run, const Box &visible, const Paint &paint);
    Box VisibleOf(const Box &extent) const;
    void Add(FindingKind kind, const Box &box, std::optional<double> value = std::nullopt);
    void AddBlend(const std::optional<CoarseBlend> &blend);
    FindingPlace PlaceOf(const Box &box) const;

    const InkMap &inks_;
    Findings &findings_;
    const PreflightLimits &limits_;
    FlatBlends blends_;
    Box page_;
    std::vector<Box> clips_; // around each clip in force, the innermost last
    std::vector<const Layer *> layers_;
    std::map<std::string, FindingPlace> fonts_;
    uint64_t text_ = 0;                             // which text is looked at, from 1; 0: a shape
    std::array<uint64_t, kFindingCount> counted_{}; // by finding: the text that was counted last
};

} // namespace vxhost
