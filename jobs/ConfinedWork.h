// Does a piece of work that reads no drawing in a confined worker, within limits.
#pragma once

#include "jobs/Engine.h"
#include "jobs/Worker.h"
#include "library/pipe/Answer.h"

#include <functional>
#include <string>
#include <vector>

namespace vxhost
{

struct ConfinedTask {
    WorkerLimits limits;
    std::vector<int> descriptors;      // that the worker may use
    std::vector<std::string> readable; // files that it may open
    std::function<void(Answer *)> run; // runs in the worker, confined
};

struct ConfinedEnd {
    Fault fault; // what became of the worker
    Answer answer;
};

// Waits for its end.
ConfinedEnd RunConfined(const ConfinedTask &task, Engine *engine);

// Says what a worker with these limits failed at.
Fault FaultOf(const Failure &failure, const WorkerLimits &limits);

} // namespace vxhost
