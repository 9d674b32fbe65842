// What the comments at the start of a document say beyond what the plug-in reports: its version, title, maker,
// named colours and fonts; and, where the plug-in refuses the document, why.
//
// Reads no further than the comments, trusts nothing, and keeps a bounded amount of what it finds.
#pragma once

#include "host/fonts/TextEncoding.h"
#include "host/reading/HeaderDate.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// A drawing begins with one of these.
constexpr std::string_view kDocumentPrefix = "%!PS-Tavro-";
constexpr std::string_view kEpsSignature = "\xC5\xD0\xD3\xC6";

struct HeaderFacts {
    bool hasPrefix = false;  // begins with "%!PS-Tavro-"
    bool recognised = false; // a comment says that it is a VX document
    bool hasBox = false;     // a bounding box of four numbers stands in it
    int version = 2;         // 2 to 5; 2 where nothing says more
    bool epsWrapper = false; // the drawing is a section of a binary EPS file
    std::string lineEnds;    // "CR", "LF", "CR LF", "mixed"; empty: none
    std::string wrapping;    // what is around the drawing, as Unpack and FindDrawing name it; empty: nothing
    std::string refusal;     // why nothing of it can be unpacked, as Unpack says it; empty: something can
    std::string firstLine;   // of the drawing; a long one is cut
    // These are as they are written, until DecodeTexts makes them UTF-8.
    std::string title;
    std::string creator;
    std::string creationDate;
    std::optional<CalendarDate> created; // the same, once it is read; none: it cannot be, or
    bool isDateOrderOpen = false;        // it can be read in two ways
    std::vector<std::string> processColours;
    std::vector<std::string> customColours;
    std::vector<std::string> fonts; // UTF-8; bytes that are not become U+FFFD
};

// The drawing inside the file: all of it, or the section that a binary EPS header names.
std::string_view DrawingSection(std::string_view file, bool *isWrapped);

HeaderFacts ScanHeader(std::span<const std::byte> file);

// Text of a document that no font shows. Whole UTF-8 with a character beyond ASCII is that, whatever the encoding of the
// document: programs of today write it so. A byte that means nothing becomes U+FFFD.
std::string DecodeText(std::string_view bytes, TextEncoding encoding);
void DecodeTexts(TextEncoding encoding, HeaderFacts *facts);

// One line for a person: why this is no VX document, and what one looks like. It quotes the file's first line only if
// mayQuote.
std::string WhyRefused(const HeaderFacts &facts, size_t fileSize, bool mayQuote = true);

} // namespace vxhost
