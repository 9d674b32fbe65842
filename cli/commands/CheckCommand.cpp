#include "cli/commands/CheckCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/OutputNames.h"
#include "cli/options/OutputOptions.h"
#include "cli/options/PictureOptions.h"
#include "cli/options/PreflightLimitsFile.h"
#include "cli/report/StandardStreams.h"
#include "cli/report/Summary.h"
#include "host/reading/Utf8.h"
#include "jobs/PlateRendering.h"
#include "jobs/Rendering.h"
#include "library/FactsJson.h"
#include "library/press/Check.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr const char *kPageOption = "--html";
constexpr Format kPage = {"html", "", "text/html", nullptr, true, nullptr, nullptr};

// Names the pages of all inputs; none where there are to be none.
std::vector<std::string> PageNames(const std::string &pattern, const std::vector<std::string> &inputs)
{
    if (pattern.empty())
        return {};
    std::vector<std::string> names = OutputNames(pattern, inputs, std::vector{&kPage}, kPageOption);
    for (const std::string &name : names) {
        if (!name.ends_with(".html") && !name.ends_with(".htm"))
            throw UsageError(fmt::format("{} {}: html is written: name a .html", kPageOption, pattern));
    }
    return names;
}

// Tells of a document that nothing can be found in.
std::string FailureJson(const std::string &input, const std::string &error)
{
    nlohmann::ordered_json json;
    json["file"] = input;
    json["error"] = error;
    return JsonLine(json);
}

} // namespace

CheckCommand::CheckCommand(CLI::App *command)
{
    command
        ->add_option("--limits", limits_,
                     "a JSON file that says from where on something is found, and how bad it is")
        ->type_name("FILE");
    command
        ->add_option(kPageOption, html_,
                     "write a page too that shows the findings on the picture, and each plate; {stem} and "
                     "{dir} are those of the input")
        ->type_name("PATH");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for pages that are named by a pattern");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost");
    command->add_flag("--json", json_, "one JSON object a document, each on a line of its own");
    AddPictureOptions(&texts_, command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx check poster.vx\n"
                    "  vx check poster.vx --limits newspaper.json --html poster.html\n"
                    "  vx check --json *.vx | jq -r 'select(.errors > 0) | .file'");
}

// Runs in the worker.
Failure CheckCommand::Tell(const std::string &input, Check *check, const OutputFiles &files) const
{
    constexpr size_t kLongest = 4096;
    const std::string text =
        json_ ? JsonLine(check->Json()) : Printable(InputName(input), kLongest) + "\n" + check->Text();
    const Failure failure = SinkFor(files.Descriptor(0))(std::as_bytes(std::span(text)));
    return failure || files.Size() == 1 ? failure : check->WritePage(SinkFor(files.Descriptor(1)));
}

Status CheckCommand::Run(Messages *messages) const
{
    CommonOptions options = common_.Read();
    options.reading.readsTexts = true;
    const std::vector<std::string> pages = PageNames(html_, options.inputs);
    for (const std::string &page : pages) {
        if (!force_)
            CheckKeepsDrawing(html_, page, kPageOption);
    }
    CheckTask checked;
    checked.settings = options.Complete(ReadSettings(texts_));
    checked.makesPage = !pages.empty();
    if (!limits_.empty())
        checked.limits = ReadPreflightLimitsFile(limits_, options.limits.seconds);
    Session session(options, CommandKind::Check, messages);
    Status worst = Status::Done;
    for (size_t i = 0; i < options.inputs.size(); ++i) {
        checked.name = options.inputs[i];
        Check check(checked);
        PlateTask task;
        task.input = checked.name;
        task.settings = checked.settings;
        task.outputs = {"-"};
        task.rules.makesFolders = IsPattern(html_) && !noMkdir_;
        if (!pages.empty()) {
            task.outputs.push_back(pages[i]);
            task.after.emplace_back([&check](Reading &reading) { return check.DrawPicture(reading); });
        }
        const OutputFiles *outputs = nullptr;
        task.makeSink = [&](const OutputFiles &files) {
            outputs = &files;
            return check.MakeSink();
        };
        task.after.emplace_back([&](Reading &reading) {
            Outcome outcome = check.Look(reading);
            if (outcome.result == kVXOk && !outcome.failure)
                outcome.failure = Tell(checked.name, &check, *outputs);
            return outcome;
        });
        PlateRendering rendering(std::move(task), &session.Jobs());
        const Result result = rendering.Finish();
        const Summary summary = session.Tell(checked.name, result);
        worst = Worst(worst, summary.status);
        if (result.outcome.objections > 0)
            worst = Worst(worst, Status::Warned);
        const bool isPrinted = result.fault.kind == FaultKind::None || !json_ ||
                               summary.status == Status::OutputFailed ||
                               PrintResult(FailureJson(checked.name, summary.error), messages);
        if (!isPrinted ||
            (summary.status == Status::OutputFailed && pages.empty())) // nothing more can be printed
            return Worst(worst, Status::OutputFailed);
    }
    return worst;
}

} // namespace vxhost
