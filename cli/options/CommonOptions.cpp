#include "cli/options/CommonOptions.h"

#include "cli/options/Digest.h"
#include "cli/options/FontMapFile.h"
#include "cli/options/OutputOptions.h"
#include "library/FontFolder.h"
#include "library/OptionValues.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr const char *kGroup = "Options of every command";

} // namespace

void CommonOptionReader::AddTo(CLI::App *command, const std::string &inputs)
{
    command->add_option("FILE", inputs_, inputs)->type_name("");
    const auto add = [command](const char *names, std::string *to, const char *value,
                               const std::string &help) {
        command->add_option(names, *to, help)->type_name(value)->group(kGroup);
    };
    add("--plugin", &plugin_, "PATH", "the file of the plug-in to use (one is built in)");
    const auto addOfTable = [&](const char *name, const std::string &standard) {
        const Option *option = FindOption(name);
        AddOption(*option, option->help + standard, &texts_, command);
        command->get_option("--" + std::string(name))->group(kGroup);
    };
    addOfTable("max-time", " (" + texts_.Of("max-time") + ")");
    addOfTable("max-memory", "");
    addOfTable("max-output", "");
    add("--progress", &progress_, "WHEN",
        "when to show progress: auto, which is on a terminal, never or always (auto)");
    command
        ->add_option("--font-dir", fontDirectories_, "use the fonts in DIR and below it too; may be repeated")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->group(kGroup);
    add("--font-map", &fontMap_, "FILE",
        "a file that says which font serves which name, in lines of ASKED = FONT");
    command->add_flag("--no-system-fonts", noSystemFonts_, "use only the fonts of --font-dir")->group(kGroup);
    addOfTable("missing-fonts", "");
    addOfTable("script", "");
    addOfTable("date-order", "");
    command
        ->add_flag_callback(
            "--salvage", [this] { texts_.Set("salvage", "yes"); },
            "draw a malformed document without what is malformed, with exit status 3")
        ->group(kGroup);
    command
        ->add_flag("--require-sandbox", requireSandbox_,
                   "read no document where the kernel cannot confine its worker")
        ->group(kGroup);
    command->add_flag("--strict", strict_, "warnings give exit status 3")->group(kGroup);
    command->add_flag("-q,--quiet", quiet_, "tell no warnings")->group(kGroup);
    command->add_flag("-v,--verbose", verbose_, "tell more")->group(kGroup);
}

Settings CommonOptions::Complete(Settings settings) const
{
    settings.png.memoryLimit =
        limits.memory > 0 ? static_cast<uint64_t>(limits.memory) : std::numeric_limits<uint64_t>::max();
    return settings;
}

std::string CommonOptionReader::TextOfSaid() const
{
    std::string text;
    const auto add = [&text](std::string_view name, std::string_view value) {
        if (!value.empty())
            text += fmt::format("{}={}\n", name, value);
    };
    for (const Option &option : Options()) {
        if (option.formats == 0 && !std::string_view(option.name).starts_with("max-"))
            add(option.name, texts_.Of(option.name));
    }
    for (const std::string &folder : fontDirectories_)
        add("font-dir", folder);
    add("font-map", fontMap_.empty() ? "" : DigestOfFile(fontMap_).digest);
    add("no-system-fonts", noSystemFonts_ ? "yes" : "");
    return text;
}

std::optional<size_t> ReadJobs(const std::string &text)
{
    constexpr int32_t kMost = 256;
    if (text.empty())
        return std::nullopt;
    const std::optional<int32_t> jobs = ReadInteger(text);
    if (!jobs || *jobs < 1 || *jobs > kMost)
        throw UsageError(
            fmt::format("--jobs {}: not a whole number from 1 to {}: give one as 4", text, kMost));
    return static_cast<size_t>(*jobs);
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

    const Settings settings = texts_.Read();
    options.limits = {settings.seconds, settings.memory, settings.output};
    std::ranges::for_each(fontDirectories_, CheckFontFolder);
    options.fonts = {!noSystemFonts_, fontDirectories_};
    options.reading = ReadingOptionsOf(settings);
    if (!fontMap_.empty())
        options.reading.served = ReadFontMapFile(fontMap_, settings.seconds);
    if (quiet_ && verbose_)
        throw UsageError("-q and -v: give one of them");
    options.verbosity = quiet_ ? Verbosity::Quiet : verbose_ ? Verbosity::Detailed : Verbosity::Normal;
    options.strict = strict_;
    options.requireSandbox = requireSandbox_;
    options.said = TextOfSaid();
    if (progress_ != "auto" && progress_ != "never" && progress_ != "always")
        throw UsageError(fmt::format("--progress {}: not known: give auto, never or always", progress_));
    options.showProgress =
        progress_ == "always" || (progress_ == "auto" && isatty(STDERR_FILENO) == 1 && !quiet_);
    return options;
}

} // namespace vxhost
