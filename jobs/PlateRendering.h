// Takes one document to the plates of a press, and these to what is made of them.
#pragma once

#include "devices/raster/Plates.h"
#include "jobs/Job.h"
#include "jobs/OutputFiles.h"
#include "library/Options.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct PlateTask {
    std::string input;
    std::shared_ptr<Document> document; // that was opened already; null: the input is opened
    std::vector<std::string> outputs;   // paths; "-" is standard output
    OutputRules rules;
    Settings settings;
    std::optional<std::vector<std::string>> spotInks; // none: those that the page paints with

    // Both run in the worker: the first makes what takes the plates, with the descriptor of each output, the second goes on when all are made.
    std::function<std::unique_ptr<PlateSink>(const OutputFiles &files)> makeSink;
    std::function<Failure(PlateSink *sink, const OutputFiles &files)> finish; // null: there is no more to do
    std::vector<Pass>
        after; // that the document is gone through in behind these; what the last one finds is the result
};

// Returns the inks that plates are made of when the page paints with those, process inks first.
std::vector<std::string> PlateInks(const std::vector<SpotUse> &spots);

class PlateRendering
{
  public:
    // Opens the outputs, and starts. The engine must outlive this object.
    PlateRendering(PlateTask task, Engine *engine);
    PlateRendering(const PlateRendering &) = delete;
    PlateRendering &operator=(const PlateRendering &) = delete;

    // Waits until it has ended, and puts the outputs into their place.
    Result Finish();

  private:
    std::vector<Pass> MakePasses(Failure *failure);

    PlateTask task_;
    OutputFiles files_;
    std::unique_ptr<Job> job_;
    Result result_;
};

} // namespace vxhost
