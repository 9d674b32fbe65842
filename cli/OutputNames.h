// Where each result goes: one name, or one a document from a pattern.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// {stem}, {dir} and {ext} in the pattern stand for the input's name without folder and last extension, its folder
// ("." if it has none) and the format's extension. A pattern that names a folder gets "{stem}.{ext}".
//
// Throws UsageError when two inputs would share an output, or an output is one of the inputs.
std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::string_view extension);

} // namespace vxhost
