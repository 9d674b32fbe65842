#include "cli/commands/Batch.h"

#include "cli/options/IsDrawing.h"
#include "cli/options/OutputNames.h"
#include "cli/report/ResultJson.h"
#include "cli/report/StandardStreams.h"
#include "jobs/OutputFile.h"
#include "library/FactsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kMaxSlots = 1000; // documents that are done may wait for one that takes longer

std::string_view NameOf(Status status)
{
    switch (status) {
    case Status::Done:
        return "done";
    case Status::Warned:
        return "warned";
    case Status::OutputFailed:
        return "not written";
    case Status::LimitHit:
        return "limit";
    case Status::WorkerCrashed:
        return "crashed";
    default:
        return "failed";
    }
}

// Joins two objects, each a line, to one, with the id between them as it was written: a number of ours would change it.
std::string Joined(std::string_view first, std::string_view id, std::string_view rest)
{
    return fmt::format("{},{}{}", first.substr(0, first.rfind('}')),
                       id.empty() ? "" : fmt::format("\"id\":{},", id), rest.substr(1));
}

} // namespace

Batch::Batch(BatchOptions options, Session *session, Messages *messages)
    : options_(std::move(options)), session_(session), messages_(messages),
      manifest_(options_.sources, options_.lineEnd)
{
    options_.jobs = std::min(options_.jobs, MostRenderings());
}

Status Batch::Run()
{
    while (true) {
        const bool isDry = StartWhatFits();
        if (!PrintWhatIsDue())
            return Worst(worst_, Status::OutputFailed);
        if (isDry && slots_.empty() && manifest_.AtEnd()) {
            messages_->EraseProgress();
            return worst_;
        }
        if (!isDry && HasRoom())
            continue;
        ShowProgress();
        if (Worker::WaitForAny(Workers(), HasRoom() ? manifest_.Descriptor() : -1))
            manifest_.Read();
        FinishWhatEnded();
    }
}

bool Batch::HasRoom() const
{
    return running_ < options_.jobs && slots_.size() < kMaxSlots;
}

// Returns true when everything that has been read of the manifests is started.
bool Batch::StartWhatFits()
{
    while (HasRoom()) {
        std::optional<ManifestEntry> entry = manifest_.Next();
        if (entry)
            Start(std::move(*entry));
        else if (manifest_.AtEnd() || manifest_.Descriptor() >= 0)
            return true;
        else
            manifest_.Read();
    }
    return false;
}

void Batch::Start(ManifestEntry entry)
{
    Slot &slot = slots_.emplace_back();
    slot.number = ++started_;
    slot.entry = std::move(entry);
    try {
        if (!slot.entry.error.empty())
            throw UsageError(slot.entry.error);
        slot.rendering = std::make_unique<Rendering>(PlanFor(slot), &session_->Jobs());
        ++running_;
    } catch (const OptionError &error) {
        const bool hasLine = slot.entry.line > 0;
        slot.summary.emplace();
        slot.summary->status = Status::InputFailed;
        slot.summary->error =
            hasLine ? fmt::format("line {}: {}", slot.entry.line, error.what()) : error.what();
        if (!slot.entry.manifest.empty())
            slot.summary->subject = InputName(slot.entry.manifest);
    }
    if (slot.rendering != nullptr && slot.rendering->AwaitedWorker() == nullptr)
        FinishWhatEnded();
}

// Throws UsageError when the entry asks for what cannot be done.
RenderTask Batch::PlanFor(const Slot &slot)
{
    const ManifestEntry &entry = slot.entry;
    const std::string &pattern = entry.output.empty() ? options_.output : entry.output;
    if (pattern.empty())
        throw UsageError("no output: add \"output\" to the line, or give -o");
    const OutputOptions said = options_.outputOptions.OverriddenBy(entry.outputOptions);
    // The name of a line's own output goes before the format that the command gives for all.
    const bool namesFormat = entry.outputOptions.format.empty() && FormatOfName(entry.output) != nullptr;
    const FormatList formats = ReadFormats(namesFormat ? "" : said.format, pattern);
    // An option of the line that means nothing for its formats is refused; one of the command is passed over.
    OptionTexts meant = entry.outputOptions.texts;
    if (std::ranges::find(formats, FindFormat("pdf")) != formats.end())
        meant.Set("pdf-x", said.texts.Of("pdf-x"));
    meant.CheckMeant(SetOf(formats));

    RenderTask task;
    task.input = entry.input;
    task.kinds = FileKinds::Regular;
    task.settings = entry.outputOptions == OutputOptions() ? options_.settings : ReadSettings(said.texts);
    task.settings.png.memoryLimit = options_.settings.png.memoryLimit;
    for (const Format *format : formats)
        task.outputs.push_back({format, FillPattern(pattern, entry.input, *format)});
    ClaimOutputs(task, slot.number);
    return task;
}

// Throws UsageError when nothing may be written to the path. It looks at the path's place: "none/../a.vx" leads nowhere, and
// is written to "a.vx" all the same.
void Batch::CheckOutput(const std::string &path, const std::string &place) const
{
    if (path == "-" || IsOpenAs(STDOUT_FILENO, place))
        throw UsageError(
            fmt::format("\"{}\" is standard output, which is for the results: name a file", path));
    if (manifest_.Includes(place))
        throw UsageError(fmt::format("would overwrite the manifest \"{}\": choose another name", path));
    const std::string folder = FolderOf(options_.output);
    if (!options_.allowOutside && !LiesIn(folder, path))
        throw UsageError(fmt::format("would be written to \"{}\", outside of {}: name its folder with -o, or "
                                     "add --allow-outside",
                                     place, folder == "." ? "the working folder" : '"' + folder + '"'));
    if (IsDrawing(place))
        throw UsageError(fmt::format("would overwrite the drawing \"{}\": choose another name", path));
}

void Batch::ClaimOutputs(const RenderTask &task, size_t number)
{
    std::vector<uint64_t> places;
    for (const RenderTask::Output &output : task.outputs) {
        const std::string place = PlaceOf(output.path);
        CheckOutput(output.path, place);
        places.push_back(std::hash<std::string>()(place));
        const auto writer = writers_.find(places.back());
        const bool isOwn = std::count(places.begin(), places.end(), places.back()) > 1;
        if (isOwn || writer != writers_.end())
            throw UsageError(fmt::format(
                "would be written to \"{}\", as {} is: name each after its input and its "
                "format, as '{{dir}}/{{stem}}.{{ext}}'",
                output.path, isOwn ? "another of its formats" : fmt::format("document {}", writer->second)));
    }
    for (const uint64_t place : places)
        writers_.emplace(place, number);
}

void Batch::FinishWhatEnded()
{
    for (Slot &slot : slots_) {
        if (slot.rendering == nullptr)
            continue;
        const Worker *worker = slot.rendering->AwaitedWorker();
        if (worker != nullptr && !worker->HasEnded())
            continue;
        slot.rendering->GoOn();
        if (!slot.rendering->HasEnded())
            continue;
        slot.result = slot.rendering->Finish();
        slot.summary = session_->Summarise(slot.entry.input, slot.result);
        slot.rendering.reset();
        --running_;
    }
}

std::vector<Worker *> Batch::Workers() const
{
    std::vector<Worker *> workers;
    for (const Slot &slot : slots_) {
        Worker *worker = slot.rendering == nullptr ? nullptr : slot.rendering->AwaitedWorker();
        // Several may wait for the one that lists fonts.
        if (worker != nullptr && std::ranges::find(workers, worker) == workers.end())
            workers.push_back(worker);
    }
    return workers;
}

// Returns false when results can no longer be written.
bool Batch::PrintWhatIsDue()
{
    for (; !slots_.empty() && slots_.front().summary; slots_.pop_front()) {
        const Slot &slot = slots_.front();
        const ManifestEntry &entry = slot.entry;
        const Summary &summary = *slot.summary;
        Tell(entry.input, slot.result, summary, messages_);

        nlohmann::ordered_json named;
        named["number"] = slot.number;
        if (!entry.manifest.empty()) {
            named["manifest"] = entry.manifest;
            named["line"] = entry.line;
        }
        nlohmann::ordered_json json;
        if (entry.input.empty())
            json["input"] = nullptr;
        else
            json["input"] = entry.input;
        json["outputs"] = slot.result.written;
        json["status"] = NameOf(summary.status);
        json["exit"] = static_cast<int>(summary.status);
        if (!summary.error.empty())
            json["error"] = (summary.subject.empty() ? "" : summary.subject + ": ") + summary.error;
        json["warnings"] = summary.warnings;
        if (slot.result.isRead)
            AddResult(slot.result, &json);
        if (!PrintResult(Joined(JsonLine(named), entry.id, JsonLine(json)), messages_))
            return false;
        ++printed_;
        failed_ += summary.IsDone() ? 0 : 1;
        worst_ = Worst(worst_, summary.status);
    }
    return true;
}

void Batch::ShowProgress()
{
    messages_->Progress(fmt::format("{} done, {} failed, {} at work", printed_ - failed_, failed_, running_));
}

} // namespace vxhost
