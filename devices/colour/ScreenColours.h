// From ink to the colours of a screen.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/colour/ScreenOptions.h"

#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

class ScreenColours
{
  public:
    // Null when the profile of the options cannot be used; error says why. Lack of memory is thrown.
    static std::unique_ptr<ScreenColours> Make(const ScreenOptions &options, std::string *error);
    virtual ~ScreenColours() = default;

    // Names the profile and the intent, for a person.
    virtual std::string Describe() const = 0;

    // Paper is white, whatever the profile says of it.
    Rgb Convert(InkWord ink)
    {
        Known &known = cache_[(ink * 0x9E3779B1u) >> (32 - kCacheBits)];
        if (known.ink != ink)
            known = {ink, Compute(ink)};
        return known.rgb;
    }

  protected:
    ScreenColours() : cache_(size_t{1} << kCacheBits) {}
    virtual Rgb Compute(InkWord ink) = 0;

  private:
    static constexpr int kCacheBits = 14; // gradients have many colours, the rest of a document few
    struct Known {
        InkWord ink = 0; // an empty place holds paper
        Rgb rgb = {255, 255, 255};
    };
    std::vector<Known> cache_;
};

} // namespace vxhost
