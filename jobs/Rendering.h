// Takes one document to its outputs: each appears whole, or not at all.
#pragma once

#include "jobs/Job.h"
#include "jobs/OutputFiles.h"
#include "jobs/ThreadCrew.h"
#include "library/Options.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct RenderTask {
    struct Output {
        const Format *format;
        std::string path; // "-" is standard output
        // Is given the descriptor of the whole output, which then gets no name; null: it comes to its path.
        std::function<void(int descriptor)> take = nullptr;
        std::shared_ptr<const Settings> settings = nullptr; // of its own; null: those of the task
    };
    std::string input;
    std::vector<Output> outputs; // at least one, each in another place
    Settings settings;
    FileKinds kinds = FileKinds::All; // what the input may be
    OutputRules rules = {};
    std::shared_ptr<Document> document = nullptr; // as an earlier job opened it; null: the input is opened
    // Threads that draw a picture, at most; none: as many as there are processors, where that pays.
    std::optional<size_t> threads = 1;
};

// Makes, in the worker, what an output's bytes go to.
ByteSink SinkFor(int descriptor);
ByteSinks SinksFor(int descriptor);
ScratchBytes ScratchFor(int descriptor);

class Rendering
{
  public:
    // Opens the outputs and the document, and starts. The engine must outlive this object.
    Rendering(RenderTask task, Engine *engine);
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

    // These do what they do in Job.
    bool HasEnded() const { return job_ == nullptr || job_->HasEnded(); }
    Worker *AwaitedWorker() { return job_ == nullptr ? nullptr : job_->AwaitedWorker(); }
    void GoOn();
    void Wait();

    // Once it has ended: puts the outputs into their place.
    Result Finish();

    const RenderTask &Task() const { return task_; }

  private:
    size_t FindThreads() const;
    ByteSinks SinksOf(size_t output) const;
    std::vector<Pass> MakePasses(Failure *failure) const;

    RenderTask task_;
    ThreadCrew crew_;   // has its threads in the worker
    OutputFiles files_; // one for each of the task's outputs, and one for scratch where a TIFF is among them
    std::unique_ptr<Job> job_; // null: an output cannot be opened
    Result result_;
};

// Returns how many there can be at a time, with the descriptors that this process may have.
size_t MostRenderings();

// Makes each device once without an output, so that what is wrong with the settings is told before the first document is
// touched: in a confined worker if they name a file.
struct Trial {
    Fault fault;                    // what became of the worker
    Failure failure;                // why there is no device
    const Format *format = nullptr; // that of the device which cannot be made
    Confinement confinement;
};
Trial TryDevices(std::span<const Format *const> formats, const Settings &settings, Engine *engine);

} // namespace vxhost
