#include "cli/commands/PlatesCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/OutputOptions.h"
#include "cli/options/PictureOptions.h"
#include "devices/raster/PlateFiles.h"
#include "jobs/LateLibraries.h"
#include "jobs/PlateRendering.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

namespace vxhost
{

namespace
{

constexpr std::string_view kInkMark = "{ink}";
constexpr std::string_view kNotInNames = "/\\:*?\"<>|{}"; // some file systems refuse them

constexpr unsigned kOfPlates = kPng | kTiff;

// Adds to a pattern that names a folder what names a plate in it.
std::string WholePattern(const std::string &pattern)
{
    std::error_code failure;
    if (pattern.ends_with('/'))
        return pattern + "{stem}-{ink}.{ext}";
    return std::filesystem::is_directory(pattern, failure) ? pattern + "/{stem}-{ink}.{ext}" : pattern;
}

} // namespace

std::string FileNameOf(const std::string &ink)
{
    constexpr size_t kMostBytes = 100;
    std::string name = ink;
    std::ranges::replace_if(
        name,
        [](char c) {
            return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
                   kNotInNames.find(c) != std::string_view::npos;
        },
        '_');
    for (size_t i = 0; i < name.size() && name[i] == '.'; ++i)
        name[i] = '_';
    if (name.size() <= kMostBytes)
        return name;
    size_t end = kMostBytes;
    while ((static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) // a character stays whole
        --end;
    return name.substr(0, end);
}

std::vector<std::string> PlateNames(const std::string &pattern, const NamedDocument &document,
                                    const Format &format, const std::vector<std::string> &inks)
{
    std::set<std::string> used;
    std::vector<std::string> names;
    for (const std::string &ink : inks) {
        const std::string plain = FileNameOf(ink);
        std::string name = plain;
        // File systems that do not tell large letters from small ones would have one file for both.
        const auto fold = [](std::string text) {
            std::ranges::transform(text, text.begin(), [](char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
            });
            return text;
        };
        for (int number = 2; !used.insert(fold(name)).second; ++number)
            name = fmt::format("{}-{}", plain, number);
        NamedDocument plate = document;
        plate.ink = name;
        names.push_back(FillPattern(pattern, plate, format));
    }
    return names;
}

PlatesCommand::PlatesCommand(CLI::App *command)
{
    command
        ->add_option("-o,--output", output_,
                     "where to write, as 'plates/{stem}-{ink}.png'; {ink} is the name of each ink, {stem} "
                     "and {dir} are those of the input")
        ->type_name("PATH");
    command->add_option("-f,--format", format_, "png or tiff (by the output's name, else png)")
        ->type_name("FORMAT");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for outputs");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost");
    AddPictureOptions(&texts_, command);
    AddOption(*FindOption("marks"), FindOption("marks")->help, &texts_, command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx plates poster.vx -o 'plates/{ink}.png' --dpi 300\n"
                    "  vx plates *.vx -o 'plates/{stem}-{ink}.tif'\n"
                    "  vx plates poster.vx -o '{ink}.png' --overprint ignore");
}

PlatesCommand::Plan PlatesCommand::MakePlan(const CommonOptions &options) const
{
    if (output_.empty())
        throw UsageError("no output: add -o and a name, as -o '{stem}-{ink}.png'");
    Plan plan;
    plan.pattern = WholePattern(output_);
    if (plan.pattern.find(kInkMark) == std::string::npos)
        throw UsageError(
            fmt::format("-o {}: all plates would be written to one file: name each after its ink, as -o "
                        "'{{stem}}-{{ink}}.png'",
                        output_));
    const std::string anyInk(kInkMark); // stands for itself
    plan.format = format_.empty()
                      ? &CheckFormatOfName(plan.pattern, options.inputs.front(), kOfPlates, anyInk)
                      : FindFormat(format_);
    if (plan.format == nullptr || (BitOf(*plan.format) & kOfPlates) == 0)
        throw UsageError(
            fmt::format("--format {}: not one of plates: give {}", format_, NamesOf(kOfPlates, " or ")));
    (void)OutputNames(plan.pattern, options.inputs, std::vector{plan.format}, "-o",
                      anyInk); // no two inputs share their plates
    plan.settings = options.Complete(ReadSettings(texts_));
    return plan;
}

Status PlatesCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    const Plan plan = MakePlan(options);
    Session session(options, CommandKind::Render, messages);
    Status worst = session.TellOfName(plan.pattern, std::vector{plan.format});
    NamedDocument named;
    for (const std::string &input : options.inputs) {
        named.path = input;
        named.digest = NamesDigest(plan.pattern) ? DigestForName(input) : "";
        worst = Worst(worst, MakePlates(named, plan, &session));
        ++named.number;
    }
    return worst;
}

// Which plates there are is known when the document was read to its end: so it is read once before.
Status PlatesCommand::MakePlates(const NamedDocument &named, const Plan &plan, Session *session) const
{
    const std::string &input = named.path;
    JobTask look;
    look.input = input;
    look.layers = plan.settings.layers;
    look.makePasses = [](Failure *) { return std::vector<Pass>{LookThrough}; };
    Job job(std::move(look), &session->Jobs());
    const std::shared_ptr<Document> document = job.Opened();
    if (!job.HasEnded())
        job.Start();
    job.Wait();
    if (job.Found().fault)
        return session->Tell(input, job.Found()).status;
    PlateTask task;
    task.input = input;
    task.document = document;
    task.settings = plan.settings;
    task.rules.makesFolders = !noMkdir_;
    const std::vector<std::string> inks = PlateInks(job.Found().outcome.spots);
    task.spotInks = inks;
    task.outputs = PlateNames(plan.pattern, named, *plan.format, inks);
    for (const std::string &output : task.outputs) {
        if (!force_)
            CheckKeepsDrawing(output_, output);
    }
    const PlateFormat format = plan.format == FindFormat("tiff") ? PlateFormat::Tiff : PlateFormat::Png;
    if (format == PlateFormat::Tiff)
        LoadLate(LateLibraries::OfTiff);
    task.makeSink = [&inks, format](const OutputFiles &files) {
        return std::make_unique<PlateFiles>(format, [&](const std::string &ink) {
            return SinksFor(
                files.Descriptor(static_cast<size_t>(std::ranges::find(inks, ink) - inks.begin())));
        });
    };
    PlateRendering rendering(std::move(task), &session->Jobs());
    return session->Tell(input, rendering.Finish()).status;
}

} // namespace vxhost
