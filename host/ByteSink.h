// Where a device puts the bytes of its output, in order.
#pragma once

#include "host/Failure.h"

#include <cstddef>
#include <functional>
#include <span>

namespace vxhost
{

// Takes the next bytes. Returns why they could not be written, if they could not.
using ByteSink = std::function<Failure(std::span<const std::byte>)>;

} // namespace vxhost
