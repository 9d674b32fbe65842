#include "jobs/Rendering.h"

#include "jobs/ConfinedWork.h"
#include "jobs/LateLibraries.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

// Nobody who does not ask for threads gets them for smaller documents and pictures.
constexpr size_t kLeastBytes = 200'000;
constexpr uint64_t kLeastPixels = 1'000'000;

// The part of the limit of memory that the stacks of threads may take.
constexpr uint64_t kPartOfStacks = 32;

// Returns the files that the settings name, and sees to it that workers which start now can read them.
std::vector<std::string> FilesOf(const Settings &settings)
{
    std::vector<std::string> files;
    for (const std::string *profile : {&settings.pdf.profile, &settings.svg.profile, &settings.png.profile}) {
        if (IsProfileFile(*profile))
            files.push_back(*profile);
    }
    if (!files.empty())
        LoadLate(LateLibraries::OfColour);
    return files;
}

// Tries the formats up to the first that fails. Returns how many it tried.
size_t TryEach(std::span<const Format *const> formats, const Settings &settings, Failure *failure)
{
    size_t tried = 0;
    while (tried < formats.size() && !*failure) {
        std::string error;
        if (formats[tried++]->make(settings, {}, &error) == nullptr)
            *failure = {FailureKind::BadInput, error};
    }
    return tried;
}

// Reads or writes all of the bytes at a place of a file.
template <class Byte, class Call>
Failure MoveAll(std::span<Byte> bytes, uint64_t at, Call *call, int descriptor)
{
    while (!bytes.empty()) {
        const ssize_t moved = call(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at));
        if (moved == 0 || (moved < 0 && errno != EINTR))
            return {FailureKind::CannotWrite, SystemText(errno), errno};
        const auto count = static_cast<size_t>(std::max<ssize_t>(moved, 0));
        bytes = bytes.subspan(count);
        at += count;
    }
    return {};
}

bool HasAny(const std::vector<RenderTask::Output> &outputs, unsigned formats)
{
    return std::ranges::any_of(
        outputs, [&](const RenderTask::Output &output) { return (BitOf(*output.format) & formats) != 0; });
}

} // namespace

// The file that the descriptor has is its output's alone, and empty at first.
ByteSinks SinksFor(int descriptor)
{
    return {SinkFor(descriptor), [descriptor](uint64_t at, std::span<const std::byte> bytes) {
                return MoveAll(bytes, at, pwrite, descriptor);
            }};
}

ScratchBytes ScratchFor(int descriptor)
{
    return {SinkFor(descriptor), [descriptor](uint64_t at, std::span<std::byte> bytes) {
                return MoveAll(bytes, at, pread, descriptor);
            }};
}

ByteSink SinkFor(int descriptor)
{
    return [descriptor](std::span<const std::byte> bytes) -> Failure {
        if (WriteAll(descriptor, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            return {};
        return {FailureKind::CannotWrite, SystemText(errno), errno};
    };
}

Rendering::Rendering(RenderTask task, Engine *engine) : task_(std::move(task))
{
    JobTask job;
    job.input = task_.input;
    job.document = task_.document;
    job.kinds = task_.kinds;
    job.readable = FilesOf(task_.settings);
    job.touchesMuchMemory = HasAny(task_.outputs, kPng | kTiff);
    if (HasAny(task_.outputs, kTiff))
        LoadLate(LateLibraries::OfTiff);
    job.layers = task_.settings.layers;
    job.keepsSpots = task_.settings.keepsSpots;
    job.readsTexts = ReadingOptionsOf(task_.settings).readsTexts;
    job.makePasses = [this](Failure *failure) { return MakePasses(failure); };
    if (task_.threads != 1U && job.touchesMuchMemory) {
        job.makeThreads = [this] { crew_.Start(FindThreads()); };
        task_.settings.png.crew = &crew_;
        task_.settings.png.leastCrewPixels = task_.threads ? 0 : kLeastPixels;
    }
    job.startOver = [this] { files_.Empty(); };
    job_ = std::make_unique<Job>(std::move(job), engine);
    if (job_->HasEnded())
        return;
    std::vector<OutputPlace> places;
    for (const RenderTask::Output &output : task_.outputs)
        places.push_back({output.path, output.take});
    if (HasAny(task_.outputs, kTiff)) // what is no output gets no name
        places.push_back({"", [](int) {}});
    if (files_.Open(std::move(places), task_.rules, &result_))
        job_->Start(files_.Descriptors());
    else
        job_.reset();
}

// Runs in the worker.
size_t Rendering::FindThreads() const
{
    const uint64_t room = task_.settings.png.memoryLimit / kPartOfStacks / ThreadCrew::kStackBytes;
    const size_t standard =
        job_->Opened()->Bytes().size() < kLeastBytes ? 1 : std::thread::hardware_concurrency();
    return static_cast<size_t>(std::min<uint64_t>(task_.threads.value_or(standard), room));
}

// Runs in the worker.
ByteSinks Rendering::SinksOf(size_t output) const
{
    ByteSinks sinks = SinksFor(files_.Descriptor(output));
    if (BitOf(*task_.outputs[output].format) == kTiff)
        sinks.scratch = ScratchFor(files_.Descriptor(task_.outputs.size()));
    return sinks;
}

// Runs in the worker.
std::vector<Pass> Rendering::MakePasses(Failure *failure) const
{
    std::vector<Pass> passes;
    const auto date = std::make_shared<DateOrigin>(); // of any output so far
    const auto placedTexts = std::make_shared<uint64_t>();
    for (size_t i = 0; i < task_.outputs.size(); ++i) {
        const RenderTask::Output &output = task_.outputs[i];
        const Format *format = output.format;
        const Settings &settings = output.settings != nullptr ? *output.settings : task_.settings;
        std::string error;
        std::shared_ptr<Device> device = format->make(settings, SinksOf(i), &error);
        if (device == nullptr) {
            *failure = {FailureKind::BadInput, error};
            return {};
        }
        passes.emplace_back([&settings, device, format, date, placedTexts](Reading &reading) {
            const auto checkPage = [&](const Page &page) {
                if (const DateOrigin origin = format->findDateOrigin(settings, page);
                    origin != DateOrigin::None)
                    *date = origin;
                return format->checkPage(settings, page);
            };
            Outcome outcome = DrawPage(settings.page, checkPage, device.get(), reading);
            outcome.date = *date;
            outcome.placedTexts = *placedTexts += outcome.placedTexts;
            return outcome;
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
            result_.output = files_.Path(std::clamp<size_t>(job_->PassesDone(), 1, task_.outputs.size()) - 1);
    }
    files_.Finish(&result_);
    return std::move(result_);
}

size_t MostRenderings()
{
    constexpr size_t kOthers = 4; // the worker's, the document, scratch and a thumbnail
    return MostWorkers(kOthers + Formats().size());
}

Trial TryDevices(std::span<const Format *const> formats, const Settings &settings, Engine *engine)
{
    Trial trial;
    const std::vector<std::string> files = FilesOf(settings);
    if (files.empty()) {
        trial.format = formats[TryEach(formats, settings, &trial.failure) - 1];
        return trial;
    }
    ConfinedTask task;
    task.limits = engine->Options().limits;
    task.readable = files;
    task.run = [&](Answer *answer) {
        answer->passes = static_cast<uint32_t>(TryEach(formats, settings, &answer->outcome.failure));
    };
    ConfinedEnd end = RunConfined(task, engine);
    trial.fault = std::move(end.fault);
    trial.confinement = end.answer.confinement;
    trial.failure = std::move(end.answer.outcome.failure);
    trial.format = formats[std::clamp<size_t>(end.answer.passes, 1, formats.size()) - 1];
    return trial;
}

} // namespace vxhost
