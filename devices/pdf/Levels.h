// The levels of the standards that a PDF can keep to, and what they ask of a file, as far as its writer has a choice.
#pragma once

#include "devices/pdf/PdfDevice.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

// Says what a file of the chosen levels has to keep to: the narrower of two.
struct Demands {
    std::string name; // of the levels, for a person; empty: there are none
    int version = 4;  // of PDF, behind "1."
    bool takesLayers = true;
    int lastProfile = 4;                                  // the latest version of ICC profiles
    std::string_view profileTaker = "PDF";                // whoever takes no later one
    std::vector<std::string_view> intents = {"GTS_PDFX"}; // kinds of output intent
    bool isForPress = false;
    bool isForArchive = false;
    std::string_view infoVersion; // what the information says of the level, if it has to
    std::string_view xmpVersion;  // the same for the metadata
    std::string_view conformance; // to the archive's standard: "B", "U"

    bool IsAny() const { return isForPress || isForArchive; }
};

Demands DemandsOf(const PdfOptions &options);

// The counts that the archive's standard limits.
constexpr size_t kMostNesting = 28;                 // of q and Q
constexpr size_t kMostNameBytes = 127;              // of a name
constexpr double kLeastSide = 3, kMostSide = 14400; // of a page

} // namespace vxhost::pdf
