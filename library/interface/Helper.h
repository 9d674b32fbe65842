// The helper program that renders one drawing in a process of its own. Helper.cpp starts it; ../bare/Helper.cpp is for a
// library that has no processes.
#pragma once

#include "host/Failure.h"
#include "library/Result.h"
#include "library/pipe/IsolatedRequest.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace vxhost
{

struct HelperTask {
    std::string program; // a path; empty: the one that belongs to this library
    std::string path;    // of the drawing; empty: the bytes are
    std::span<const std::byte> bytes;
    IsolatedRequest request; // caller and version are filled in
    double seconds =
        0; // the most that all of it may take, without what the procedures below take; 0: any number
    // Both may throw, which ends the helper.
    std::function<void(std::span<const std::byte>)> onOutput;
    std::function<void(int percent)> onProgress; // several times a second
};

// Returns what the helper found out; its output has gone to onOutput. Nothing that it says is trusted. Throws CallError when there is no
// answer; none is one that came too late.
std::optional<Result> RunHelper(const HelperTask &task);

} // namespace vxhost
