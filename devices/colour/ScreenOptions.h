// What a person may choose about the colours of a screen.
#pragma once

#include <cstdint>
#include <string>

namespace vxhost
{

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Rgb &, const Rgb &) = default;
};

enum class Intent : uint8_t { Relative, Perceptual }; // both with black point compensation

struct ScreenOptions {
    std::string profile = "fogra39"; // or "none", plain arithmetic; or an ICC file of a CMYK press
    Intent intent = Intent::Relative;
};

} // namespace vxhost
