#include "jobs/Job.h"

#include "jobs/ConfinedWork.h"
#include "jobs/LateLibraries.h"
#include "jobs/Sandbox.h"
#include "library/pipe/Answer.h"

#include <algorithm>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr double kLeastSeconds = 0.001;

bool HasFailed(const Outcome &outcome)
{
    return outcome.result != kVXOk || outcome.failure;
}

// An output may have bytes already, as one that several documents are printed into: they are not of this document.
int64_t BytesIn(const std::vector<int> &descriptors)
{
    int64_t most = 0;
    for (const int descriptor : descriptors) {
        struct stat status = {};
        if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
            most = std::max<int64_t>(most, status.st_size);
    }
    return most;
}

// Text is set in fonts, and a font that is not in the list is a problem that was reported.
bool HasMetText(const Outcome &outcome)
{
    return outcome.counts.shows > 0 || outcome.undrawnTexts > 0 ||
           std::ranges::any_of(outcome.reports,
                               [](const Report &report) { return report.number == kVXProblemFont; });
}

} // namespace

Job::Job(JobTask task, Engine *engine) : task_(std::move(task)), engine_(engine)
{
    Open();
}

void Job::Start(std::vector<int> descriptors)
{
    descriptors_ = std::move(descriptors);
    if (task_.needsFonts && !engine_->HasFonts())
        AwaitFonts();
    else
        StartWorker();
}

void Job::Open()
{
    // What a pipe delivers is held in memory, so it counts.
    limits_ = engine_->Options().limits;
    DocumentLimits most = {task_.kinds, {std::numeric_limits<size_t>::max(), limits_.seconds}};
    if (limits_.memory > 0)
        most.reading.bytes = static_cast<size_t>(limits_.memory);
    std::string error;
    ReadEnd end = ReadEnd::Whole;
    document_ = task_.document != nullptr ? task_.document
                : task_.input == "-"      ? Document::FromDescriptor(STDIN_FILENO, &error, most.reading, &end)
                                          : Document::Open(task_.input, &error, most, &end);
    if (document_ == nullptr)
        return EndWith({!error.empty()            ? FaultKind::CannotOpen
                        : end == ReadEnd::TooLate ? FaultKind::PipeTooSlow
                                                  : FaultKind::PipeTooLong,
                        error});
    result_.size = document_->Bytes().size();
    limits_ = limits_.For(result_.size);
    if (limits_.seconds > 0) // reading took some; 0 would be no limit
        limits_.seconds = std::max(limits_.seconds - document_->SecondsRead(), kLeastSeconds);
}

void Job::StartWorker()
{
    state_ = State::Works;
    hasFonts_ = engine_->HasFonts();
    if (hasFonts_)
        LoadLate(LateLibraries::OfFonts); // here, so that the workers of all documents share what is loaded
    WorkerTask task;
    const FileRules &rules = engine_->RulesWith(task_.readable);
    task.descriptors = descriptors_;
    if (rules.Get() >= 0)
        task.descriptors.push_back(rules.Get());
    task.mostAnswer = kMaxAnswer;
    task.touchesMuchMemory = task_.touchesMuchMemory;
    task.run = [this](WorkerLink &link) { return Work(link); };
    if (const auto &onProgress = engine_->Options().onProgress)
        task.onProgress = [this, &onProgress](int percent) { onProgress(task_.input, percent); };
    int error = 0;
    WorkerLimits limits = limits_;
    if (limits.output.value_or(0) > 0)
        *limits.output +=
            std::min(BytesIn(descriptors_), std::numeric_limits<int64_t>::max() - *limits.output);
    worker_ = Worker::Start(limits, task, &error);
    if (worker_ == nullptr)
        EndWith({FaultKind::NoWorker, "", error});
}

// Runs in the worker.
std::string Job::Work(WorkerLink &link) const
{
    Answer answer;
    Failure &failure = answer.outcome.failure;
    answer.confinement = EnterSandbox(engine_->RulesWith({}), engine_->Calls(), task_.makeThreads);
    const bool isRefused = engine_->Options().mustBeConfined && !answer.confinement.IsWhole();
    std::vector<Pass> passes;
    if (!isRefused)
        passes = task_.makePasses(&failure);
    if (failure || isRefused)
        return WriteAnswer(std::move(answer));

    const auto count = static_cast<int64_t>(passes.size());
    ReadingOptions options = engine_->Options().reading;
    options.layers = task_.layers;
    options.keepsSpots = task_.keepsSpots;
    options.readsTexts |= task_.readsTexts;
    if (engine_->Options().onProgress)
        options.onProgress = [&](int64_t read, int64_t total) {
            link.Progress(answer.passes * total + read, count * total);
        };
    Reading reading(engine_->Installed(), *document_, std::move(options));
    answer.header = reading.Header();
    answer.needsFonts = !hasFonts_ && reading.AsksForFonts();
    for (; answer.passes < passes.size() && !answer.needsFonts && !HasFailed(answer.outcome);
         ++answer.passes) {
        answer.outcome = passes[answer.passes](reading);
        answer.needsFonts = !hasFonts_ && HasMetText(answer.outcome);
    }
    return WriteAnswer(std::move(answer));
}

Worker *Job::AwaitedWorker()
{
    return state_ == State::Works         ? worker_.get()
           : state_ == State::AwaitsFonts ? engine_->Fonts().Listing()
                                          : nullptr;
}

void Job::GoOn()
{
    if (state_ == State::AwaitsFonts) {
        engine_->Fonts().TakeList();
        if (engine_->HasFonts())
            StartWorker();
        else if (const Fault &fault = engine_->Fonts().WhyNone()) {
            result_.confinement = engine_->Fonts().Confined();
            EndWith(fault);
        }
    } else if (state_ == State::Works && worker_->HasEnded()) {
        WorkerEnd end = worker_->TakeEnd();
        worker_.reset();
        const bool mayBeOfChange = !end.fault || end.fault.kind == FaultKind::Crashed;
        if (mayBeOfChange && document_->HasChanged())
            EndWith({FaultKind::Changed});
        else if (end.fault)
            EndWith(std::move(end.fault));
        else
            TakeAnswer(end.answer);
    }
}

void Job::Wait()
{
    while (!HasEnded()) {
        if (Worker *worker = AwaitedWorker())
            (void)Worker::WaitForAny({&worker, 1});
        GoOn();
    }
}

void Job::TakeAnswer(const std::string &bytes)
{
    std::optional<Answer> answer = ReadAnswer(bytes);
    if (!answer)
        return EndWith({FaultKind::BadAnswer});
    if (answer->needsFonts && !hasFonts_) {
        if (task_.startOver)
            task_.startOver();
        return AwaitFonts();
    }
    passesDone_ = answer->passes;
    result_.isRead = true;
    result_.header = std::move(answer->header);
    result_.outcome = std::move(answer->outcome);
    result_.omitted = answer->omitted;
    result_.confinement = answer->confinement;
    EndWith(FaultOf(result_));
}

void Job::AwaitFonts()
{
    state_ = State::AwaitsFonts;
    // They may be listed by now, or cannot be. Nobody waits for a worker that has ended already.
    const Worker *listing = AwaitedWorker();
    if (listing == nullptr || listing->HasEnded())
        GoOn();
}

void Job::EndWith(Fault fault)
{
    result_.fault = std::move(fault);
    state_ = State::Ended;
    document_.reset();
}

Fault Job::FaultOf(const Result &result) const
{
    const Outcome &outcome = result.outcome;
    if (engine_->Options().mustBeConfined && !result.confinement.IsWhole())
        return {FaultKind::NotConfined};
    if (outcome.failure.IsOfWriting())
        return vxhost::FaultOf(outcome.failure, limits_);
    switch (outcome.result) {
    case kVXOk:
        break;
    case kVXOutOfMemory:
        return outcome.failure.kind == FailureKind::TooLarge
                   ? Fault{FaultKind::TooLarge, outcome.failure.text}
                   : Fault{FaultKind::OutOfMemory};
    case kVXStoppedByUser:
        return {FaultKind::LacksFont};
    case kVXBadFormat:
        return {outcome.headerAccepted ? FaultKind::Malformed : FaultKind::NotADrawing};
    default:
        return {FaultKind::PluginFailed};
    }
    return vxhost::FaultOf(outcome.failure, limits_);
}

} // namespace vxhost
