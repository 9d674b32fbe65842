// Remembers where a page has other inks than black, to tell of any box whether there are some in it.
#pragma once

#include "devices/raster/Plates.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vxhost
{

class InkMap final : public PlateSink
{
  public:
    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override;
    Failure TakeRow(std::span<const uint8_t *const> plates) override;
    Failure End() override { return {}; }

    // Call it once, when all plates are taken.
    void Sum();
    // Looks at the pixels whose centres lie in the box, one at least.
    bool HasOtherInk(const Box &box) const;

  private:
    size_t Columns() const { return static_cast<size_t>(sheet_.width) + 1; }

    PlateSheet sheet_;
    std::vector<bool> isOther_; // of the plates that come
    size_t row_ = 0;
    // Say of each pixel whether it has some; once summed, how many have on it, above it and left of it. The first row and the first
    // column are 0.
    std::vector<uint32_t> counts_;
};

} // namespace vxhost
