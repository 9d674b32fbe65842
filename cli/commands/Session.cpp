#include "cli/commands/Session.h"

#include "cli/options/OutputOptions.h"
#include "cli/report/StandardStreams.h"
#include "library/LinkedPlugin.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

std::unique_ptr<Plugin> LoadPlugin(const std::string &named)
{
    std::error_code failure;
    // The loader would look for a name without a folder in the folders of libraries.
    const std::string path = fs::absolute(named, failure).string();
    if (!fs::is_regular_file(path, failure)) // the loader would wait for somebody to write to a pipe
        throw UsageError(fmt::format("{}: no such plug-in: check the name after --plugin", path));
    std::string error;
    std::unique_ptr<Plugin> plugin = Plugin::Load(path, &error);
    if (plugin == nullptr)
        throw UsageError(fmt::format("{}: {}", path, error));
    return plugin;
}

EngineOptions OptionsOfEngine(const CommonOptions &options, Messages *messages)
{
    EngineOptions engine;
    engine.plugin = options.plugin.empty() ? MakeLinkedPlugin() : LoadPlugin(options.plugin);
    engine.fonts = options.fonts;
    engine.reading = options.reading;
    engine.limits = options.limits;
    engine.mustBeConfined = options.requireSandbox;
    if (options.showProgress)
        engine.onProgress = [messages](const std::string &input, int percent) {
            messages->Progress(InputName(input), std::min(percent, 99)); // what is read is not yet written
        };
    return engine;
}

} // namespace

Session::Session(const CommonOptions &options, CommandKind command, Messages *messages)
    : messages_(messages), summaryOptions_{command, options.limits, options.strict},
      engine_(OptionsOfEngine(options, messages))
{
    messages_->SetVerbosity(options.verbosity);
    messages_->ShowProgress(options.showProgress);
    messages_->Detail("", fmt::format("plug-in {}", options.plugin.empty() ? "built in" : options.plugin));
    CheckServed(options.reading.served);
}

// Throws UsageError when the user's map names a font that is not there.
void Session::CheckServed(const FontMap &served)
{
    if (served.empty())
        return;
    if (const auto *row = FindRowWithoutFont(served, Fonts()))
        throw UsageError(fmt::format("--font-map: no font \"{}\" to serve \"{}\": vx fonts --list shows "
                                     "those that there are",
                                     row->second, row->first));
}

const FontList &Session::Fonts()
{
    const FontList *fonts = engine_.WaitForFonts();
    CheckFault(engine_.Fonts().WhyNone(), engine_.Fonts().Confined(), CommandKind::Info);
    if (const uint32_t omitted = engine_.Fonts().Omitted(); omitted > 0)
        messages_->Note(fmt::format("{} more fonts than can be listed: leave out folders of fonts", omitted));
    return *fonts;
}

void Session::CheckDevices(std::span<const Format *const> formats, const Settings &settings)
{
    const Trial trial = TryDevices(formats, settings, &engine_);
    CheckFault(trial.fault, trial.confinement, CommandKind::Profile);
    if (!trial.failure)
        return;
    if (trial.format->name == "pdf") // its text says what to do: the profile need not be what is wrong
        throw OptionError(trial.failure.text);
    throw OptionError(fmt::format("--profile: {}: give fogra39, none, or an ICC profile of a CMYK press",
                                  trial.failure.text));
}

Status Session::TellOfName(const std::string &output, std::span<const Format *const> formats)
{
    const std::string problem = NameProblem(output, formats);
    if (problem.empty())
        return Status::Done;
    messages_->Warning("-o " + output, problem);
    return summaryOptions_.isStrict ? Status::Warned : Status::Done;
}

// Throws what is told of a fault before the first document.
void Session::CheckFault(const Fault &fault, const Confinement &confinement, CommandKind command) const
{
    if (!fault)
        return;
    Result result;
    result.fault = fault;
    result.confinement = confinement;
    const Summary summary = vxhost::Summarise("", result, {command, summaryOptions_.limits});
    throw EarlyEnd(summary.status, (command == CommandKind::Profile ? "--profile: " : "") + summary.error);
}

Result Session::Finish(JobTask task, const std::vector<int> &descriptors)
{
    Job job(std::move(task), &engine_);
    if (!job.HasEnded())
        job.Start(descriptors);
    job.Wait();
    return job.Found();
}

Status Session::Run(JobTask task, const std::vector<int> &descriptors)
{
    const std::string input = task.input;
    return Tell(input, Finish(std::move(task), descriptors)).status;
}

Status Session::PrintEach(const std::vector<std::string> &inputs, const ResultText &makeText)
{
    Status worst = Status::Done;
    for (const std::string &input : inputs) {
        JobTask task;
        task.input = input;
        task.makePasses = [](Failure *) { return std::vector<Pass>{LookThrough}; };
        const Result result = Finish(std::move(task));
        const Summary summary = Tell(input, result);
        worst = Worst(worst, summary.status);
        if (!PrintResult(makeText(input, result, summary.error), messages_))
            return Worst(worst, Status::OutputFailed);
    }
    return worst;
}

Summary Session::Summarise(const std::string &input, const Result &result) const
{
    return vxhost::Summarise(input, result, summaryOptions_);
}

Summary Session::TellOutput(const std::string &output, const Result &result)
{
    SummaryOptions options = summaryOptions_;
    options.command = CommandKind::Render;
    Summary summary = vxhost::Summarise(output, result, options);
    vxhost::Tell(OutputName(output), result, summary, messages_);
    return summary;
}

Summary Session::Tell(const std::string &input, const Result &result)
{
    Summary summary = Summarise(input, result);
    vxhost::Tell(input, result, summary, messages_);
    return summary;
}

} // namespace vxhost
