#include "cli/options/OutputOptions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

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

void OutputOptions::AddTo(CLI::App *command)
{
    command
        ->add_option("-f,--format", format,
                     AllFormats() + ", or several as pdf,png (by the output's name, else pdf)")
        ->type_name("FORMAT")
        ->check(kNotEmpty);
    for (const Option &option : Options()) {
        if (option.formats != 0)
            AddOption(option, option.help, &texts, command);
    }
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
        // Who gives such a name does not want a PDF.
        for (const char *other : {".jpg", ".jpeg", ".gif", ".webp", ".bmp", ".eps", ".ps"}) {
            if (ExtensionOf(output) == other)
                throw OptionError(fmt::format("-o {}: no {} is written here: name a .pdf, .svg, .png or .tif",
                                              output, other + 1));
        }
        const Format *named = FormatOfName(output);
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
