// Reads what is said of a document's outputs, in the options of a command or in a line of a manifest.
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
    std::string format; // empty: nobody said one
    OptionTexts texts;

    void AddTo(CLI::App *command);
    bool operator==(const OutputOptions &) const = default;

    // Sets the option of that name, as "pdf-x". Returns false when no option about outputs has it.
    bool Set(std::string_view name, std::string value);

    // Returns all that is said in one text, a line each, the format first.
    std::string Text() const;

    // Returns what later says, and what this says where later says nothing.
    OutputOptions OverriddenBy(const OutputOptions &later) const;
};

// Adds an option of the table to the command. Its value is written to texts.
void AddOption(const Option &option, const std::string &help, OptionTexts *texts, CLI::App *command);

// Adds all that are about outputs.
void AddOutputOptions(OptionTexts *texts, CLI::App *command);

// Finds the format that the name's extension says; null: it says none.
const Format *FormatOfName(const std::string &output);

// Returns the formats in the order given. Without a word the name of the output decides; where that says none, it is PDF. Throws
// OptionError.
FormatList ReadFormats(const std::string &word, const std::string &output);

// Says that the output's name is one of another format; empty: it is not.
std::string NameProblem(const std::string &output, std::span<const Format *const> formats);

unsigned SetOf(std::span<const Format *const> formats);

// Reads what the texts mean. Where they say no date, the environment may. Throws OptionError.
Settings ReadSettings(const OptionTexts &options);

} // namespace vxhost
