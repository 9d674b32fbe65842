// Holds what a check of a drawing goes by: from where on something is too much or too little, and how bad each finding is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vxhost
{

enum class Severity : uint8_t { Ignore, Note, Warning, Error };

// Each is a row of FindingRows, in its order.
enum class FindingKind : uint8_t {
    Malformed,
    CutShort,
    PackingDamaged,
    EndNotDrawn,
    PictureNotPainted,
    PostscriptNotPainted,
    BinaryNotPainted,
    PatternNotPainted,
    BetweenLayers,
    UnknownOperator,
    FontMissing,
    FontSubstituted,
    FontLacksCharacters,
    FontNotEmbeddable,
    TotalInk,
    Hairline,
    ZeroWidthLine,
    WhiteOverprint,
    BlackTextKnockout,
    RichBlackText,
    GradientSteps,
    OutsidePage,
    InkNotDeclared,
    SpotInkMixtures,
    SpotInkWithoutPlate,
    InkNotUsed,
    LayerNotPrinting,
    SpotInks,
    Inks,
    Count
};
constexpr size_t kFindingCount = static_cast<size_t>(FindingKind::Count);

struct PreflightLimits {
    double totalInk = 300;       // percent
    double hairline = 0.25;      // points
    double richBlackSize = 12;   // points
    double richBlackBlack = 90;  // percent of black ink
    double richBlackOthers = 10; // percent of all others together
    double gradientStep = 2;     // percent of an ink
    double gradientDpi = 300;
    double outsidePage = 1; // points

    std::array<Severity, kFindingCount> severities;

    PreflightLimits(); // each finding is as bad as its row says
    Severity Of(FindingKind kind) const { return severities[static_cast<size_t>(kind)]; }
};

struct LimitRow {
    const char *name;
    double PreflightLimits::*value;
    double least, most; // that it may be
};
std::span<const LimitRow> LimitRows();

struct FindingRow {
    const char *name;
    Severity severity;
    // Says what was found, however many: {value} is the worst, {limit} what it is held against.
    const char *text;
    double PreflightLimits::*limit = nullptr; // null: there is none
    bool isLeastWorst = false;                // of values
};
std::span<const FindingRow> FindingRows();
inline const FindingRow &RowOf(FindingKind kind)
{
    return FindingRows()[static_cast<size_t>(kind)];
}

std::string_view NameOf(Severity severity);

} // namespace vxhost
