// From ink to the colours of a screen.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/colour/ScreenOptions.h"

#include <cstddef>
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
        const Known &known = cache_[PlaceOf(ink)];
        return known.ink == ink ? known.rgb : Learn(ink);
    }

  protected:
    ScreenColours() : cache_(size_t{1} << bits_) {}
    virtual Rgb Compute(InkWord ink) = 0;

  private:
    struct Known {
        InkWord ink = 0; // an empty place holds paper
        Rgb rgb = {255, 255, 255};
    };

    size_t PlaceOf(InkWord ink) const { return (ink * 0x9E3779B1U) >> (32 - bits_); }
    Rgb Learn(InkWord ink);

    int bits_ = 8; // most documents have few colours: a cache for many is touched before the first
    size_t learnt_ = 0;
    std::vector<Known> cache_;
};

} // namespace vxhost
