// For which press the page is meant, as the standards for print want it said: a condition, and its profile.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/pdf/PdfFile.h"

#include <optional>
#include <string>

namespace vxhost::pdf
{

struct PressProfile {
    std::string bytes;     // ICC
    std::string condition; // "FOGRA39", or "Custom" for one that no registry knows
    std::string description;
    bool isRegistered = false;
};

// The one that the options name. Nothing when it is no profile of a CMYK press that the standards take; error is then one
// line for a person.
std::optional<PressProfile> ReadPressProfile(const PdfOptions &options, std::string *error);

void AddOutputIntent(const PressProfile &profile, PdfFile *file, Dictionary *catalog);

} // namespace vxhost::pdf
