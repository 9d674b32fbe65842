#include "devices/preflight/PreflightLimits.h"

#include <algorithm>

namespace vxhost
{

namespace
{

using Limits = PreflightLimits;

constexpr double kMostPoints = 1000, kFull = 100;

constexpr LimitRow kLimits[] = {
    {"total-ink", &Limits::totalInk, 1, 10000},
    {"hairline", &Limits::hairline, 0, kMostPoints},
    {"rich-black-size", &Limits::richBlackSize, 0, kMostPoints},
    {"rich-black-black", &Limits::richBlackBlack, 0, kFull},
    {"rich-black-others", &Limits::richBlackOthers, 0, 10000},
    {"gradient-step", &Limits::gradientStep, 0, kFull},
    {"gradient-dpi", &Limits::gradientDpi, 1, 10000},
    {"outside-page", &Limits::outsidePage, 0, 100000},
};

constexpr FindingRow kFindings[] = {
    {"malformed", Severity::Error, "malformed, and left out: {detail}"},
    {"cut-short", Severity::Error, "the file is cut short: the drawing may go on where it ends"},
    {"packing-damaged", Severity::Error, "{detail}"},
    {"end-not-drawn", Severity::Error, "bytes behind a line %%EOF within a section, which are not painted"},
    {"picture-not-painted", Severity::Error, "placed pictures that are not painted"},
    {"postscript-not-painted", Severity::Error, "fragments of PostScript that are not painted"},
    {"binary-not-painted", Severity::Error, "sections of binary data that are not painted"},
    {"pattern-not-painted", Severity::Error, "patterns, painted in 50 % gray"},
    {"between-layers", Severity::Error, "things between two layers, which are not painted"},
    {"unknown-operator", Severity::Warning, "unknown operators, passed over"},
    {"font-missing", Severity::Error, "fonts that nothing serves, painted as boxes: {names}"},
    {"font-substituted", Severity::Warning, "fonts in whose place others are painted: {names}"},
    {"font-lacks-characters", Severity::Warning,
     "characters that their fonts lack, painted as a sign for that: {names}"},
    {"font-not-embeddable", Severity::Warning, "fonts that do not allow to be embedded in a file: {names}"},
    {"total-ink", Severity::Warning, "up to {value} % of ink, and more than {limit} % on {detail}",
     &Limits::totalInk},
    {"hairline", Severity::Warning, "lines thinner than {limit} pt, the thinnest of {value} pt",
     &Limits::hairline, true},
    {"zero-width-line", Severity::Warning,
     "lines of width 0, which are as thin as the printer can make them"},
    {"white-overprint", Severity::Warning, "white that overprints, and so vanishes"},
    {"black-text-knockout", Severity::Warning, "black text that knocks out other inks around it"},
    {"rich-black-text", Severity::Warning,
     "text below {limit} pt in black with other inks, the smallest of {value} pt", &Limits::richBlackSize,
     true},
    {"gradient-steps", Severity::Warning, "blends in steps that show, of up to {value} % of an ink",
     &Limits::gradientStep},
    {"outside-page", Severity::Warning, "paint that goes beyond the page, by up to {value} pt",
     &Limits::outsidePage},
    {"ink-not-declared", Severity::Warning, "inks that print and are not declared: {names}"},
    {"spot-ink-mixtures", Severity::Warning,
     "spot inks that are mixed in several ways and have one plate: {names}"},
    {"spot-ink-without-plate", Severity::Warning, "spot inks that can have no plate: {names}"},
    {"ink-not-used", Severity::Note, "inks that are declared and do not print: {names}"},
    {"layer-not-printing", Severity::Note, "layers that do not print: {names}"},
    {"spot-inks", Severity::Note, "spot inks that print: {names}"},
    {"inks", Severity::Note, "inks that print: {names}"},
};
static_assert(std::size(kFindings) == kFindingCount);

} // namespace

PreflightLimits::PreflightLimits()
{
    std::ranges::transform(kFindings, severities.begin(), &FindingRow::severity);
}

std::span<const LimitRow> LimitRows()
{
    return kLimits;
}

std::span<const FindingRow> FindingRows()
{
    return kFindings;
}

std::string_view NameOf(Severity severity)
{
    constexpr std::string_view kNames[] = {"ignore", "note", "warning", "error"};
    return kNames[static_cast<size_t>(severity)];
}

} // namespace vxhost
