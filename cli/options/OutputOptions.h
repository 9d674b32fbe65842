// Holds what is said of a document's outputs, in the options of a command or in a line of a manifest.
#pragma once

#include "library/Format.h"
#include "library/Options.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI
{
class App;
}

namespace vxhost
{

using FormatList = std::vector<const Format *>;

struct OutputOptions {
    std::string format; // empty: not said
    OptionTexts options;

    void AddTo(CLI::App *command);
    bool operator==(const OutputOptions &) const = default;

    // By the name of the option, as "pdf-x". False when there is none of that name that is about an output.
    bool Set(std::string_view name, std::string value);

    // These words where later has none.
    OutputOptions OverriddenBy(const OutputOptions &later) const;
};

// An option of the table as an option of the command, which writes to texts.
void AddOption(const Option &option, const std::string &help, OptionTexts *texts, CLI::App *command);

// By the name's extension; null: of none.
const Format *FormatOfName(const std::string &output);

// The formats, in the order given. Without a word the name of the output decides, else it is PDF. Throws OptionError.
FormatList ReadFormats(const std::string &word, const std::string &output);

unsigned SetOf(std::span<const Format *const> formats);

// Reads what the texts mean, with the date that the environment says. Throws OptionError.
Settings ReadSettings(const OptionTexts &options);

} // namespace vxhost
