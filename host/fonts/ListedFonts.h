// A font list that was made elsewhere: by fontconfig, by another process.
#pragma once

#include "host/fonts/FontList.h"

#include <memory>
#include <utility>
#include <vector>

namespace vxhost
{

class ListedFonts final : public FontList
{
  public:
    explicit ListedFonts(std::vector<Entry> entries) : entries_(std::move(entries)) {}

    int32_t Count() const override { return static_cast<int32_t>(entries_.size()); }
    const Entry &At(int32_t index) const override { return entries_[static_cast<size_t>(index)]; }

  private:
    std::vector<Entry> entries_;
};

// The list of a machine without fonts: one entry, whose characters are boxes.
std::unique_ptr<FontList> MakeBoxFonts();

} // namespace vxhost
