// Decides where each result goes: to one name, or to one that a pattern makes for each document.
#pragma once

#include "library/Format.h"

#include <span>
#include <string>
#include <vector>

namespace vxhost
{

// Makes a name of a pattern: {stem}, {dir} and {ext} stand for the input's name without folder and last extension (for "a.vx.gz" and "a.vx.xz" the last two), its folder
// ("." if it has none) and the format's extension. A pattern that names a folder gets "{stem}.{ext}".
std::string FillPattern(const std::string &pattern, const std::string &input, const Format &format);

// Returns one text for all spellings of a path, which need not exist.
std::string PlaceOf(const std::string &path);

// Returns the folder that a pattern names before its first "{"; "." if it names none.
std::string FolderOf(const std::string &pattern);

// Returns whether what is written to the path comes to lie in the folder, or below. Links are followed as they are now: this is
// no defence against somebody who changes them while a document is drawn.
bool LiesIn(const std::string &folder, const std::string &path);

// Each returns whether both lead to one file: two names, or a descriptor and a name.
bool IsSameFile(const std::string &path, const std::string &other);
bool IsOpenAs(int descriptor, const std::string &path);

// Makes the names of all outputs: input by input, a name for each of the formats. Throws UsageError when two results would share
// an output, or an output is one of the inputs.
std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::span<const Format *const> formats);

// Throws UsageError when the output would overwrite a drawing.
void CheckKeepsDrawing(const std::string &pattern, const std::string &output);

} // namespace vxhost
