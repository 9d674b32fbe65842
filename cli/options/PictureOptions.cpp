#include "cli/options/PictureOptions.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"
#include "cli/options/OutputOptions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace vxhost
{

namespace
{

// Returns the help without the formats that the option is for: here there is one.
std::string PlainHelp(std::string help)
{
    for (const std::string_view formats : {"svg, png, tiff: ", "png, tiff: "}) {
        if (help.starts_with(formats))
            help.erase(0, formats.size());
    }
    return help.substr(0, help.find("; pdf always"));
}

} // namespace

void AddPictureOptions(OptionTexts *texts, CLI::App *command)
{
    for (const char *name : {"dpi", "zoom", "width", "height", "fit", "box", "page", "margin", "bleed",
                             "layers", "hide", "overprint", "samples"}) {
        const Option &option = *FindOption(name);
        AddOption(option, PlainHelp(option.help), texts, command);
    }
}

const Format &CheckFormatOfName(const std::string &pattern, const std::string &input, unsigned formats,
                                const std::optional<std::string> &ink)
{
    // The whole name is looked at, since a pattern may be that of a folder.
    const Format *named = FormatOfName(FillPattern(
        pattern, {input, "", 1, NamesDigest(pattern) ? DigestForName(input) : "", ink}, *FindFormat("png")));
    if (named == nullptr || (BitOf(*named) & formats) == 0)
        throw UsageError(fmt::format("-o {}: {} is written: name a .{}", pattern, NamesOf(formats, " or "),
                                     NamesOf(formats, " or .")));
    return *named;
}

} // namespace vxhost
