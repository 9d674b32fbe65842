// What a person may choose about the colours of a screen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Rgb &, const Rgb &) = default;
};

enum class Intent : uint8_t { Relative, Perceptual }; // both with black point compensation

// ICC, of a CMYK press, from a program's memory.
using ProfileBytes = std::shared_ptr<const std::vector<std::byte>>;

struct ScreenOptions {
    std::string profile = "fogra39"; // or "none", plain arithmetic; or an ICC file of a CMYK press
    ProfileBytes profileBytes;       // what the profile of that name is; null: it is built in, or a file
    Intent intent = Intent::Relative;
};

} // namespace vxhost
