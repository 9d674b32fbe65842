// Keeps the plates of a page in memory, the inks of a pixel beside each other.
#pragma once

#include "devices/raster/Plates.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

class InkPixels final : public PlateSink
{
  public:
    explicit InkPixels(uint64_t mostBytes) : mostBytes_(mostBytes) {}

    const std::vector<std::string> &Inks() const { return inks_; } // process inks first
    // Rows from the top, a byte an ink: 0 is none of it, 255 all.
    const std::vector<uint8_t> &Bytes() const { return bytes_; }

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override
    {
        first_ += count_;
        count_ = inks.size();
        width_ = static_cast<size_t>(sheet.width);
        row_ = 0;
        if (first_ > 0)
            return {};
        inks_ = sheet.inks;
        const uint64_t bytes =
            uint64_t{width_} * static_cast<uint64_t>(sheet.height) * uint64_t{inks_.size()};
        if (bytes > mostBytes_)
            return {FailureKind::OutOfMemory, "the inks of all pixels need more memory than " +
                                                  std::to_string(mostBytes_ >> 20) +
                                                  " MiB: choose a smaller size or a higher limit"};
        bytes_.resize(static_cast<size_t>(bytes));
        return {};
    }
    Failure TakeRow(std::span<const uint8_t *const> plates) override
    {
        uint8_t *to = bytes_.data() + row_++ * width_ * inks_.size() + first_;
        for (size_t x = 0; x < width_; ++x, to += inks_.size()) {
            for (size_t i = 0; i < plates.size(); ++i)
                to[i] = plates[i][x];
        }
        return {};
    }
    Failure End() override { return {}; }

  private:
    uint64_t mostBytes_;
    std::vector<std::string> inks_;
    std::vector<uint8_t> bytes_;
    size_t width_ = 0, row_ = 0;
    size_t first_ = 0, count_ = 0; // of the inks that come
};

} // namespace vxhost
