// What the page's program has set so far, so that only what changes is written.
//
// Knows colours, overprint, line attributes and the font; mirrors q and Q, which bring older values back.
#pragma once

#include "devices/pdf/ContentStream.h"
#include "devices/pdf/InkSpaces.h"
#include "devices/vector/Frame.h"
#include "host/drawing/Paint.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

// Names of resources that the state refers to.
inline constexpr std::string_view kOverprintOn = "OverprintOn";   // ExtGState
inline constexpr std::string_view kOverprintOff = "OverprintOff"; // ExtGState
inline constexpr std::string_view kBlackInk = "BlackInk"; // ColorSpace: black alone, whatever lies below

class GraphicsState
{
  public:
    // The inks must outlive this object.
    GraphicsState(ContentStream *content, InkSpaces *inks) : content_(content), inks_(inks) {}

    void Save();    // q
    void Restore(); // Q
    // The same around what changes nothing that is known here.
    void BeginBlock();
    void EndBlock();
    size_t MostNesting() const { return mostNesting_; }

    void SetFill(const Paint &paint);
    void SetStroke(const Paint &paint);
    void SetOverprint(bool on); // setting a colour sets it as well
    void SetLine(const StrokeStyle &style, const Frame &frame);
    bool IsFont(std::string_view name, double size) const
    {
        return state_.font == name && state_.fontSize == size;
    }
    void SetFont(std::string_view name, double size);
    void SetTextMode(int mode);

    bool UsesOverprint() const { return usesOverprint_; }
    bool UsesBlackInk() const { return usesBlackInk_; }

  private:
    enum class Space : uint8_t { Gray, Cmyk, BlackInk, Spot };
    struct Ink {
        Space space = Space::Gray;
        double parts[4] = {0, 0, 0, 0};
        InkShares spots = {};
        friend bool operator==(const Ink &, const Ink &) = default;
    };
    struct Line {
        double width = 1, miterLimit = 10, dashPhase = 0;
        LineCap cap = LineCap::Butt;
        LineJoin join = LineJoin::Miter;
        std::vector<double> dashes;
    };
    struct State {
        Ink fill, stroke;
        bool overprint = false;
        Line line;
        std::string font;
        double fontSize = 0;
        int textMode = 0;
    };

    static Ink InkOf(const Paint &paint);
    void WriteAmounts(std::string_view space, std::span<const double> amounts, bool isStroke);
    void WriteInk(const Ink &ink, bool isStroke);
    void SetDash(const StrokeStyle &style, double scale);

    ContentStream *content_;
    State state_; // begins as a page does
    std::vector<State> saved_;
    std::vector<double> dashes_; // scratch
    bool usesOverprint_ = false, usesBlackInk_ = false;
    size_t mostNesting_ = 0; // of saves
    InkSpaces *inks_;
};

} // namespace vxhost::pdf
