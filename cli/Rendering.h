// One document on its way to its outputs: interpreted in a worker process, each output whole or not at all.
#pragma once

#include "cli/OutputFile.h"
#include "cli/Session.h"
#include "cli/Worker.h"

#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct RenderTask {
    struct Output {
        const Format *format;
        std::string path; // "-" is standard output
    };
    std::string input;
    std::vector<Output> outputs; // of different places; at least one
    Settings settings;
    Purpose purpose = {", nothing written"};
    FileKinds kinds = FileKinds::All; // of the input and the outputs
};

class Rendering
{
  public:
    // Opens the document and its outputs, and starts the worker. The session must outlive this object.
    Rendering(RenderTask task, Session *session);

    // Null when there is nothing to wait for.
    Worker *Running() const { return interpretation_ == nullptr ? nullptr : interpretation_->worker.get(); }

    // When the worker has ended: puts the outputs in their place. Nothing has been told yet.
    Verdict Finish();

    const RenderTask &Task() const { return task_; }

  private:
    bool OpenOutputs();
    std::vector<Work> MakeWorks(Finding *finding) const;

    RenderTask task_;
    Session *session_;
    std::vector<std::unique_ptr<OutputFile>> files_;
    std::unique_ptr<Interpretation> interpretation_;
    Verdict verdict_;
};

// At a time, with the descriptors that this process may have.
size_t MostRenderings();

} // namespace vxhost
