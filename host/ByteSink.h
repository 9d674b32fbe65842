// Where a device puts the bytes of its output, in order.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace vxhost
{

// Takes the next bytes. Returns an empty string, or why they could not be written, as one line for a person.
using ByteSink = std::function<std::string(std::span<const std::byte>)>;

} // namespace vxhost
