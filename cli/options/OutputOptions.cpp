#include "cli/options/OutputOptions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace vxhost
{

namespace
{

// An empty value comes from a variable of a shell that was never set.
const CLI::Validator
    kNotEmpty([](const std::string &value) { return std::string(value.empty() ? "the value is empty" : ""); },
              "");

// Returns the extension in lower case, with its point.
std::string ExtensionOf(const std::string &name)
{
    std::string extension = std::filesystem::path(name).extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return extension;
}

// Returns whether the name itself ends in an extension, which neither that of a folder nor "{stem}.{ext}" does.
bool HasOwnExtension(const std::string &output)
{
    std::error_code failure;
    const std::string extension = ExtensionOf(output);
    return extension.size() > 1 && extension.find('{') == std::string::npos &&
           !std::filesystem::is_directory(output, failure);
}

// "pdf, svg or png"
std::string AllFormats()
{
    std::string names;
    for (const Format &format : Formats())
        names.append(names.empty() ? "" : &format == &Formats().back() ? " or " : ", ").append(format.name);
    return names;
}

} // namespace

void AddOption(const Option &option, const std::string &help, OptionTexts *texts, CLI::App *command)
{
    const std::string letter = option.letter == 0 ? "" : fmt::format("-{},", option.letter);
    command->add_option(fmt::format("{}--{}", letter, option.name), (*texts)[option], help)
        ->type_name(option.value)
        ->check(kNotEmpty);
}

void AddOutputOptions(OptionTexts *texts, CLI::App *command)
{
    for (const Option &option : Options()) {
        if (option.formats != 0)
            AddOption(option, option.help, texts, command);
    }
}

void OutputOptions::AddTo(CLI::App *command)
{
    command
        ->add_option("-f,--format", format,
                     AllFormats() + ", or several as pdf,png (by the output's name, else pdf)")
        ->type_name("FORMAT")
        ->check(kNotEmpty);
    AddOutputOptions(&texts, command);
}

bool OutputOptions::Set(std::string_view name, std::string value)
{
    if (name == "format") {
        format = std::move(value);
        return true;
    }
    const Option *option = FindOption(name);
    return option != nullptr && option->formats != 0 && texts.Set(name, std::move(value));
}

std::string OutputOptions::Text() const
{
    std::string text = fmt::format("format={}", format);
    for (const Option &option : Options()) {
        if (const std::string &value = texts.Of(option.name); option.formats != 0 && !value.empty())
            text += fmt::format("\n{}={}", option.name, value);
    }
    return text;
}

OutputOptions OutputOptions::OverriddenBy(const OutputOptions &later) const
{
    return {later.format.empty() ? format : later.format, texts.OverriddenBy(later.texts)};
}

const Format *FormatOfName(const std::string &output)
{
    const std::string extension = ExtensionOf(output);
    return FindFormat(extension.empty() ? "" : extension.substr(1));
}

FormatList ReadFormats(const std::string &word, const std::string &output)
{
    if (word.empty()) {
        const Format *named = FormatOfName(output);
        // A name that ends in another extension does not ask for a PDF.
        if (named == nullptr && HasOwnExtension(output))
            throw OptionError(fmt::format("{}: no {} is written here: end the name in {}, or add -f", output,
                                          ExtensionOf(output).substr(1), AllFormats()));
        return {named != nullptr ? named : FindFormat("pdf")};
    }
    FormatList formats;
    for (size_t at = 0; at <= word.size();) {
        const std::string name = word.substr(at, word.find(',', at) - at);
        const Format *format = FindFormat(name);
        if (format == nullptr || std::ranges::find(formats, format) != formats.end())
            throw OptionError(fmt::format("--format {}: {}: give {}, or several as pdf,png", word,
                                          format != nullptr ? "one is given twice" : "not known",
                                          AllFormats()));
        formats.push_back(format);
        at += name.size() + 1;
    }
    return formats;
}

std::string NameProblem(const std::string &output, std::span<const Format *const> formats)
{
    const Format *named = FormatOfName(output);
    if (named == nullptr || !HasOwnExtension(output) || std::ranges::find(formats, named) != formats.end())
        return "";
    return fmt::format("{} {} written under a name of {}: leave out -f, or change the name after -o",
                       NamesOf(SetOf(formats)), formats.size() == 1 ? "is" : "are", named->name);
}

unsigned SetOf(std::span<const Format *const> formats)
{
    unsigned set = 0;
    for (const Format *format : formats)
        set |= BitOf(*format);
    return set;
}

// People who build archives and packages set a date in the environment, so that the same source gives the same bytes every
// day.
Settings ReadSettings(const OptionTexts &options)
{
    constexpr const char *kVariable = "SOURCE_DATE_EPOCH";
    const char *date = std::getenv(kVariable);
    if (date == nullptr || !options.Of("date").empty())
        return options.Read();
    OptionTexts alone; // an empty text means that nobody said one, so "nothing" stands for it
    alone.Set("date", *date == 0 ? "nothing" : date);
    try {
        (void)alone.Read();
    } catch (const OptionError &) {
        throw OptionError(
            fmt::format("{} \"{}\": not a whole number of seconds since 1970, up to the year 9999: "
                        "set it right, or unset it",
                        kVariable, date));
    }
    return options.OverriddenBy(alone).Read();
}

} // namespace vxhost
