// Says which press the page is meant for, as the standards want it said: a condition, and its profile.
#pragma once

#include "devices/pdf/Levels.h"
#include "devices/pdf/PdfFile.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vxhost::pdf
{

struct PressProfile {
    std::string bytes;     // ICC
    std::string condition; // "FOGRA39", or "Custom" for one that no registry knows
    std::string description;
    bool isRegistered = false;
    int version = 2; // of ICC
};

// The one that the options name. Nothing when it is no profile of a CMYK press that the standards take; error is then one
// line for a person.
std::optional<PressProfile> ReadPressProfile(const PdfOptions &options, std::string *error);

// Adds an intent of each kind, all with the one profile.
void AddOutputIntents(const PressProfile &profile, std::span<const std::string_view> kinds, PdfFile *file,
                      Dictionary *catalog);

} // namespace vxhost::pdf
