// Where a device puts the bytes of its output, in order.
#pragma once

#include "host/Failure.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace vxhost
{

// Takes the next bytes. Returns why they could not be written, if they could not.
using ByteSink = std::function<Failure(std::span<const std::byte>)>;

// Takes what a device needs again before it ends, and is no part of its output.
struct ScratchBytes {
    ByteSink add;
    // Reads what was added, from that place on.
    std::function<Failure(uint64_t at, std::span<std::byte>)> read;
};

// Takes the bytes of a file whose beginning is known at its end.
struct ByteSinks {
    ByteSink add;
    // Puts bytes over those that were added before, from that place on.
    std::function<Failure(uint64_t at, std::span<const std::byte>)> replace = {};
    ScratchBytes scratch = {};
};

} // namespace vxhost
