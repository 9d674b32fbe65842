#include "cli/commands/RenderCommand.h"

#include "cli/archive/Premis.h"
#include "cli/commands/Session.h"
#include "cli/options/OutputNames.h"
#include "cli/report/Times.h"
#include "jobs/Merging.h"
#include "jobs/Rendering.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

std::optional<size_t> ReadThreads(const std::string &jobs, unsigned formats)
{
    if (!jobs.empty() && (formats & (kPng | kTiff)) == 0)
        throw UsageError(fmt::format("--jobs is for {}, and {} written: leave it out, or see -f",
                                     NamesOf(kPng | kTiff),
                                     NamesOf(formats) + (std::popcount(formats) == 1 ? " is" : " are")));
    return ReadJobs(jobs);
}

// Writes a record beside each output. Every failure has been told when this returns.
Status WriteRecords(const RenderTask &task, const Result &result, const Summary &summary,
                    const std::string &options, Messages *messages)
{
    const FileDigest source = DigestOfFile(task.input);
    Status status = summary.status;
    for (size_t i = 0; i < result.written.size(); ++i) {
        const std::string &path = result.written[i];
        const std::string problem =
            WritePremis({task.input, source, path, DigestOfFile(path), task.outputs[i].format, options,
                         summary.warnings, StatedTime()});
        if (problem.empty())
            continue;
        messages->Error(InputName(task.input), problem);
        status = Status::OutputFailed;
    }
    return status;
}

} // namespace

RenderCommand::RenderCommand(CLI::App *command)
{
    command
        ->add_option("-o,--output", output_,
                     "where to write; - is standard output; {stem}, {dir}, {number}, {hash}, {namehash} and "
                     "{ext} are those "
                     "of the document and the format")
        ->type_name("PATH");
    command->add_flag("--merge", merge_, "pdf: all drawings into one file, a page each, with bookmarks");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for outputs that are named by a pattern");
    command->add_flag("--premis", writesPremis_,
                      "write a PREMIS record beside each output, as OUT.premis.xml");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost, and fill a terminal");
    command
        ->add_option("-j,--jobs", jobs_,
                     "png, tiff: how many threads draw (as many as there are processors, where that pays)")
        ->type_name("N");
    outputOptions_.AddTo(command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx render harp.vx -o harp.pdf\n"
                    "  vx render harp.vx -o small.png --fit 256\n"
                    "  vx render harp.vx -o press.pdf --pdf-x x4\n"
                    "  vx render harp.vx -o archive.pdf --pdf-a 2b\n"
                    "  vx render *.vx -f pdf,png -o 'pictures/{stem}.{ext}' --dpi 300\n"
                    "  vx render *.vx -o all.pdf --merge\n"
                    "  cat harp.vx | vx render - -f svg -o - > harp.svg");
}

Status RenderCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    if (output_.empty())
        throw UsageError("no output: add -o and a name, as -o picture.pdf");
    if (merge_ && writesPremis_)
        throw UsageError(
            "--premis and --merge: a record tells of one drawing and its output: give one of the two");
    if (merge_)
        return Merge(options, messages);
    const FormatList formats = ReadFormats(outputOptions_.format, output_);
    if (writesPremis_ && (output_ == "-" || std::ranges::count(options.inputs, "-") > 0))
        throw UsageError("--premis: a record tells of files, and - is none: name files");
    const std::vector<std::string> names = OutputNames(output_, options.inputs, formats);
    for (size_t i = 0; i < names.size() && !force_; ++i) {
        CheckKeepsDrawing(output_, names[i]);
        CheckKeepsTerminal(names[i], *formats[i % formats.size()]);
    }
    outputOptions_.texts.CheckMeant(SetOf(formats));
    const std::optional<size_t> threads = ReadThreads(jobs_, SetOf(formats));
    const Settings settings = options.Complete(ReadSettings(outputOptions_.texts));
    Session session(options, CommandKind::Render, messages);
    session.CheckDevices(formats, settings);
    Status worst = session.TellOfName(output_, formats);
    auto name = names.begin();
    for (const std::string &input : options.inputs) {
        RenderTask task = {input, {}, settings};
        task.rules.makesFolders = IsPattern(output_) && !noMkdir_;
        task.threads = threads;
        for (const Format *format : formats)
            task.outputs.push_back({format, *name++});
        Rendering rendering(std::move(task), &session.Jobs());
        rendering.Wait();
        const Result result = rendering.Finish();
        const Summary summary = session.Tell(input, result);
        worst = Worst(worst,
                      writesPremis_ && summary.IsDone()
                          ? WriteRecords(rendering.Task(), result, summary, outputOptions_.Text(), messages)
                          : summary.status);
    }
    return worst;
}

Status RenderCommand::Merge(const CommonOptions &options, Messages *messages) const
{
    const FormatList formats = ReadFormats(outputOptions_.format, output_);
    if (SetOf(formats) != kPdf)
        throw UsageError(
            fmt::format("--merge: only a pdf has many pages, and {} {} written: name a .pdf, or leave "
                        "--merge out",
                        NamesOf(SetOf(formats)), formats.size() == 1 ? "is" : "are"));
    if (IsPattern(output_))
        throw UsageError(fmt::format("-o {}: --merge writes one file: name it, as -o all.pdf", output_));
    for (const std::string &input : options.inputs)
        (void)OutputNames(output_, {input}, formats); // which is none of the inputs
    if (!force_) {
        CheckKeepsDrawing(output_, output_);
        CheckKeepsTerminal(output_, *formats.front());
    }
    outputOptions_.texts.CheckMeant(kPdf);
    (void)ReadThreads(jobs_, kPdf);
    const Settings settings = options.Complete(ReadSettings(outputOptions_.texts));
    Session session(options, CommandKind::Merge, messages);
    session.CheckDevices(formats, settings);

    Merging merging({output_, settings}, &session.Jobs());
    if (merging.Opened().fault)
        return session.TellOutput(output_, merging.Opened()).status;
    Status worst = session.TellOfName(output_, formats);
    size_t failed = 0;
    for (const std::string &input : options.inputs) {
        const Summary told = session.Tell(input, merging.AddPage(input, StemOf(input)));
        worst = Worst(worst, told.status);
        if (told.status == Status::OutputFailed)
            return worst;
        failed += told.IsDone() ? 0 : 1;
    }
    if (merging.PageCount() == 0 || (options.strict && failed > 0)) {
        messages->Error(OutputName(output_),
                        fmt::format("{} of {} drawings failed, nothing written: {}", failed,
                                    options.inputs.size(),
                                    merging.PageCount() > 0 ? "go without --strict for the others"
                                                            : "see what is wrong with each above"));
        return worst;
    }
    return Worst(worst, session.TellOutput(output_, merging.Finish()).status);
}

} // namespace vxhost
