// A font list made of names alone, without files: for tests, and for hosts that draw no text.
#pragma once

#include "host/fonts/FontList.h"

#include <functional>
#include <string>
#include <vector>

namespace vxhost
{

class FixedFontList final : public FontList, public WidthSource
{
  public:
    // Every character of every font is this wide (ems, 16.16). A name's family is what stands before its dash; an
    // empty name makes an entry that keeps its place and cannot be asked for.
    explicit FixedFontList(const std::vector<std::string> &postScriptNames, int32_t width = 0x8000);

    // If set, it is asked instead of the one width.
    std::function<int32_t(int16_t number, int16_t character)> widthOf;

    int32_t Count() const override { return static_cast<int32_t>(entries_.size()); }
    const Entry &At(int32_t index) const override { return entries_[static_cast<size_t>(index)]; }
    int32_t CharWidth(int16_t number, int16_t character) override
    {
        return widthOf ? widthOf(number, character) : width_;
    }

  private:
    std::vector<Entry> entries_;
    int32_t width_;
};

} // namespace vxhost
