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

// Throws UsageError unless the pattern after -o is one of PNG files. ink: that of a plate.
void CheckIsPng(const std::string &pattern, const std::string &input,
                const std::optional<std::string> &ink = {});

} // namespace vxhost
