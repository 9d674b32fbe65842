// Where each result goes: one name, or one a document from a pattern.
#pragma once

#include "cli/Format.h"

#include <span>
#include <string>
#include <vector>

namespace vxhost
{

// {stem}, {dir} and {ext} in the pattern stand for the input's name without folder and last extension, its folder
// ("." if it has none) and the format's extension. A pattern that names a folder gets "{stem}.{ext}".
std::string FillPattern(const std::string &pattern, const std::string &input, Format format);

// One text for all spellings of a path, which need not exist.
std::string PlaceOf(const std::string &path);

// Input by input, a name for each of the formats.
//
// Throws UsageError when two results would share an output, or an output is one of the inputs.
std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::span<const Format> formats);

} // namespace vxhost
