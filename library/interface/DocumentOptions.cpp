#include "library/interface/DocumentOptions.h"

#include "library/interface/Calls.h"

namespace vxhost
{

void SetOption(const char *name, const char *value, OptionTexts *options)
{
    const std::string option(CheckText(name, "name"));
    const std::string text(value == nullptr ? std::string_view() : CheckText(value, "value"));
    if (!options->Set(option, text))
        throw OptionError("no option \"" + option + "\": vx_option_at lists them");
    if (value != nullptr && text.empty())
        throw OptionError(option + ": its value is empty: give one, or null");
}

const Format &CheckFormat(const char *name)
{
    const std::string text(CheckText(name, "format"));
    const Format *format = FindFormat(text);
    if (format == nullptr)
        throw OptionError("no format \"" + text + "\": give one of " +
                          NamesOf(kPdf | kSvg | kPng | kTiff, ", "));
    return *format;
}

Settings ReadSettings(const OptionTexts &options, const Choices &choices)
{
    return options.Read(choices.profiles);
}

} // namespace vxhost
