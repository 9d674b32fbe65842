#include "cli/CommonOptions.h"

#include "cli/Values.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr const char *kGroup = "Options of every command";
constexpr double kMaxSeconds = 1e9;

std::optional<Script> ReadScript(const std::string &text)
{
    constexpr std::pair<std::string_view, Script> kScripts[] = {{"roman", Script::Roman},
                                                                {"japanese", Script::Japanese},
                                                                {"chinese", Script::TraditionalChinese},
                                                                {"korean", Script::Korean}};
    for (const auto &[name, script] : kScripts) {
        if (text == name)
            return script;
    }
    if (text != "auto")
        throw UsageError(
            fmt::format("--script {}: not known: give one of auto, roman, japanese, chinese, korean", text));
    return std::nullopt;
}

int64_t ReadLimit(const char *option, const std::string &text, const char *leastText, int64_t least)
{
    const std::optional<int64_t> size = ReadSize(text);
    if (!size || (*size > 0 && *size < least))
        throw UsageError(
            fmt::format("{} {}: not a size of {} or more: give one as 512M or 2G, or 0 for no limit", option,
                        text, leastText));
    return *size;
}

} // namespace

void CommonOptionReader::AddTo(CLI::App *command, const std::string &inputs)
{
    command->add_option("FILE", inputs_, inputs)->type_name("");
    const auto add = [command](const char *names, std::string *to, const char *value,
                               const std::string &help) {
        command->add_option(names, *to, help)->type_name(value)->group(kGroup);
    };
    add("--plugin", &plugin_, "PATH", "the plug-in to use (the one beside this program)");
    add("--max-time", &maxTime_, "S",
        fmt::format("seconds that a document may take; 0 is no limit ({})", maxTime_));
    add("--max-memory", &maxMemory_, "SIZE", "memory that a document may take, as 512M; 0 is no limit (1G)");
    add("--max-output", &maxOutput_, "SIZE",
        "bytes that a file written may take, as 100M; 0 is no limit; auto is 32 times the input's size, and "
        "256M at least (auto)");
    add("--progress", &progress_, "WHEN", "auto, that is on a terminal, never or always (auto)");
    command->add_option("--font-dir", fontDirectories_, "more fonts, in DIR and below it; may be repeated")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->group(kGroup);
    add("--font-map", &fontMap_, "FILE", "which font serves which name: lines of ASKED = FONT");
    command->add_flag("--no-system-fonts", noSystemFonts_, "only the fonts of --font-dir")->group(kGroup);
    add("--missing-fonts", &missingFonts_, "HOW",
        "substitute, or fail where a document needs a font that is not there (substitute)");
    add("--script", &script_, "SCRIPT",
        "of text whose font does not say it: auto, roman, japanese, chinese or korean (auto)");
    command->add_flag("--strict", strict_, "warnings give exit status 3")->group(kGroup);
    command->add_flag("-q,--quiet", quiet_, "no warnings")->group(kGroup);
    command->add_flag("-v,--verbose", verbose_, "tell more")->group(kGroup);
}

CommonOptions CommonOptionReader::Read(bool needsInput) const
{
    CommonOptions options;
    if (inputs_.empty() && needsInput)
        throw UsageError("no FILE: name a document, or - for standard input");
    if (std::count(inputs_.begin(), inputs_.end(), "-") > 1)
        throw UsageError("FILE - is given twice: standard input can be read once");
    options.inputs = inputs_;
    options.plugin = plugin_;

    const std::optional<double> seconds = ReadNumber(maxTime_);
    if (!seconds || *seconds < 0 || *seconds > kMaxSeconds)
        throw UsageError(fmt::format("--max-time {}: not a time: give seconds, or 0 for no limit", maxTime_));
    options.limits.seconds = *seconds;
    options.limits.memory = ReadLimit("--max-memory", maxMemory_, "1M", int64_t{1} << 20);
    if (maxOutput_ != "auto")
        options.limits.output = ReadLimit("--max-output", maxOutput_, "1K", int64_t{1} << 10);

    options.fonts = ReadFontChoice(options.limits.seconds);
    options.script = ReadScript(script_);
    if (quiet_ && verbose_)
        throw UsageError("-q and -v: give one of them");
    options.verbosity = quiet_ ? Verbosity::Quiet : verbose_ ? Verbosity::Detailed : Verbosity::Normal;
    options.strict = strict_;
    if (progress_ != "auto" && progress_ != "never" && progress_ != "always")
        throw UsageError(fmt::format("--progress {}: not known: give auto, never or always", progress_));
    options.showProgress =
        progress_ == "always" || (progress_ == "auto" && isatty(STDERR_FILENO) == 1 && !quiet_);
    return options;
}

FontChoice CommonOptionReader::ReadFontChoice(double seconds) const
{
    FontChoice fonts;
    std::ranges::for_each(fontDirectories_, CheckFontFolder);
    fonts.sources = {!noSystemFonts_, fontDirectories_};
    if (!fontMap_.empty())
        fonts.served = ReadFontMap(fontMap_, seconds);
    if (missingFonts_ != "substitute" && missingFonts_ != "fail")
        throw UsageError(
            fmt::format("--missing-fonts {}: not known: give substitute or fail", missingFonts_));
    fonts.substitute = missingFonts_ == "substitute";
    return fonts;
}

} // namespace vxhost
