#include "cli/RenderWords.h"

#include "cli/CommonOptions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace vxhost
{

namespace
{

enum FormatSet : unsigned {
    kPdf = 1U << static_cast<unsigned>(Format::Pdf),
    kSvg = 1U << static_cast<unsigned>(Format::Svg),
    kPng = 1U << static_cast<unsigned>(Format::Png)
};

struct WordRow {
    const char *names; // the long one last
    std::string RenderWords::*word;
    unsigned formats;
    const char *value;
    const char *help;
    bool isSize = false; // one of those that replace each other
};

// In the order of the help.
constexpr WordRow kWords[] = {
    {"-f,--format", &RenderWords::format, kPdf | kSvg | kPng, "FORMAT",
     "pdf, svg or png, or several as pdf,png (by the output's name, else pdf)"},
    {"-r,--dpi", &RenderWords::dpi, kPng, "N", "png: pixels an inch (150)", true},
    {"-z,--zoom", &RenderWords::zoom, kPng, "F", "png: pixels a point", true},
    {"--width", &RenderWords::width, kPng, "N", "png: pixels; alone it keeps the aspect", true},
    {"--height", &RenderWords::height, kPng, "N", "png: pixels; alone it keeps the aspect", true},
    {"--fit", &RenderWords::fit, kPng, "N", "png: at most N x N pixels", true},
    {"-b,--background", &RenderWords::background, kPdf | kSvg | kPng, "COLOR",
     "none, #rrggbb or a name (png white; pdf, svg none)"},
    {"--box", &RenderWords::box, kPdf | kSvg | kPng, "BOX",
     "what to show: bbox, or L,B,R,T in points (bbox)"},
    {"--profile", &RenderWords::profile, kPdf | kSvg | kPng, "FILE",
     "press profile: fogra39, none (plain arithmetic), or an ICC file; for pdf with --pdf-x (fogra39)"},
    {"--intent", &RenderWords::intent, kSvg | kPng, "INTENT",
     "svg, png: relative (with black point compensation) or perceptual (relative)"},
    {"--overprint", &RenderWords::overprint, kSvg | kPng, "HOW",
     "svg, png: simulate or ignore (simulate); pdf always carries it"},
    {"--samples", &RenderWords::samples, kPng, "N", "png: samples a pixel, each way: 1, 2, 4 or 8 (4)"},
    {"--text", &RenderWords::text, kPdf | kSvg, "HOW",
     "pdf, svg: text, in embedded fonts, or outlines (text)"},
    {"--pdf-x", &RenderWords::pdfX, kPdf, "LEVEL", "pdf: the standard to keep to: x1a, x3 or none (none)"},
};

// As a variable of a shell is that was never set.
const CLI::Validator
    kNotEmpty([](const std::string &value) { return std::string(value.empty() ? "the value is empty" : ""); },
              "");

std::string_view LongName(const WordRow &row)
{
    const std::string_view names = row.names;
    return names.substr(names.rfind("--"));
}

unsigned BitOf(Format format)
{
    return 1U << static_cast<unsigned>(format);
}

// In lower case, with its point.
std::string ExtensionOf(const std::string &name)
{
    std::string extension = std::filesystem::path(name).extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return extension;
}

// "pdf", "svg and png"
std::string NamesOf(unsigned formats)
{
    std::string names;
    for (const FormatRow &row : kFormats) {
        if ((formats & BitOf(row.format)) != 0)
            names += (names.empty() ? "" : " and ") + std::string(row.name);
    }
    return names;
}

} // namespace

void RenderWords::AddTo(CLI::App *command)
{
    for (const WordRow &row : kWords)
        command->add_option(row.names, this->*row.word, row.help)->type_name(row.value)->check(kNotEmpty);
}

bool RenderWords::Set(std::string_view name, std::string value)
{
    for (const WordRow &row : kWords) {
        if (LongName(row).substr(2) == name) {
            this->*row.word = std::move(value);
            return true;
        }
    }
    return false;
}

void RenderWords::CheckMeant(std::span<const Format> formats) const
{
    unsigned written = 0;
    for (const Format one : formats)
        written |= BitOf(one);
    for (const WordRow &row : kWords) {
        if (!(this->*row.word).empty() && (row.formats & written) == 0)
            throw UsageError(fmt::format("{} is for {}, and {} is written: leave it out, or see -f",
                                         LongName(row), NamesOf(row.formats), NamesOf(written)));
    }
    if (!profile.empty() && written == kPdf && (pdfX.empty() || pdfX == "none"))
        throw UsageError(
            "--profile: a pdf keeps the document's inks, it takes a profile under --pdf-x alone: "
            "leave it out, or add --pdf-x");
}

RenderWords RenderWords::OverriddenBy(const RenderWords &later) const
{
    RenderWords words = *this;
    const bool hasSize = std::ranges::any_of(
        kWords, [&](const WordRow &row) { return row.isSize && !(later.*row.word).empty(); });
    for (const WordRow &row : kWords) {
        if (!(later.*row.word).empty() || (row.isSize && hasSize))
            words.*row.word = later.*row.word;
    }
    return words;
}

std::optional<Format> FormatOfName(const std::string &output)
{
    const std::string extension = ExtensionOf(output);
    return FindFormat(extension.empty() ? "" : extension.substr(1));
}

std::vector<Format> ReadFormats(const std::string &word, const std::string &output)
{
    if (word.empty()) {
        // Nobody wants a pdf of that name.
        for (const char *other : {".jpg", ".jpeg", ".gif", ".tif", ".tiff", ".webp", ".bmp", ".eps", ".ps"}) {
            if (ExtensionOf(output) == other)
                throw UsageError(fmt::format("-o {}: no {} is written here: name a .pdf, .svg or .png",
                                             output, other + 1));
        }
        return {FormatOfName(output).value_or(Format::Pdf)};
    }
    std::vector<Format> formats;
    for (size_t at = 0; at <= word.size();) {
        const std::string name = word.substr(at, word.find(',', at) - at);
        const std::optional<Format> format = FindFormat(name);
        if (!format || std::ranges::find(formats, *format) != formats.end())
            throw UsageError(fmt::format("--format {}: {}: give pdf, svg or png, or several as pdf,png", word,
                                         format ? "one is given twice" : "not known"));
        formats.push_back(*format);
        at += name.size() + 1;
    }
    return formats;
}

} // namespace vxhost
