// From ink to the colours of a screen.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/colour/ScreenOptions.h"
#include "host/fonts/Owned.h"

#include <cstdlib>
#include <memory>
#include <string>

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
        if (ink == 0)
            return {255, 255, 255};
        Known &known = cache_[(ink * 0x9E3779B1u) >> (32 - kCacheBits)];
        if (known.ink != ink)
            known = {ink, Compute(ink)};
        return known.rgb;
    }

  protected:
    ScreenColours();
    virtual Rgb Compute(InkWord ink) = 0;

  private:
    static constexpr int kCacheBits = 14; // gradients have many colours, the rest of a document few
    struct Known {
        InkWord ink; // 0: the place is empty
        Rgb rgb;
    };
    Owned<Known[], std::free> cache_; // from the system's zeros: most places stay untouched
};

} // namespace vxhost
