// Takes a Type 1 font file apart into what PDF embeds: the clear text and the encrypted part in binary.
#pragma once

#include "devices/pdf/FontProgram.h"

#include <span>
#include <string_view>

namespace vxhost::pdf
{

// Whether the file starts as a Type 1 font.
bool IsType1(std::string_view file);

// Binary (PFB) and plain (PFA) files. The zeros at the end are left out, as PDF allows. Empty for a damaged file.
EmbeddedProgram FindType1Parts(std::string_view file);

} // namespace vxhost::pdf
