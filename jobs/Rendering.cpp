#include "jobs/Rendering.h"

#include "host/TemporaryFile.h"
#include "jobs/Sandbox.h"
#include "library/pipe/Answer.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

// Says why there can be no output of that page.
Failure CheckPage(const Settings &settings, const Format &format, const Page &page)
{
    if (page.box.Width() <= 0 || page.box.Height() <= 0)
        return {FailureKind::BadInput,
                "its bounding box is empty, nothing written: name one with --box L,B,R,T"};
    return format.checkPage(settings, page);
}

// Makes, in the worker, what an output's bytes go to.
ByteSink SinkFor(int descriptor)
{
    return [descriptor](std::span<const std::byte> bytes) -> Failure {
        if (WriteAll(descriptor, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            return {};
        return {FailureKind::CannotWrite, SystemText(errno), errno};
    };
}

Outcome Draw(const Settings &settings, const Format &format, Device *device, Reading &reading)
{
    Outcome outcome = reading.ReadInfo();
    if (outcome.result != kVXOk)
        return outcome;
    const Page page = reading.PageFor(settings.box.value_or(outcome.box));
    outcome.failure = CheckPage(settings, format, page);
    return outcome.failure ? outcome : reading.Draw(page, *device);
}

// Returns the files that the settings name.
std::vector<std::string> FilesOf(const Settings &settings)
{
    std::vector<std::string> files;
    for (const std::string *profile : {&settings.pdf.profile, &settings.svg.profile, &settings.png.profile}) {
        if (IsProfileFile(*profile))
            files.push_back(*profile);
    }
    return files;
}

// Tries the formats up to the first that fails. Returns how many it tried.
size_t TryEach(std::span<const Format *const> formats, const Settings &settings, Failure *failure)
{
    size_t tried = 0;
    while (tried < formats.size() && !*failure) {
        std::string error;
        if (formats[tried++]->make(settings, nullptr, &error) == nullptr)
            *failure = {FailureKind::BadInput, error};
    }
    return tried;
}

} // namespace

Rendering::Rendering(RenderTask task, Engine *engine) : task_(std::move(task))
{
    JobTask job;
    job.input = task_.input;
    job.kinds = task_.kinds;
    job.readable = FilesOf(task_.settings);
    job.layers = task_.settings.layers;
    job.keepsSpots = task_.settings.keepsSpots;
    job.open = [this] { return OpenSpools(); };
    job.makePasses = [this](Failure *failure) { return MakePasses(failure); };
    job.startOver = [this] {
        for (const auto &file : files_)
            file->Empty();
    };
    job_ = std::make_unique<Job>(std::move(job), engine);
    if (job_->HasEnded())
        return;
    result_.fault = OpenOutputs();
    if (result_.fault) {
        job_.reset();
        return;
    }
    std::vector<int> descriptors;
    for (const auto &file : files_)
        descriptors.push_back(file->Descriptor());
    job_->Start(std::move(descriptors));
}

Fault Rendering::OpenOutputs()
{
    for (const RenderTask::Output &output : task_.outputs) {
        Fault fault;
        files_.push_back(output.take ? OutputFile::CreateUnnamed(&fault)
                                     : OutputFile::Create(output.path, task_.rules, &fault));
        if (fault) {
            result_.output = output.path;
            return fault;
        }
    }
    return {};
}

// Runs in the worker, before it is confined: afterwards no file can be made for what a device keeps in one.
Failure Rendering::OpenSpools()
{
    for (const RenderTask::Output &output : task_.outputs) {
        const int spool = output.format->spools ? OpenTemporaryFile() : -1;
        if (output.format->spools && spool < 0)
            return {FailureKind::SpoolFailed, "", errno};
        spools_.push_back(spool);
    }
    return {};
}

// Runs in the worker.
std::vector<Pass> Rendering::MakePasses(Failure *failure) const
{
    std::vector<Pass> passes;
    for (size_t i = 0; i < files_.size(); ++i) {
        const Format *format = task_.outputs[i].format;
        Settings settings = task_.settings;
        settings.pdf.spool = spools_[i];
        std::string error;
        std::shared_ptr<Device> device = format->make(settings, SinkFor(files_[i]->Descriptor()), &error);
        if (device == nullptr) {
            *failure = {FailureKind::BadInput, error};
            return {};
        }
        passes.emplace_back([this, device, format](Reading &reading) {
            return Draw(task_.settings, *format, device.get(), reading);
        });
    }
    return passes;
}

void Rendering::GoOn()
{
    if (job_ != nullptr)
        job_->GoOn();
}

void Rendering::Wait()
{
    if (job_ != nullptr)
        job_->Wait();
}

Result Rendering::Finish()
{
    if (job_ != nullptr) {
        result_ = job_->Found();
        // The pass that failed is that of the output.
        if (result_.isRead && result_.outcome.failure.IsOfWriting())
            result_.output = task_.outputs[std::clamp<size_t>(job_->PassesDone(), 1, files_.size()) - 1].path;
    }
    for (size_t i = 0; i < files_.size() && !result_.fault; ++i) {
        if (task_.outputs[i].take) {
            task_.outputs[i].take(files_[i]->Descriptor());
            continue;
        }
        result_.fault = files_[i]->Commit();
        if (result_.fault)
            result_.output = task_.outputs[i].path;
        else
            result_.written.push_back(task_.outputs[i].path);
    }
    files_.clear();
    return std::move(result_);
}

size_t MostRenderings()
{
    constexpr size_t kOfWorkerAndDocument = 2;
    return MostWorkers(kOfWorkerAndDocument + Formats().size());
}

Trial TryDevices(std::span<const Format *const> formats, const Settings &settings, Engine *engine)
{
    Trial trial;
    const std::vector<std::string> files = FilesOf(settings);
    if (files.empty()) {
        trial.format = formats[TryEach(formats, settings, &trial.failure) - 1];
        return trial;
    }
    const FileRules &rules = engine->RulesWith(files);
    const bool mustBeConfined = engine->Options().mustBeConfined;
    WorkerTask task;
    if (rules.Get() >= 0)
        task.descriptors.push_back(rules.Get());
    task.mostAnswer = kMaxAnswer;
    task.run = [&](WorkerLink &) {
        Answer answer;
        answer.confinement = EnterSandbox(rules, SystemCalls::OfReading);
        if (answer.confinement.IsWhole() || !mustBeConfined)
            answer.passes = static_cast<uint32_t>(TryEach(formats, settings, &answer.outcome.failure));
        return WriteAnswer(std::move(answer));
    };
    int error = 0;
    const std::unique_ptr<Worker> worker = Worker::Start(engine->Options().limits, task, &error);
    if (worker == nullptr) {
        trial.fault = {FaultKind::NoWorker, "", error};
        return trial;
    }
    Worker *const awaited = worker.get();
    (void)Worker::WaitForAny({&awaited, 1});
    WorkerEnd end = worker->TakeEnd();
    trial.fault = std::move(end.fault);
    std::optional<Answer> answer = ReadAnswer(end.answer);
    if (!trial.fault && !answer)
        trial.fault = {FaultKind::BadAnswer};
    if (trial.fault)
        return trial;
    trial.confinement = answer->confinement;
    if (mustBeConfined && !trial.confinement.IsWhole())
        trial.fault = {FaultKind::NotConfined};
    trial.failure = std::move(answer->outcome.failure);
    trial.format = formats[std::clamp<size_t>(answer->passes, 1, formats.size()) - 1];
    return trial;
}

} // namespace vxhost
