#include "cli/commands/Session.h"

#include "library/LinkedPlugin.h"

#include <fmt/format.h>

#include <filesystem>
#include <set>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

std::unique_ptr<Plugin> LoadPlugin(const std::string &named)
{
    std::error_code failure;
    // Absolute, or the loader would look for a bare name in the folders of libraries.
    const std::string path = fs::absolute(named, failure).string();
    if (!fs::is_regular_file(path, failure)) // the loader would wait for who writes to a pipe
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
    engine.fonts = options.fonts.sources;
    engine.served = options.fonts.served;
    engine.substitute = options.fonts.substitute;
    engine.script = options.script;
    engine.limits = options.limits;
    engine.mustBeConfined = options.requireSandbox;
    if (options.showProgress)
        engine.onProgress = [messages](const std::string &input, int percent) {
            messages->Progress(InputName(input), percent);
        };
    return engine;
}

} // namespace

Session::Session(const CommonOptions &options, Audience audience, Messages *messages)
    : messages_(messages), telling_{audience, options.limits, options.strict},
      engine_(OptionsOfEngine(options, messages))
{
    messages_->SetVerbosity(options.verbosity);
    messages_->ShowProgress(options.showProgress);
    messages_->Detail("", fmt::format("plug-in {}", options.plugin.empty() ? "built in" : options.plugin));
    CheckServed(options.fonts.served);
}

// A font that the user chose and that is not there is a mistake of the user's.
void Session::CheckServed(const std::map<std::string, std::string> &served)
{
    if (served.empty())
        return;
    const FontList &fonts = Fonts();
    std::set<std::string_view> names;
    for (int32_t i = 0; i < fonts.Count(); ++i)
        names.insert(fonts.At(i).postScriptName);
    for (const auto &[asked, font] : served) {
        if (!names.contains(font))
            throw UsageError(fmt::format("--font-map: no font \"{}\" to serve \"{}\": vx fonts --list shows "
                                         "those that there are",
                                         font, asked));
    }
}

const FontList &Session::Fonts()
{
    const FontList *fonts = engine_.WaitForFonts();
    CheckFault(engine_.Fonts().WhyNone(), engine_.Fonts().Confined(), Audience::Info);
    if (const uint32_t omitted = engine_.Fonts().Omitted(); omitted > 0)
        messages_->Note(fmt::format("{} more fonts than can be listed: leave out folders of fonts", omitted));
    return *fonts;
}

void Session::CheckDevices(std::span<const Format *const> formats, const Settings &settings)
{
    const Trial trial = TryDevices(formats, settings, &engine_);
    CheckFault(trial.fault, trial.confinement, Audience::Profile);
    if (!trial.failure)
        return;
    if (trial.format->name == "pdf") // says what to do itself: it may be something else than the profile
        throw OptionError(trial.failure.text);
    throw OptionError(fmt::format("--profile: {}: give fogra39, none, or an ICC profile of a CMYK press",
                                  trial.failure.text));
}

// Throws what is told of a fault before the first document.
void Session::CheckFault(const Fault &fault, const Confinement &confinement, Audience audience) const
{
    if (!fault)
        return;
    Result result;
    result.fault = fault;
    result.confinement = confinement;
    const Summary summary = vxhost::Summarise("", result, {audience, telling_.limits});
    throw EarlyEnd(summary.status, (audience == Audience::Profile ? "--profile: " : "") + summary.error);
}

Session::Outcome Session::Read(const std::string &input, Pass pass)
{
    JobTask task;
    task.input = input;
    task.makePasses = [&pass](Failure *) { return std::vector{pass}; };
    return Read(std::move(task));
}

Session::Outcome Session::Read(JobTask task, const std::vector<int> &descriptors)
{
    const std::string input = task.input;
    Job job(std::move(task), &engine_);
    if (!job.HasEnded())
        job.Start(descriptors);
    job.Wait();
    return {job.Found(), Tell(input, job.Found())};
}

Summary Session::Summarise(const std::string &input, const Result &result) const
{
    return vxhost::Summarise(input, result, telling_);
}

Summary Session::Tell(const std::string &input, const Result &result)
{
    Summary summary = Summarise(input, result);
    vxhost::Tell(input, result, summary, messages_);
    return summary;
}

} // namespace vxhost
