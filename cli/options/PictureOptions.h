// Options of commands that make pictures of one kind, without a choice of formats.
#pragma once

#include "library/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace vxhost
{

// Adds those of the table that say what is shown, how large and how fine.
void AddPictureOptions(OptionTexts *texts, CLI::App *command);

// Returns the format that the pattern after -o names, one of those. Throws UsageError when it names none of them. ink: that of a
// plate.
const Format &CheckFormatOfName(const std::string &pattern, const std::string &input, unsigned formats,
                                const std::optional<std::string> &ink = {});

} // namespace vxhost
