#include "cli/Session.h"

#include "cli/Decimal.h"
#include "cli/MallocHandler.h"
#include "cli/OutcomeJson.h"
#include "cli/OutputFile.h"
#include "cli/Sandbox.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Utf8.h"
#include "library/LinkedPlugin.h"
#include "library/Values.h"
#include "library/Warnings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <new>
#include <set>
#include <string_view>
#include <unistd.h>
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

std::string ResultError(const Finding &finding, const Purpose &purpose, const std::string &input, size_t size)
{
    const Outcome &outcome = finding.outcome;
    switch (outcome.result) {
    case kVXOk:
        return "";
    case kVXStoppedByUser:
        return fmt::format("no font \"{}\"{}: install it, or go without --missing-fonts fail",
                           outcome.lackedFont, purpose.lost);
    case kVXBadFormat:
        if (!outcome.headerAccepted)
            return WhyRefused(finding.header, size, !purpose.isBatch) +
                   (purpose.isBatch && size > 0 && !finding.header.hasPrefix && !finding.header.epsWrapper
                        ? ", manifests come with --manifest"
                        : "");
        return fmt::format("malformed near byte {} of {}{}: {}", outcome.bytesRead, size, purpose.lost,
                           purpose.isTrace ? std::string("the last calls above come just before it")
                                           : fmt::format("vx trace {} shows how far it got", input));
    default:
        return fmt::format("the plug-in gave result {}{}: see whether --plugin names the right one",
                           outcome.result, purpose.lost);
    }
}

std::string OutOfMemoryError(const Purpose &purpose, const WorkerLimits &limits)
{
    const int64_t limit = limits.memory;
    if (const std::string_view callers = CallersMemoryLimit(limits); !callers.empty())
        return fmt::format("needs more memory than {} allows{}: allow more where vx is started", callers,
                           purpose.lost);
    if (limit == 0)
        return fmt::format("needs more memory than there is{}: close other programs", purpose.lost);
    return fmt::format("needs more than {} of memory{}: allow more with --max-memory", SizeText(limit),
                       purpose.lost);
}

constexpr double kLeastSeconds = 0.001;

std::string FontHelp(const Purpose &purpose, const std::string &input)
{
    return "install it, or " + (purpose.isFonts ? "choose another with --font-map" : "see vx fonts " + input);
}

// Fontconfig leaves out what it has no memory for, and a document would be drawn with other fonts.
std::unique_ptr<FontList> ListFonts(const FontSources &sources)
{
    const uint64_t before = CountFailedMallocs();
    std::unique_ptr<FontList> fonts = MakeFontconfigFonts(sources);
    if (CountFailedMallocs() != before)
        throw std::bad_alloc();
    return fonts;
}

// A font that the user chose and that is not there is a mistake of the user's.
void CheckServed(const FontChoice &choice, const FontList &fonts)
{
    std::set<std::string_view> names;
    for (int32_t i = 0; i < fonts.Count(); ++i)
        names.insert(fonts.At(i).postScriptName);
    for (const auto &[asked, font] : choice.served) {
        if (!names.contains(font))
            throw UsageError(fmt::format("--font-map: no font \"{}\" to serve \"{}\": vx fonts --list shows "
                                         "those that there are",
                                         font, asked));
    }
}

// Font files are opened when they are first drawn with, when the worker is confined already.
std::vector<std::string> FoldersOf(const FontList &fonts)
{
    std::set<std::string> folders;
    for (int32_t i = 0; i < fonts.Count(); ++i)
        folders.insert(fs::path(fonts.At(i).file).parent_path().string());
    return {folders.begin(), folders.end()};
}

bool HasFailed(const Finding &finding)
{
    return finding.outcome.result != kVXOk || finding.outcome.failure;
}

} // namespace

Verdict Failed(Status status, std::string error)
{
    Verdict verdict;
    verdict.status = status;
    verdict.error = std::move(error);
    return verdict;
}

std::string InputName(const std::string &input)
{
    return input == "-" ? "standard input" : input;
}

std::string OutputName(const std::string &output)
{
    return output == "-" ? "standard output" : output;
}

Session::Session(const CommonOptions &options, Messages *messages) : options_(options), messages_(messages)
{
    messages_->SetVerbosity(options.verbosity);
    messages_->ShowProgress(options.showProgress);
    installation_.plugin = options.plugin.empty() ? MakeLinkedPlugin() : LoadPlugin(options.plugin);
    messages_->Detail("", fmt::format("plug-in {}", options.plugin.empty() ? "built in" : options.plugin));
    installation_.fonts = ListFonts(options.fonts.sources);
    CheckServed(options.fonts, Fonts());
    fontFolders_ = FoldersOf(Fonts());
}

Verdict Session::Interpret(const std::string &input, const Purpose &purpose, const Work &work)
{
    Verdict verdict;
    if (std::unique_ptr<Document> document = Open(input, FileKinds::All, &verdict)) {
        const auto prepare = [&work](Finding *) { return std::vector<Work>{work}; };
        const auto interpretation = Begin(input, purpose, std::move(document), prepare, {}, &verdict);
        if (interpretation != nullptr) {
            Worker *worker = interpretation->worker.get();
            (void)Worker::WaitForAny({&worker, 1});
            verdict = End(interpretation.get());
        }
    }
    Tell(input, verdict);
    return verdict;
}

std::unique_ptr<Document> Session::Open(const std::string &input, FileKinds kinds, Verdict *verdict) const
{
    // What a pipe delivers is held in memory, so it counts.
    const WorkerLimits &limits = options_.limits;
    DocumentLimits most = {kinds, {std::numeric_limits<size_t>::max(), limits.seconds}};
    if (limits.memory > 0)
        most.reading.bytes = static_cast<size_t>(limits.memory);
    std::string error;
    ReadEnd end = ReadEnd::Whole;
    std::unique_ptr<Document> document =
        input == "-" ? Document::FromDescriptor(STDIN_FILENO, &error, most.reading, &end)
                     : Document::Open(input, &error, most, &end);
    if (document != nullptr)
        return document;
    if (!error.empty())
        *verdict = Failed(Status::InputFailed, error);
    else if (end == ReadEnd::TooLate)
        *verdict = Failed(Status::LimitHit, fmt::format("not read to its end after {} s: allow more with "
                                                        "--max-time, or see what writes it",
                                                        Decimal(limits.seconds)));
    else
        *verdict = Failed(Status::LimitHit,
                          fmt::format("is longer than the {} of memory that it may take: allow more "
                                      "with --max-memory, or name a file",
                                      SizeText(limits.memory)));
    return nullptr;
}

std::unique_ptr<Interpretation> Session::Begin(const std::string &input, const Purpose &purpose,
                                               std::unique_ptr<Document> document, const Preparation &prepare,
                                               const std::vector<int> &descriptors, Verdict *verdict)
{
    WorkerLimits limits = options_.limits.For(document->Bytes().size());
    if (limits.seconds > 0) // of which reading took some; 0 would be no limit
        limits.seconds = std::max(limits.seconds - document->SecondsRead(), kLeastSeconds);
    std::string error;
    std::unique_ptr<Worker> worker = Worker::Start(
        limits, descriptors, TaskFor(*document, prepare),
        [this, name = InputName(input)](int percent) { messages_->Progress(name, percent); }, &error);
    if (worker == nullptr) {
        *verdict = Failed(Status::InputFailed, fmt::format("no worker process, {}: try again later", error));
        return nullptr;
    }
    return std::make_unique<Interpretation>(
        Interpretation{input, purpose, std::move(document), limits, std::move(worker)});
}

Verdict Session::End(Interpretation *interpretation) const
{
    const Purpose &purpose = interpretation->purpose;
    const WorkerEnd end = interpretation->worker->TakeEnd();
    if ((end.fate == WorkerFate::Finished || end.fate == WorkerFate::Crashed) &&
        interpretation->document->HasChanged())
        return Failed(
            Status::InputFailed,
            fmt::format("changed while it was read{}: try again when nothing writes to it", purpose.lost));
    switch (end.fate) {
    case WorkerFate::OutOfTime:
        return Failed(Status::LimitHit, fmt::format("not done after {} s{}: allow more with --max-time",
                                                    Decimal(options_.limits.seconds), purpose.lost));
    case WorkerFate::OutOfMemory:
        return Failed(Status::LimitHit, OutOfMemoryError(purpose, options_.limits));
    case WorkerFate::Killed:
        return Failed(Status::LimitHit,
                      fmt::format("the worker process was killed, as the system does when memory runs out{}: "
                                  "close other programs, or allow it less with --max-memory",
                                  purpose.lost));
    case WorkerFate::OutOfProcessorTime:
        return Failed(Status::LimitHit,
                      fmt::format("needs more processor time than ulimit -t allows{}: allow "
                                  "more where vx is started",
                                  purpose.lost));
    case WorkerFate::Crashed:
        return Failed(Status::WorkerCrashed,
                      fmt::format("the worker process crashed, {}{}: keep the document and report it",
                                  end.detail, purpose.lost));
    case WorkerFate::Finished:
        break;
    }
    try {
        return Judge(*interpretation, nlohmann::json::from_cbor(end.answer).get<Finding>());
    } catch (const nlohmann::json::exception &) {
        return Failed(Status::WorkerCrashed,
                      fmt::format("the worker process answered nonsense{}: keep the document and report it",
                                  purpose.lost));
    }
}

void Session::Tell(const std::string &input, const Verdict &verdict)
{
    messages_->EraseProgress();
    for (const std::string &warning : verdict.warnings)
        messages_->Warning(InputName(input), warning);
    if (!verdict.error.empty())
        messages_->Error(verdict.errorSubject.empty() ? InputName(input) : verdict.errorSubject,
                         verdict.error);
    const Counts &counts = verdict.finding.outcome.counts;
    for (const std::string &output : verdict.written)
        messages_->Detail(OutputName(output),
                          fmt::format("written, {} fills, {} strokes, {} clips, {} path segments",
                                      counts.fills, counts.strokes, counts.clips, counts.segments));
}

ReadingOptions Session::ReadingOptionsOf() const
{
    ReadingOptions reading;
    reading.served = options_.fonts.served;
    reading.substitute = options_.fonts.substitute;
    reading.script = options_.script;
    // One bound for both: together they stay under the worker's own.
    const int64_t limit = options_.limits.memory;
    reading.maxMemory = limit > 0 ? limit : std::numeric_limits<int64_t>::max();
    return reading;
}

WorkerTask Session::TaskFor(const Document &document, const Preparation &prepare) const
{
    return [this, &document, &prepare](WorkerLink &link) {
        Finding finding;
        const std::vector<Work> works = prepare(&finding);
        // Devices are made; from here on bytes of the document are read.
        finding.unconfined = EnterSandbox(fontFolders_);
        const auto count = static_cast<int64_t>(works.size());
        int64_t done = 0;
        ReadingOptions options = ReadingOptionsOf();
        if (options_.showProgress)
            options.onProgress = [&](int64_t read, int64_t total) {
                link.Progress(done * total + read, count * total);
            };
        Reading reading(installation_, document, std::move(options));
        finding.header = reading.Header();
        for (; done < count && !HasFailed(finding); ++done)
            works[static_cast<size_t>(done)](reading, &finding);
        const std::vector<uint8_t> answer = nlohmann::json::to_cbor(nlohmann::json(finding));
        return std::string(answer.begin(), answer.end());
    };
}

Verdict Session::JudgeWriteError(const Finding &finding, const Interpretation &interpretation) const
{
    const WorkerLimits &limits = interpretation.limits;
    const auto &[kind, text, error] = finding.outcome.failure;
    Verdict verdict;
    if (IsOutputLimit(limits, error))
        verdict = Failed(Status::LimitHit,
                         fmt::format("takes more than {}{}: allow more with --max-output",
                                     SizeText(limits.output.value_or(0)), interpretation.purpose.lost));
    else if (IsCallersFileLimit(error))
        verdict = Failed(Status::OutputFailed,
                         fmt::format("cannot be written, {}: allow more with ulimit -f where vx is started",
                                     SystemText(error)));
    else if (kind == FailureKind::SpoolFailed)
        verdict = Failed(Status::OutputFailed,
                         fmt::format("cannot be kept in a temporary file, {}: name another folder in TMPDIR",
                                     SystemText(error)));
    else if (error == EPIPE)
        verdict =
            Failed(Status::OutputFailed, ""); // a reader that left early, as head does, has what it wanted
    else
        verdict = Failed(Status::OutputFailed,
                         fmt::format("cannot be written, {}: choose another place", SystemText(error)));
    verdict.errorSubject = finding.lastOutput.empty() ? "standard output" : finding.lastOutput;
    return verdict;
}

// Judges any failure but one to write.
Verdict Session::JudgeFailure(const Failure &failure, const Purpose &purpose) const
{
    if (failure.kind == FailureKind::OutOfMemory && failure.text.empty())
        return Failed(Status::LimitHit, OutOfMemoryError(purpose, options_.limits));
    const bool isLimit = failure.kind == FailureKind::OutOfMemory || failure.kind == FailureKind::TooLarge;
    return Failed(isLimit ? Status::LimitHit : Status::InputFailed, failure.text);
}

Verdict Session::Judge(const Interpretation &interpretation, Finding finding) const
{
    const auto &[input, purpose, document, limits, worker] = interpretation;
    const Outcome &outcome = finding.outcome;
    if (!finding.unconfined.empty())
        messages_->Detail("", fmt::format("no sandbox for {}", finding.unconfined));
    Verdict verdict;
    if (outcome.failure.IsOfWriting())
        verdict = JudgeWriteError(finding, interpretation);
    else if (outcome.result == kVXOutOfMemory)
        verdict = Failed(Status::LimitHit, OutOfMemoryError(purpose, options_.limits));
    else if (std::string error = ResultError(finding, purpose, input, document->Bytes().size());
             !error.empty())
        verdict = Failed(Status::InputFailed, std::move(error));
    else if (outcome.failure)
        verdict = JudgeFailure(outcome.failure, purpose);
    verdict.warnings = ListWarnings(outcome, FontHelp(purpose, input));
    if (verdict.status == Status::Done && options_.strict && !verdict.warnings.empty())
        verdict.status = Status::Warned;
    verdict.isLookedAt = true;
    verdict.finding = std::move(finding);
    return verdict;
}

} // namespace vxhost
