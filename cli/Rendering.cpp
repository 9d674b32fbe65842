#include "cli/Rendering.h"

#include <cerrno>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

// Why there can be no output of that page.
Failure CheckPage(const Settings &settings, const Format &format, const Page &page)
{
    if (page.box.Width() <= 0 || page.box.Height() <= 0)
        return {FailureKind::BadInput,
                "its bounding box is empty, nothing written: name one with --box L,B,R,T"};
    return format.checkPage(settings, page);
}

// In the worker: the way of an output's bytes.
ByteSink SinkFor(int descriptor)
{
    return [descriptor](std::span<const std::byte> bytes) -> Failure {
        if (WriteAll(descriptor, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            return {};
        return {FailureKind::CannotWrite, SystemText(errno), errno};
    };
}

void Draw(const Settings &settings, const RenderTask::Output &output, Device *device, Reading &reading,
          Finding *finding)
{
    finding->lastOutput = OutputName(output.path);
    finding->outcome = reading.ReadInfo();
    if (finding->outcome.result != kVXOk)
        return;
    const Page page = reading.PageFor(settings.box.value_or(finding->outcome.box));
    finding->outcome.failure = CheckPage(settings, *output.format, page);
    if (!finding->outcome.failure)
        finding->outcome = reading.Draw(page, *device);
}

} // namespace

Rendering::Rendering(RenderTask task, Session *session) : task_(std::move(task)), session_(session)
{
    std::unique_ptr<Document> document = session_->Open(task_.input, task_.kinds, &verdict_);
    if (document == nullptr || !OpenOutputs())
        return;
    std::vector<int> descriptors;
    for (const auto &file : files_)
        descriptors.push_back(file->Descriptor());
    const auto prepare = [this](Finding *finding) { return MakeWorks(finding); };
    interpretation_ =
        session_->Begin(task_.input, task_.purpose, std::move(document), prepare, descriptors, &verdict_);
}

bool Rendering::OpenOutputs()
{
    for (const RenderTask::Output &output : task_.outputs) {
        std::string error;
        files_.push_back(OutputFile::Create(output.path, task_.kinds, &error));
        if (files_.back() == nullptr) {
            verdict_ = Failed(Status::OutputFailed, error);
            verdict_.errorSubject = OutputName(output.path);
            return false;
        }
    }
    return true;
}

// In the worker, which may not open files once it has looked at the document: devices open theirs when they are made.
std::vector<Work> Rendering::MakeWorks(Finding *finding) const
{
    std::vector<Work> works;
    for (size_t i = 0; i < files_.size(); ++i) {
        const RenderTask::Output &output = task_.outputs[i];
        std::string error;
        std::shared_ptr<Device> device =
            output.format->make(task_.settings, SinkFor(files_[i]->Descriptor()), &error);
        if (device == nullptr) {
            finding->outcome.failure = {FailureKind::BadInput, error};
            return {};
        }
        works.emplace_back([this, device, &output](Reading &reading, Finding *found) {
            Draw(task_.settings, output, device.get(), reading, found);
        });
    }
    return works;
}

Verdict Rendering::Finish()
{
    if (interpretation_ != nullptr)
        verdict_ = session_->End(interpretation_.get());
    interpretation_.reset();
    for (size_t i = 0; i < files_.size() && verdict_.MayBeWritten(); ++i) {
        std::string error;
        if (files_[i]->Commit(&error)) {
            verdict_.written.push_back(task_.outputs[i].path);
        } else {
            verdict_.status = Status::OutputFailed;
            verdict_.error = error;
            verdict_.errorSubject = OutputName(task_.outputs[i].path);
        }
    }
    files_.clear();
    return std::move(verdict_);
}

size_t MostRenderings()
{
    constexpr size_t kOfWorkerAndDocument = 2;
    return MostWorkers(kOfWorkerAndDocument + Formats().size());
}

} // namespace vxhost
