// The PostScript graphics state, kept once for all devices: painting calls come in, finished shapes go out.
//
// Points are transformed when the path is built, as PostScript does. The path belongs to the graphics state that
// Save and Restore push and pop, with matrix, colour, overprint and line attributes. The device sees only what it
// needs: a save is handed on when the clip changes inside it, and not before.
#pragma once

#include "host/Outcome.h"
#include "host/drawing/Device.h"
#include "host/drawing/MemoryBudget.h"
#include "host/drawing/Path.h"
#include "host/drawing/PathStack.h"
#include "host/drawing/StructureSink.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace vxhost
{

class Drawing final : public StructureSink
{
  public:
    static constexpr int64_t kDefaultBytes = int64_t{256} << 20;

    // maxBytes bounds what paths and saved states may hold; BudgetSpent is thrown by whatever needs more.
    explicit Drawing(Device *device, int64_t maxBytes = kDefaultBytes);
    Drawing(const Drawing &) = delete;
    Drawing &operator=(const Drawing &) = delete;

    // Without a current point a line acts as a move, and a curve starts at its first control point: what is left
    // of a damaged outline still shows.
    void NewPath();
    void MoveTo(Point to);
    void LineTo(Point to);
    void CurveTo(Point control1, Point control2, Point to);
    void CurveToFromCurrent(Point control2, Point to);
    void ClosePath();

    void Clip();
    void Save();
    void Restore(); // changes nothing where there is no save to return to
    // Ends whatever is open: saved states, groups, layers.
    void EndAll();

    // A layer or group reaches the device with the first thing in it: without one it does not. A layer ends the groups that it
    // begins or ends in.
    void BeginLayer(const Layer &layer) override;
    void EndLayer() override;
    void BeginGroup() override;
    void EndGroup() override;
    void SetFillSpot(const SpotColour &spot) override { fillSpot_ = spot; }
    void SetStrokeSpot(const SpotColour &spot) override { strokeSpot_ = spot; }
    void SetFillBlend(const SpotBlend *blend) override { blendSteps_.Begin(blend); }
    void BeginText(TextKind kind) override { text_.object = {text_.object.number + 1, 0, kind}; }
    void BeginTextPath() override { ++text_.object.path; }
    void EndText() override { BeginText(TextKind::Point); }

    void Translate(double dx, double dy);
    void Concat(const Matrix &matrix);

    // Values that mean nothing change nothing, or become the nearest that does.
    void SetLineWidth(double width);
    void SetDash(double phase, std::span<const double> lengths);
    void SetLineCap(int32_t cap);
    void SetLineJoin(int32_t join);
    void SetMiterLimit(double limit);
    void SetGray(double level);
    void SetCMYKColor(double cyan, double magenta, double yellow, double black);
    void SetOverprint(bool on);

    void Fill();
    void Stroke();

    // For text: shapes that are on the page already, and leave the current path as it is.
    const Matrix &UserToPage() const { return state_.matrix; }
    void FillShape(const Path &path);
    void StrokeShape(const Path &path);
    void ClipToShape(const Path &path);
    // For text that the device sets itself. mode is that of the show procedure.
    bool CanShow(const TextFont &font) const { return device_->CanShow(font); }
    void ShowText(std::span<const GlyphRun> runs, int32_t mode);
    // The same for the shapes of text that is filled, from the device's own first one on.
    bool PaintsGlyphs(const Matrix &emsToPage) const { return device_->PaintsGlyphs(emsToPage); }
    void BeginGlyphs(const Matrix &emsToPage) { device_->BeginGlyphs(emsToPage, CountFill()); }
    void FillGlyph(const Path &outline, uint64_t number, Point origin)
    {
        device_->FillGlyph(outline, number, origin);
    }
    void CountShow() { ++counts_.shows; }

    MemoryBudget &Budget() { return budget_; }
    const Counts &GetCounts() const { return counts_; }
    const std::vector<SpotUse> &SpotsUsed() const { return spotsUsed_; }

  private:
    // Closed: the current point is start, and the next segment starts a subpath there.
    enum class Pen : uint8_t { None, Open, Closed };

    struct State {
        Matrix matrix;
        std::array<double, 4> ink = {0, 0, 0, 0}; // as that of a colour
        double lineWidth = 1;
        double miterLimit = 10;
        double dashPhase = 0;
        size_t dashBegin = 0; // in dashes_
        size_t dashEnd = 0;
        Point current; // both on the page
        Point start;
        LineCap cap = LineCap::Butt;
        LineJoin join = LineJoin::Miter;
        Pen pen = Pen::None;
        ColourSpace space = ColourSpace::Gray;
        bool overprint = false;
        bool isSavedOnDevice = false;
    };

    void StartSubpath(Point onPage);
    void OpenSubpath(Point ifNone);
    void CutDashes(size_t length);
    const Paint &CountFill();
    const Paint &CountStroke();
    void CountPaint();
    void AddSpot(const SpotColour &spot);
    void CountSpots();
    void BeginWaiting();
    void EndInnermost();
    void EndGroups();
    void FindStyle(StrokeStyle *style) const;
    void SaveOnDevice();

    Device *device_;
    MemoryBudget budget_;
    PathStack path_;
    State state_;
    std::vector<State> saved_;
    // The lengths of each level stand behind those of the levels below, and before what is no longer used.
    std::vector<double> dashes_;
    StrokeStyle style_; // what the last stroke was given; both keep their storage
    TextPaint text_;
    Counts counts_;

    struct Opened {
        const Layer *layer = nullptr; // null: a group
        bool isSent = false;
    };
    std::vector<Opened> opened_;
    size_t waiting_ = 0;                             // of those, how many the device has not been told of
    uint64_t groupsTooDeep_ = 0, layersTooDeep_ = 0; // innermost ones that are not told
    uint64_t groupsEndedEarly_ = 0;                  // by a layer: their own ends are still to come
    SpotColour fillSpot_, strokeSpot_;
    SpotBlendSteps blendSteps_;
    std::vector<SpotUse> spotsUsed_;
    std::map<const SpotInk *, size_t> placeOfSpot_; // among them
    Paint paint_;                                   // what the last shape was given
};

} // namespace vxhost
