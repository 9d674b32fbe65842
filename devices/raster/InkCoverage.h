// Measures how much ink a page takes: of each ink, and of all together, which dries badly where it is too much.
#pragma once

#include "devices/colour/ScreenOptions.h"
#include "devices/raster/Plates.h"
#include "host/ByteSink.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

// Amounts are parts of a full ink, 1.0, of all inks together more: four full ones are 4.0.
struct InkCoverage {
    struct Ink {
        std::string name;
        double mean = 0; // over the page
    };
    std::vector<Ink> inks; // in the order of their plates
    double mean = 0;       // of the total
    double most = 0;
    std::optional<Point>
        mostAt; // in points, the centre of the first pixel that has it, from the top; none: there is no ink
    double limit = 0;
    double above = 0;     // the part of the page that has more than the limit
    double aboveArea = 0; // the same in square points
};

class CoverageMeter final : public PlateSink
{
  public:
    // limit: of the total, as amounts are.
    explicit CoverageMeter(double limit) : limit_(limit) {}

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override;
    Failure TakeRow(std::span<const uint8_t *const> plates) override;
    Failure End() override { return {}; }

    // What all plates so far take.
    InkCoverage Measure() const;

    // Writes how much ink there is where, as a PNG: white is none, from yellow to red it is more than the limit.
    Failure WriteHeatMap(const ByteSink &sink) const;

  private:
    using Total = uint16_t; // 255 an ink, of no more inks than fit
    static constexpr size_t kMostInks = 256;

    size_t Pixels() const { return static_cast<size_t>(sheet_.width) * static_cast<size_t>(sheet_.height); }

    double limit_;
    PlateSheet sheet_;
    std::vector<std::string> inks_;
    std::vector<uint64_t> sums_; // of each ink over all pixels
    std::vector<Total> totals_;  // of each pixel over all inks
    size_t row_ = 0;             // that comes next
};

} // namespace vxhost
