// Says which inks the four of a word are: those of a picture, or those of up to four plates of a press.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/raster/InkBuffer.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxhost::raster
{

class InkChannels
{
  public:
    static constexpr size_t kCount = std::tuple_size_v<InkLevels>;

    // The process inks, and spot inks by what stands in for them: what a screen shows. Without overprint every paint replaces all inks.
    explicit InkChannels(bool simulatesOverprint) : simulatesOverprint_(simulatesOverprint) {}

    // The inks of those names, at most four, and nothing of others: what their plates print.
    InkChannels(bool simulatesOverprint, std::vector<std::string> names)
        : simulatesOverprint_(simulatesOverprint), names_(std::move(names))
    {
    }

    const std::vector<std::string> &Names() const { return names_; } // empty: those of a screen

    // As InkLevels are: 0 to 255, plus a half.
    InkLevels Levels(const Colour &colour) const;
    Ink Find(const Paint &paint) const;

  private:
    Ink FindOnScreen(const Paint &paint) const;
    size_t ChannelOf(const std::string &ink) const; // kCount: none has it

    bool simulatesOverprint_;
    std::vector<std::string> names_;
};

} // namespace vxhost::raster
