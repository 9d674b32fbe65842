#include "devices/colour/Fogra39.h"

#include <cstdint>

namespace vxhost
{

namespace
{

constexpr uint8_t kProfile[] = {
#include "Fogra39.inc"
};

} // namespace

std::span<const std::byte> Fogra39Profile()
{
    return std::as_bytes(std::span(kProfile));
}

} // namespace vxhost
