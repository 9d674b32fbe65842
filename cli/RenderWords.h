// What a picture is to be like, as it was written: in the options of a command, or in a line of a manifest.
//
// Owns the table of these options: their names, their help, and the formats for which they mean something.
#pragma once

#include "cli/Format.h"

#include <optional>
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

// Empty: not given.
struct RenderWords {
    std::string format;
    std::string dpi, zoom, width, height, fit;
    std::string background, box, profile, intent, overprint, samples, text, pdfX;

    void AddTo(CLI::App *command);
    bool operator==(const RenderWords &) const = default;

    // By the name of the option, as "pdf-x". False when there is none of that name.
    bool Set(std::string_view name, std::string value);

    // Throws UsageError for a word that means nothing for any of the formats.
    void CheckMeant(std::span<const Format> formats) const;

    // What later does not say, these say. A size is one thing, however many words it takes.
    RenderWords OverriddenBy(const RenderWords &later) const;
};

// By the name's extension.
std::optional<Format> FormatOfName(const std::string &output);

// In the order given. Without a word, what the name of the output says, else PDF. Throws UsageError.
std::vector<Format> ReadFormats(const std::string &word, const std::string &output);

} // namespace vxhost
