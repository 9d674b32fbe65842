#include "jobs/PlateRendering.h"

#include "devices/colour/InkShares.h"
#include "jobs/Rendering.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

std::vector<std::string> PlateInks(const std::vector<SpotUse> &spots)
{
    std::vector<std::string> inks;
    for (const SpotInk &ink : kProcessInks)
        inks.push_back(ink.name);
    for (const SpotUse &spot : spots) {
        if (HasOwnPlate(spot.name) && std::ranges::find(inks, spot.name) == inks.end())
            inks.push_back(spot.name);
    }
    return inks;
}

PlateRendering::PlateRendering(PlateTask task, Engine *engine) : task_(std::move(task))
{
    JobTask job;
    job.input = task_.input;
    job.document = task_.document;
    job.touchesMuchMemory = true;
    job.layers = task_.settings.layers;
    job.makePasses = [this](Failure *failure) { return MakePasses(failure); };
    job.startOver = [this] { files_.Empty(); };
    job_ = std::make_unique<Job>(std::move(job), engine);
    if (job_->HasEnded())
        return;
    std::vector<OutputPlace> places;
    for (const std::string &output : task_.outputs)
        places.push_back({output});
    if (files_.Open(std::move(places), task_.rules, &result_))
        job_->Start(files_.Descriptors());
    else
        job_.reset();
}

// Runs in the worker.
std::vector<Pass> PlateRendering::MakePasses(Failure *failure)
{
    const std::shared_ptr<PlateSink> sink = task_.makeSink(files_);
    std::string error;
    const std::shared_ptr<Device> device = MakePlatesDevice(task_.settings.png, task_.spotInks, sink, &error);
    if (device == nullptr) {
        *failure = {FailureKind::BadInput, error};
        return {};
    }
    std::vector<Pass> passes = {[this, sink, device](Reading &reading) {
        const auto checkPage = [&](const Page &page) {
            return FindPictureSize(page.box, task_.settings.png).failure;
        };
        Outcome outcome = DrawPage(task_.settings.page, checkPage, device.get(), reading);
        if (outcome.result == kVXOk && !outcome.failure && task_.finish)
            outcome.failure = task_.finish(sink.get(), files_);
        return outcome;
    }};
    passes.insert(passes.end(), task_.after.begin(), task_.after.end());
    return passes;
}

Result PlateRendering::Finish()
{
    if (job_ != nullptr) {
        job_->Wait();
        result_ = job_->Found();
    }
    files_.Finish(&result_);
    return std::move(result_);
}

} // namespace vxhost
