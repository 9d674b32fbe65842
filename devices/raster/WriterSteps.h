// Keeps what a writer of files that stands on a C library has failed at.
#pragma once

#include "host/Failure.h"
#include "host/MemoryWatch.h"

#include <exception>
#include <utility>

namespace vxhost::raster
{

struct WriterSteps {
    Failure failure;
    std::exception_ptr thrown; // what a sink threw, which must not pass through the library

    // Takes a step, unless one before it has failed. It returns whether it is done.
    template <typename Step>
    void Take(const char *undone, Step &&step)
    {
        if (failure)
            return;
        const MemoryWatch watch;
        const bool isDone = step();
        if (thrown != nullptr)
            std::rethrow_exception(std::exchange(thrown, nullptr));
        if (failure)
            return;
        watch.Check();
        if (!isDone)
            failure = {FailureKind::BadInput, undone};
    }
};

} // namespace vxhost::raster
