#include "cli/batch/Batch.h"

#include "cli/archive/Premis.h"
#include "cli/batch/LookAhead.h"
#include "cli/options/IsDrawing.h"
#include "cli/options/OutputNames.h"
#include "cli/report/ResultJson.h"
#include "cli/report/StandardStreams.h"
#include "cli/report/Times.h"
#include "host/reading/Utf8.h"
#include "jobs/Interrupt.h"
#include "jobs/OutputFile.h"
#include "library/FactsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <limits>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kMaxSlots = 1000;     // documents that are done may wait for one that takes longer
constexpr size_t kMaxWriters = 100000; // outputs
constexpr int kMaxVain = 3;            // how often a document is begun in vain before it is left for last
constexpr std::chrono::milliseconds kShowEvery(100);
constexpr int kThumbnail = 192; // pixels of its longer side

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

std::string ErrorText(const Summary &summary)
{
    return (summary.subject.empty() ? "" : summary.subject + ": ") + summary.error;
}

// Keeps apart names that differ in bytes which are not UTF-8.
std::string Escaped(const std::string &name)
{
    return Printable(name, std::numeric_limits<size_t>::max());
}

std::string TextOf(const FontList &fonts)
{
    std::string text;
    for (int32_t i = 0; i < fonts.Count(); ++i)
        text += fmt::format("{}\n{}\n", fonts.At(i).postScriptName, fonts.At(i).file);
    return text;
}

// Returns whether the file is there, as it was.
bool IsThere(const std::string &path, const FileDigest &was, bool isRead)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           static_cast<uint64_t>(status.st_size) == was.bytes && (!isRead || DigestOfFile(path) == was);
}

} // namespace

Batch::Batch(BatchOptions options, Session *session, Messages *messages)
    : options_(std::move(options)), planner_(options_), session_(session), messages_(messages),
      manifest_(options_.sources, {options_.takesAll, nullptr})
{
    options_.jobs = std::min(options_.jobs, MostRenderings());
    if (!options_.report.empty())
        catalogue_ = std::make_unique<Catalogue>(options_.report);
}

Status Batch::Run()
{
    const std::optional<size_t> documents = LookAhead(options_, planner_, messages_);
    OpenJournal();
    OpenPack();
    if (!options_.bag.empty())
        bag_ = std::make_unique<Bag>(options_.bag);
    if (catalogue_ != nullptr)
        catalogue_->Begin(options_.resuming != Resuming::Nothing);
    (void)clock_gettime(CLOCK_REALTIME_COARSE, &began_); // which is that of file systems
    tally_.Begin(documents, Tally::Clock::now());
    interrupts_ = HoldInterrupts();
    while (true) {
        const bool isDry = StartWhatFits();
        HearInterrupt();
        if (!PrintWhatIsDue())
            return Worst(worst_, Status::OutputFailed);
        if (isDry && IsAtEnd())
            return End();
        if (!isDry && HasRoom())
            continue;
        ShowProgress();
        const bool mayRead = HasRoom() && end_ == BatchEnd::Whole;
        if (Worker::WaitForAny(Workers(), {mayRead ? manifest_.Descriptor() : -1,
                                           HeldInterrupt() == 0 ? interrupts_ : -1}) &&
            HeldInterrupt() == 0)
            manifest_.Read();
        if (HeldInterrupt() != SIGINT)
            FinishWhatEnded();
    }
}

void Batch::OpenJournal()
{
    if (options_.journal.empty())
        return;
    journal_ = std::make_unique<Journal>(options_.journal);
    if (journal_->WasMended())
        messages_->Note(
            fmt::format("--journal {}: its last line was torn, and is taken away", options_.journal));
    if (options_.resuming == Resuming::Nothing && journal_->CountDone() > 0)
        messages_->Note(
            fmt::format("--journal {}: {} documents are done in it, and are done again: --resume passes "
                        "over them",
                        options_.journal, journal_->CountDone()));
    nlohmann::ordered_json with = options_.circumstances;
    const FontList *fonts = session_->Jobs().WaitForFonts();
    with["fonts"] = fonts == nullptr ? "" : DigestOf(TextOf(*fonts));
    with["time"] = TimeText(std::time(nullptr));
    journal_->BeginRun(with);
}

void Batch::OpenPack()
{
    if (options_.pack.empty())
        return;
    for (const std::string &tar : {options_.pack, Pack::PartNameOf(options_.pack)}) {
        for (const std::string &path : {tar, Pack::IndexNameOf(tar)}) {
            const std::string place = PlaceOf(path);
            const char *of = manifest_.Includes(place)                                         ? "a manifest"
                             : !options_.journal.empty() && PlaceOf(options_.journal) == place ? "the journal"
                             : IsDrawing(place)                                                ? "a drawing"
                                                                                               : nullptr;
            if (of != nullptr)
                throw UsageError(
                    fmt::format("--pack {}: would overwrite \"{}\", which is {}: choose another name",
                                options_.pack, path, of));
        }
    }
    std::error_code failure;
    if (options_.makesFolders) // that there is none is told when the tar is made
        std::filesystem::create_directories(std::filesystem::path(PlaceOf(options_.pack)).parent_path(),
                                            failure);
    pack_ = std::make_unique<Pack>(options_.pack, options_.resuming != Resuming::Nothing);
}

// The first interrupt ends the run: at once, or when what is begun is finished.
void Batch::HearInterrupt()
{
    if (HeldInterrupt() == 0 || end_ != BatchEnd::Whole)
        return;
    if (HeldInterrupt() == SIGINT) {
        end_ = BatchEnd::Interrupted;
        std::erase_if(slots_, [](const Slot &slot) { return !slot.summary; });
        running_ = 0;
        return;
    }
    end_ = BatchEnd::Asked;
    messages_->Note(fmt::format("asked to end: {} that {} begun {} finished first",
                                running_ == 1 ? "1 document" : fmt::format("{} documents", running_),
                                running_ == 1 ? "is" : "are", running_ == 1 ? "is" : "are"));
}

bool Batch::IsAtEnd() const
{
    return slots_.empty() && (end_ != BatchEnd::Whole || (manifest_.AtEnd() && later_.empty()));
}

Status Batch::End()
{
    messages_->EraseProgress();
    if (catalogue_ != nullptr)
        catalogue_->Write(numbered_);
    if (end_ == BatchEnd::Asked && manifest_.AtEnd() && later_.empty())
        end_ = BatchEnd::Whole; // there was nothing left to begin
    CloseBag();
    ClosePack();
    const Status status = end_ == BatchEnd::Whole ? worst_ : Status::Interrupted;
    tally_.AddPassedOver(manifest_.PassedOver());
    const Tally::Clock::time_point now = Tally::Clock::now();
    if (options_.summary == SummaryForm::Json)
        (void)WriteAll(STDERR_FILENO, tally_.EndJson(end_, status, now));
    else if (options_.summary == SummaryForm::Text)
        messages_->Note(tally_.EndText(end_, journal_ != nullptr, now));
    return status;
}

bool Batch::HasRoom() const
{
    return running_ < options_.jobs && slots_.size() < kMaxSlots;
}

// Returns true when everything that has been read of the manifests is started.
bool Batch::StartWhatFits()
{
    while (HasRoom()) {
        if (HeldInterrupt() != 0)
            return true;
        std::optional<ManifestEntry> entry = manifest_.Next();
        if (entry && IsOwnOutput(*entry))
            continue;
        if (entry) {
            ++numbered_; // a document has the same number in every shard
            if (options_.shard.Has(*entry))
                Start(numbered_, std::move(*entry));
        } else if (!manifest_.AtEnd()) {
            if (manifest_.Descriptor() >= 0)
                return true;
            manifest_.Read();
        } else if (!later_.empty()) {
            isLater_ = true;
            auto [number, next] = std::move(later_.front());
            later_.pop_front();
            Start(number, std::move(next));
        } else {
            return true;
        }
    }
    return false;
}

// Returns whether the entry is what this run put into a folder before it was looked through.
bool Batch::IsOwnOutput(const ManifestEntry &entry) const
{
    return options_.takesAll && !entry.relative.empty() &&
           writers_.contains(std::hash<std::string>()(PlaceOf(entry.input)));
}

void Batch::Start(size_t number, ManifestEntry entry)
{
    Slot &slot = slots_.emplace_back();
    slot.number = number;
    slot.entry = std::move(entry);
    slot.began = Tally::Clock::now();
    std::optional<RenderTask> task;
    try {
        if (!slot.entry.error.empty())
            throw UsageError(slot.entry.error);
        task = PlanFor(&slot);
    } catch (const OptionError &error) {
        const bool hasLine = slot.entry.line > 0;
        slot.summary.emplace();
        slot.summary->status = Status::InputFailed;
        slot.summary->error =
            hasLine ? fmt::format("line {}: {}", slot.entry.line, error.what()) : error.what();
        if (!slot.entry.manifest.empty())
            slot.summary->subject = InputName(slot.entry.manifest);
    }
    if (task)
        StartTask(std::move(*task));
}

// Starts what is planned for the last slot.
void Batch::StartTask(RenderTask task)
{
    Slot &slot = slots_.back();
    if (IsForLater(slot)) {
        messages_->Warning(InputName(slot.entry.input),
                           fmt::format("was begun {} times and never done: is left for last",
                                       journal_->BegunInVain(slot.job)));
        later_.emplace_back(slot.number, std::move(slot.entry));
        slots_.pop_back();
        return;
    }
    if (WasDone(task, &slot))
        return;
    if (journal_ != nullptr)
        journal_->Begin(slot.job, slot.entry.input);
    if (catalogue_ != nullptr) // first: what is told is what was found for the last
        task.outputs.insert(task.outputs.begin(), ThumbnailFor(slot, task.settings));
    if (pack_ != nullptr) {
        slot.unpacked = std::make_shared<std::deque<Unpacked>>();
        for (RenderTask::Output &output : task.outputs) {
            output.take = [to = slot.unpacked, name = output.path](int descriptor) {
                Unpacked &unpacked = to->emplace_back();
                unpacked.name = name;
                unpacked.file.Take(fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
            };
        }
    }
    slot.rendering = std::make_unique<Rendering>(std::move(task), &session_->Jobs());
    ++running_;
    if (slot.rendering->AwaitedWorker() == nullptr)
        FinishWhatEnded();
}

// Throws UsageError when the entry asks for what cannot be done.
RenderTask Batch::PlanFor(Slot *slot)
{
    const ManifestEntry &entry = slot->entry;
    const bool needsDigest = planner_.NeedsDigest(entry);
    if (needsDigest || journal_ != nullptr || options_.writesPremis)
        slot->digest = DigestOfFile(entry.input);
    // A journal keeps what is wrong with a document as well.
    if (needsDigest && !slot->digest.error.empty())
        throw OptionError(slot->digest.error);
    RenderTask task = planner_.TaskFor(entry, slot->number, slot->digest.digest);
    for (const RenderTask::Output &output : task.outputs)
        slot->formats.push_back(output.format);
    const std::string options = planner_.OptionsTextOf(entry);
    ClaimOutputs(&task, slot, needsDigest ? ShortDigestOf(slot->digest.digest + options) : 0);
    slot->job = JobOf(*slot, task);
    return task;
}

// The journal knows nothing of it: whether there is a catalogue decides over no other output.
RenderTask::Output Batch::ThumbnailFor(const Slot &slot, const Settings &settings) const
{
    auto own = std::make_shared<Settings>(settings);
    own->png.fit = kThumbnail;
    own->png.background = RasterOptions().background;
    return {FindFormat("png"), catalogue_->ThumbnailOf(slot.number), nullptr, own};
}

// Returns what stands in the journal for the document, its outputs, and all that decides over them but its bytes.
uint64_t Batch::JobOf(const Slot &slot, const RenderTask &task) const
{
    if (journal_ == nullptr)
        return 0;
    nlohmann::ordered_json job = {options_.circumstances, Escaped(slot.entry.input),
                                  planner_.OptionsTextOf(slot.entry)};
    for (const RenderTask::Output &output : task.outputs)
        job.push_back(Escaped(output.path));
    return ShortDigestOf(JsonLine(job));
}

bool Batch::IsForLater(const Slot &slot) const
{
    return options_.resuming != Resuming::Nothing && !isLater_ && journal_->BegunInVain(slot.job) >= kMaxVain;
}

// Returns whether an earlier run did all of it. The slot then has what became of it.
bool Batch::WasDone(const RenderTask &task, Slot *slot) const
{
    if (options_.resuming == Resuming::Nothing)
        return false;
    std::optional<JournalEntry> done = journal_->Find(slot->job);
    if (!done || done->digest != FileDigest{slot->digest.digest, slot->digest.bytes, ""})
        return false;
    if (done->isPassedOver && options_.takesAll)
        return false;
    slot->isPassedOver = done->isPassedOver;
    Summary summary;
    summary.status = done->status;
    summary.error = std::move(done->error);
    summary.warnings = std::move(done->warnings);
    if (summary.IsDone() ? !AreThere(*done, task) || !HasRecords(task)
                         : options_.retriesFailed && !done->isPassedOver)
        return false;
    // A document that the catalogue lacks is drawn for it.
    if (summary.IsDone() && catalogue_ != nullptr && !catalogue_->Has(slot->number, slot->entry.input))
        return false;
    for (size_t i = 0; i < done->outputs.size(); ++i) {
        slot->result.written.push_back(task.outputs[i].path);
        slot->outputs.push_back({task.outputs[i].path, done->outputs[i].digest});
    }
    slot->summary = std::move(summary);
    slot->wasDoneBefore = true;
    return true;
}

// Returns whether the outputs are where they would be written now, as they were.
bool Batch::AreThere(const JournalEntry &done, const RenderTask &task) const
{
    if (done.outputs.size() != task.outputs.size())
        return false;
    const bool isRead = options_.resuming == Resuming::ByDigest;
    for (size_t i = 0; i < task.outputs.size(); ++i) {
        const std::string &path = task.outputs[i].path;
        const FileDigest &was = done.outputs[i].digest;
        if (pack_ != nullptr ? !pack_->Has(path, was, isRead) : !IsThere(path, was, isRead))
            return false;
    }
    return true;
}

// Returns whether all that is to stand beside the outputs does.
bool Batch::HasRecords(const RenderTask &task) const
{
    return !options_.writesPremis ||
           std::ranges::all_of(task.outputs, [this](const RenderTask::Output &output) {
               const std::string name = PremisNameOf(output.path);
               return pack_ != nullptr ? pack_->Has(name) : access(name.c_str(), F_OK) == 0;
           });
}

// Throws UsageError when nothing may be written to the path. It looks at the path's place: "none/../a.vx" leads nowhere, and
// is written to "a.vx" all the same.
void Batch::CheckOutput(const std::string &path, const std::string &place) const
{
    if (path == "-" || (options_.pack.empty() && IsOpenAs(STDOUT_FILENO, place)))
        throw UsageError(
            fmt::format("\"{}\" is standard output, which is for the results: name a file", path));
    if (!options_.pack.empty()) // members overwrite nothing
        return;
    if (manifest_.Includes(place))
        throw UsageError(fmt::format("would overwrite the manifest \"{}\": choose another name", path));
    if (!options_.journal.empty() && IsSameFile(options_.journal, place))
        throw UsageError(fmt::format("would overwrite the journal \"{}\": choose another name", path));
    if (!options_.bag.empty() && !LiesIn(Bag::DataFolderOf(options_.bag), path))
        throw UsageError(
            fmt::format("would be written to \"{}\", outside of the bag: name its folder with -o, as {}",
                        place, Bag::DataFolderOf(options_.bag) + "/"));
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
        const std::string place = planner_.PlaceOfOutput(output.path);
        CheckOutput(output.path, place);
        places.push_back(std::hash<std::string>()(place));
        const auto writer = writers_.find(places.back());
        const bool isOwn = std::count(places.begin(), places.end(), places.back()) > 1;
        // One that was left for last has claimed its outputs before.
        const bool hasOther = writer != writers_.end() && writer->second.number != slot->number;
        const bool isTaken = hasOther && (content == 0 || writer->second.content != content);
        if (isOwn || isTaken)
            throw UsageError(fmt::format(
                "would be written to \"{}\", as {} is: name each after its input and its "
                "format, as '{{dir}}/{{stem}}.{{ext}}'",
                output.path,
                isOwn ? "another of its formats" : fmt::format("document {}", writer->second.number)));
        if (hasOther)
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
        if (catalogue_ != nullptr)
            slot.hasThumbnail = std::erase(slot.result.written, catalogue_->ThumbnailOf(slot.number)) > 0;
        // A packed file is known for a drawing, or for none, only now.
        slot.isPassedOver = !slot.entry.relative.empty() && !options_.takesAll &&
                            slot.result.fault.kind == FaultKind::NotADrawing;
        if (slot.summary->IsDone())
            Record(&slot);
        slot.unpacked.reset();
        if (journal_ != nullptr)
            Enter(slot);
    }
}

// Packs the outputs, keeps their digests where somebody asks for them, and writes what is to stand beside each.
void Batch::Record(Slot *slot)
{
    if (journal_ == nullptr && bag_ == nullptr && pack_ == nullptr && !options_.writesPremis)
        return;
    std::string problem = TakeOutputs(slot);
    for (size_t i = 0; i < slot->outputs.size() && options_.writesPremis && problem.empty(); ++i) {
        const std::string &path = slot->outputs[i].path;
        const PremisRecord record = {
            slot->entry.input,       slot->digest,     path,
            slot->outputs[i].digest, slot->formats[i], planner_.OptionsTextOf(slot->entry),
            slot->summary->warnings, StatedTime()};
        if (pack_ == nullptr)
            problem = WritePremis(record);
        else if (problem = WhyNoPremis(record); problem.empty())
            problem = pack_->Add(PremisNameOf(path), PremisXml(record), slot->entry.input);
    }
    if (problem.empty())
        return;
    slot->summary->status = Status::OutputFailed;
    slot->summary->error = problem;
}

// Returns why an output cannot be packed; empty: all are where they belong.
std::string Batch::TakeOutputs(Slot *slot)
{
    for (const std::string &path : slot->result.written)
        slot->outputs.push_back({path, DigestOfFile(path)});
    if (slot->unpacked == nullptr)
        return "";
    for (const Unpacked &output : *slot->unpacked) {
        const FileDigest digest = DigestOfDescriptor(output.file.Get());
        if (std::string problem = pack_->Add(output.name, output.file.Get(), digest, slot->entry.input);
            !problem.empty())
            return problem;
        slot->outputs.push_back({output.name, digest});
        slot->result.written.push_back(output.name);
    }
    return "";
}

// Enters what became of a document into the journal.
void Batch::Enter(const Slot &slot)
{
    JournalEntry entry;
    entry.number = slot.number;
    entry.input = slot.entry.input;
    entry.digest = slot.digest;
    entry.outputs = slot.outputs;
    entry.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Tally::Clock::now() - slot.began).count();
    entry.status = slot.summary->status;
    entry.error = ErrorText(*slot.summary);
    entry.warnings = slot.summary->warnings;
    entry.isPassedOver = slot.isPassedOver;
    journal_->Finish(slot.job, entry);
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
    for (auto slot = slots_.begin(); slot != slots_.end();) {
        if (!slot->summary && !options_.isUnordered)
            return true;
        if (!slot->summary) {
            ++slot;
            continue;
        }
        if (!Print(*slot))
            return false;
        slot = slots_.erase(slot);
    }
    return true;
}

bool Batch::Print(const Slot &slot)
{
    if (slot.isPassedOver) {
        tally_.TakeBack();
        return true;
    }
    const ManifestEntry &entry = slot.entry;
    const Summary &summary = *slot.summary;
    if (!slot.wasDoneBefore)
        Tell(entry.input, slot.result, summary, messages_);
    if (slot.sharesWith > 0 && summary.IsDone() && !slot.wasDoneBefore)
        messages_->Warning(InputName(entry.input),
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
    if (slot.wasDoneBefore)
        json["doneBefore"] = true;
    json["status"] = NameOf(summary.status);
    json["exit"] = static_cast<int>(summary.status);
    if (!summary.error.empty())
        json["error"] = ErrorText(summary);
    json["warnings"] = summary.warnings;
    if (slot.result.isRead)
        AddResult(slot.result, &json);
    if (bag_ != nullptr && summary.IsDone() && slot.sharesWith == 0)
        AddToBag(slot);
    tally_.Add(summary, slot.wasDoneBefore);
    worst_ = Worst(worst_, summary.status);
    if (catalogue_ != nullptr && !(slot.wasDoneBefore && summary.IsDone()))
        catalogue_->Add(slot.number, json, slot.hasThumbnail);
    return PrintResult(Joined(JsonLine(named), entry.id, JsonLine(json)), messages_);
}

void Batch::AddToBag(const Slot &slot)
{
    for (const JournalOutput &output : slot.outputs) {
        bag_->Add(output.path, output.digest);
        if (options_.writesPremis)
            bag_->Add(PremisNameOf(output.path), DigestOfFile(PremisNameOf(output.path)));
    }
}

void Batch::CloseBag()
{
    if (bag_ == nullptr)
        return;
    if (end_ != BatchEnd::Whole) {
        messages_->Note(
            fmt::format("--bag {}: is no bag yet: it is one when all documents are done", options_.bag));
        return;
    }
    if (const uint64_t others = bag_->Close(); others > 0)
        messages_->Warning(
            "",
            fmt::format("--bag {}: {} in \"data\" {} not of this run, and {} in no manifest: take "
                        "{} away",
                        options_.bag, others == 1 ? "1 file" : fmt::format("{} files", others),
                        others == 1 ? "is" : "are", others == 1 ? "is" : "are", others == 1 ? "it" : "them"));
}

void Batch::ClosePack()
{
    if (pack_ == nullptr)
        return;
    if (end_ == BatchEnd::Whole) {
        pack_->Close();
        return;
    }
    if (journal_ == nullptr)
        pack_->GiveUp();
    messages_->Note(fmt::format("--pack {}: is not whole yet{}", options_.pack,
                                journal_ == nullptr
                                    ? ", and nothing is left of it: with --journal it can be gone on with"
                                    : ": what is done is in \"" + Pack::PartNameOf(options_.pack) + '"'));
}

void Batch::ShowProgress()
{
    const Tally::Clock::time_point now = Tally::Clock::now();
    if (now - shown_ < kShowEvery)
        return;
    shown_ = now;
    messages_->Progress(tally_.ProgressText(now));
}

} // namespace vxhost
