#include "cli/Rendering.h"

#include "devices/raster/RasterOptions.h"

#include <cerrno>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

// Whether there is something to draw on that page. False with the finding's error set when there is not.
bool CheckPage(const RenderSettings &settings, Format format, const Page &page, Finding *finding)
{
    if (page.box.Width() <= 0 || page.box.Height() <= 0) {
        finding->inputError = "its bounding box is empty, nothing written: name one with --box L,B,R,T";
        return false;
    }
    if (format == Format::Png)
        finding->limitError = FindPictureSize(page.box, settings.png).error;
    if (format == Format::Pdf)
        finding->inputError = WhyNoPdf(settings.pdf, page);
    return finding->limitError.empty() && finding->inputError.empty();
}

// In the worker: the way of an output's bytes.
ByteSink SinkFor(const std::string &path, int descriptor, Finding *finding)
{
    return [path, descriptor, finding](std::span<const std::byte> bytes) -> std::string {
        if (WriteAll(descriptor, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            return "";
        finding->writeError = errno;
        finding->failedOutput = OutputName(path);
        return SystemText(errno);
    };
}

void Draw(const RenderSettings &settings, Format format, Device *device, Reading &reading, Finding *finding)
{
    finding->outcome = reading.ReadInfo();
    const Page page = reading.PageFor(settings.box.value_or(finding->outcome.box));
    if (finding->outcome.result != kVXOk || !CheckPage(settings, format, page, finding))
        return;
    finding->outcome = reading.Draw(page, *device);
    if (finding->writeError != 0)
        return;
    // What a picture cannot be made of, other than for a failed write, is for want of memory.
    (format == Format::Png ? finding->limitError : finding->inputError) = finding->outcome.deviceError;
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
    for (size_t i = 0; i < files_.size() && finding->inputError.empty(); ++i) {
        const auto &[format, path] = task_.outputs[i];
        const ByteSink sink = SinkFor(path, files_[i]->Descriptor(), finding);
        RenderSettings settings = task_.settings;
        settings.pdf.onSpoolFailure = [name = OutputName(path), finding](int error) {
            finding->writeError = error;
            finding->failedOutput = name;
            finding->isSpoolError = true;
        };
        std::shared_ptr<Device> device = MakeDevice(format, settings, sink, &finding->inputError);
        works.emplace_back([this, device, of = format](Reading &reading, Finding *found) {
            Draw(task_.settings, of, device.get(), reading, found);
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
    return MostWorkers(kOfWorkerAndDocument + std::size(kFormats));
}

} // namespace vxhost
