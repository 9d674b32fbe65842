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
    for (const std::string_view formats : {"svg, png: ", "png: "}) {
        if (help.starts_with(formats))
            help.erase(0, formats.size());
    }
    return help.substr(0, help.find("; pdf always"));
}

} // namespace

void AddPictureOptions(OptionTexts *texts, CLI::App *command)
{
    for (const char *name :
         {"dpi", "zoom", "width", "height", "fit", "box", "layers", "hide", "overprint", "samples"}) {
        const Option &option = *FindOption(name);
        AddOption(option, PlainHelp(option.help), texts, command);
    }
}

void CheckIsPng(const std::string &pattern, const std::string &input, const std::optional<std::string> &ink)
{
    const Format *png = FindFormat("png");
    // The whole name is looked at, since a pattern may be that of a folder.
    if (FormatOfName(FillPattern(
            pattern, {input, "", 1, NamesDigest(pattern) ? DigestForName(input) : "", ink}, *png)) != png)
        throw UsageError(fmt::format("-o {}: png is written: name a .png", pattern));
}

} // namespace vxhost
