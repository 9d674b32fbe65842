// Holds what a program says of a document and its output, after it was checked.
#pragma once

#include "library/interface/Handles.h"

namespace vxhost
{

// Both throw for what is no such thing. A null value makes the option what it was at first.
void SetOption(const char *name, const char *value, OptionTexts *options);
const Format &CheckFormat(const char *name);

// What the options say, with what the library says beside them. Throws OptionError.
Settings ReadSettings(const OptionTexts &options, const Choices &choices);

} // namespace vxhost
