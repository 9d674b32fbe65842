// Blends between colours of which some are spot inks: the inks of each step, by what is sent for it.
#pragma once

#include "host/drawing/Paint.h"

#include <cstddef>
#include <vector>

namespace vxhost
{

// Each part is painted in steps whose four process inks lie on the straight way from those of its first colour to those of its
// last.
struct SpotBlend {
    struct Part {
        SpotColour from, to; // one without an ink is a process colour
    };
    std::vector<Part> parts; // in the order in which they are painted
};

// Goes along with the steps of a blend.
class SpotBlendSteps
{
  public:
    // The blend must outlive what follows. Null: none.
    void Begin(const SpotBlend *blend);

    // Adds the spot inks to a process colour that was sent. False: it is no step of the blend, or of a part that was passed.
    bool AddSpots(Colour *colour);

  private:
    bool IsAtEnd() const;

    const SpotBlend *blend_ = nullptr;
    size_t part_ = 0;  // that the last step was of
    double place_ = 0; // of that step in it, from 0 to 1
};

} // namespace vxhost
