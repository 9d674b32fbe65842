// What became of one document: the result code, what was reported, what it used.
#pragma once

#include "host/Failure.h"
#include "host/drawing/Device.h"
#include "host/reading/DocumentEnd.h"
#include "host/reading/DocumentFault.h"
#include "host/reading/HeaderDate.h"
#include "host/reading/Unshown.h"

#include <vx/Toolbox.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// One problem that the plug-in reported, in order.
struct Report {
    int number = 0; // kVXProblemPattern and its like; 0 when the title is not one of the host's
    std::string title;
    std::string message;
};

// Exact: a font of that PostScript name. StandIn: metric-compatible. Substitute: the best match of another design.
enum class FontMatch : uint8_t { Exact, StandIn, Substitute, Missing };

struct FontUse {
    std::string asked;  // as the document writes it, without "/" and "_"
    std::string served; // PostScript name of the font that was drawn; empty when Missing
    std::string file;   // path of that font
    FontMatch match = FontMatch::Missing;
    uint64_t strings = 0;
    uint64_t characters = 0;
    uint64_t missingGlyphs = 0;
};

// Calls that reached the procedure table, by what they did.
struct Counts {
    uint64_t fills = 0;
    uint64_t strokes = 0;
    uint64_t clips = 0;
    uint64_t segments = 0; // lines and curves
    uint64_t shows = 0;
    bool gray = false; // paints in gray, CMYK, with overprint happened
    bool cmyk = false;
    bool overprint = false;
};

// A spot ink that something is painted in.
struct SpotUse {
    std::string name;
    double alternate[4] = {0, 0, 0, 0}; // the process inks that stand in for all of it
    double leastTint = 0, mostTint = 0; // 0 is all of it, 1 none

    bool operator==(const SpotUse &) const = default;
};

// The page that was drawn, as a device is told of it.
struct DrawnPage {
    Box box;
    double tooWide = 0, tooHigh = 0;
};

struct Outcome {
    int16_t result = 0; // VXResult of the plug-in
    Box box;            // the header's, as written; meaningful when the header was accepted
    bool headerAccepted = false;
    bool monochrome = false;
    int64_t bytesRead = 0;
    int64_t bytesTotal = 0;         // of the file
    int64_t bytesUnpacked = 0;      // the same where it is not packed; bytesRead is a place in these
    std::string damage;             // of what the drawing is packed in, see Unpacked
    int64_t peakHeap = 0;           // bytes that the plug-in held at once
    bool memoryLimitHit = false;    // an allocation was refused because of the cap
    Failure failure;                // of the output, from Device::EndPage
    std::string lackedFont;         // the document was given up for want of it
    uint64_t unknownCharacters = 0; // of the words that were looked for: bytes that mean none
    uint64_t undrawnTexts = 0;      // the caller gave no glyphs to draw them with
    uint64_t placedTexts = 0;       // of the output, from Device::PlacedTexts
    std::vector<Report> reports;
    std::vector<FontUse> fonts;
    Counts counts;
    std::vector<Layer> layers;  // of a drawing that was read to its end, or as far as it can be read
    std::vector<SpotUse> spots; // in the order of their first uses
    DocumentEnd end;            // of one that was read to its end, or as far as it can be read
    DocumentFault fault;        // of one that is malformed, where it is known
    Salvage salvage;
    Unshown unshown;                    // in what was read
    DateOrigin date = DateOrigin::None; // that the output states
    uint64_t objections = 0;            // errors and warnings that a check found
    DrawnPage page;
};

} // namespace vxhost
