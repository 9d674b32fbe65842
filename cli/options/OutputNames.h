// Where each result goes: one name, or one a document from a pattern.
#pragma once

#include "library/Format.h"

#include <span>
#include <string>
#include <vector>

namespace vxhost
{

// {stem}, {dir} and {ext} in the pattern stand for the input's name without folder and last extension, its folder
// ("." if it has none) and the format's extension. A pattern that names a folder gets "{stem}.{ext}".
std::string FillPattern(const std::string &pattern, const std::string &input, const Format &format);

// One text for all spellings of a path, which need not exist.
std::string PlaceOf(const std::string &path);

// The folder that a pattern names before its first "{"; "." if it names none.
std::string FolderOf(const std::string &pattern);

// Whether what is written to the path comes to lie in the folder, or below. Links are followed as they are now: who may
// put others in their place while a document is drawn is not held off.
bool LiesIn(const std::string &folder, const std::string &path);

// Whether two names lead to one file that is there, or a name to what is open.
bool IsSameFile(const std::string &path, const std::string &other);
bool IsOpenAs(int descriptor, const std::string &path);

// Input by input, a name for each of the formats.
//
// Throws UsageError when two results would share an output, or an output is one of the inputs.
std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::span<const Format *const> formats);

} // namespace vxhost
