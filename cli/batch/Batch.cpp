#include "cli/batch/Batch.h"

#include "cli/batch/LookAhead.h"
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

constexpr size_t kMaxSlots = 1000;     // documents that are done may wait for one that takes longer
constexpr size_t kMaxWriters = 100000; // outputs

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
    : options_(std::move(options)), planner_(options_), session_(session), messages_(messages),
      manifest_(options_.sources, {options_.takesAll, nullptr})
{
    options_.jobs = std::min(options_.jobs, MostRenderings());
}

Status Batch::Run()
{
    total_ = LookAhead(options_, planner_, messages_);
    (void)clock_gettime(CLOCK_REALTIME_COARSE, &began_); // which is that of file systems
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
        if (entry && !IsOwnOutput(*entry))
            Start(std::move(*entry));
        else if (entry)
            continue;
        else if (manifest_.AtEnd() || manifest_.Descriptor() >= 0)
            return true;
        else
            manifest_.Read();
    }
    return false;
}

// Returns whether the entry is what this run put into a folder before it was looked through.
bool Batch::IsOwnOutput(const ManifestEntry &entry) const
{
    return options_.takesAll && !entry.relative.empty() &&
           writers_.contains(std::hash<std::string>()(PlaceOf(entry.input)));
}

void Batch::Start(ManifestEntry entry)
{
    Slot &slot = slots_.emplace_back();
    slot.number = ++started_;
    slot.entry = std::move(entry);
    try {
        if (!slot.entry.error.empty())
            throw UsageError(slot.entry.error);
        slot.rendering = std::make_unique<Rendering>(PlanFor(&slot), &session_->Jobs());
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
RenderTask Batch::PlanFor(Slot *slot)
{
    const ManifestEntry &entry = slot->entry;
    const bool needsDigest = planner_.NeedsDigest(entry);
    if (needsDigest)
        slot->digest = DigestOfFile(entry.input);
    if (!slot->digest.error.empty())
        throw OptionError(slot->digest.error);
    RenderTask task = planner_.TaskFor(entry, slot->number, slot->digest.digest);
    ClaimOutputs(&task, slot,
                 needsDigest ? ShortDigestOf(slot->digest.digest + planner_.OptionsTextOf(entry)) : 0);
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

// content stands for what is drawn, where that names the outputs; else 0.
void Batch::ClaimOutputs(RenderTask *task, Slot *slot, uint64_t content)
{
    std::vector<uint64_t> places;
    for (const RenderTask::Output &output : task->outputs) {
        const std::string place = PlaceOf(output.path);
        CheckOutput(output.path, place);
        places.push_back(std::hash<std::string>()(place));
        const auto writer = writers_.find(places.back());
        const bool isOwn = std::count(places.begin(), places.end(), places.back()) > 1;
        const bool isTaken = writer != writers_.end() && (content == 0 || writer->second.content != content);
        if (isOwn || isTaken)
            throw UsageError(fmt::format(
                "would be written to \"{}\", as {} is: name each after its input and its "
                "format, as '{{dir}}/{{stem}}.{{ext}}'",
                output.path,
                isOwn ? "another of its formats" : fmt::format("document {}", writer->second.number)));
        if (writer != writers_.end())
            slot->sharesWith = writer->second.number;
    }
    if (writers_.size() < kMaxWriters) {
        for (const uint64_t place : places)
            writers_.try_emplace(place, Writer{slot->number, content});
    } else if (content == 0) {
        task->rules.onceSince = began_;
    }
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
        // What is packed is known for a drawing, or for none, only now.
        slot.isPassedOver = !slot.entry.relative.empty() && !options_.takesAll &&
                            slot.result.fault.kind == FaultKind::NotADrawing;
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
        if (slot.isPassedOver) {
            ++passedOver_;
            continue;
        }
        Tell(entry.input, slot.result, summary, messages_);
        if (slot.sharesWith > 0 && summary.IsDone())
            messages_->Warning(
                InputName(entry.input),
                fmt::format("is equal to document {}, and shares its output", slot.sharesWith));

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
        if (slot.sharesWith > 0)
            json["sharesWith"] = slot.sharesWith;
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
