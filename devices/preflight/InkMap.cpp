#include "devices/preflight/InkMap.h"

#include "devices/colour/InkShares.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr uint8_t kLeastLevel = 3; // of 255: one percent

// Returns the pixels whose centres lie between two places on the way, from the first to the one behind the last.
struct Range {
    size_t from, to;
};
Range PixelsBetween(double low, double high, double pixels, int count)
{
    const double most = count;
    const double from = std::clamp(std::ceil(low * pixels - 0.5), 0.0, most - 1);
    const double to = std::clamp(std::floor(high * pixels - 0.5) + 1, from + 1, most);
    return {static_cast<size_t>(from), static_cast<size_t>(to)};
}

} // namespace

Failure InkMap::Begin(const PlateSheet &sheet, std::span<const std::string> inks)
{
    sheet_ = sheet;
    row_ = 0;
    isOther_.clear();
    for (const std::string &ink : inks)
        isOther_.push_back(ink != kProcessInks[kInkCount - 1].name);
    counts_.resize(Columns() * (static_cast<size_t>(sheet.height) + 1));
    return {};
}

Failure InkMap::TakeRow(std::span<const uint8_t *const> plates)
{
    uint32_t *const row = counts_.data() + ++row_ * Columns() + 1;
    for (size_t i = 0; i < plates.size(); ++i) {
        for (size_t x = 0; isOther_[i] && x < static_cast<size_t>(sheet_.width); ++x)
            row[x] |= plates[i][x] >= kLeastLevel ? 1 : 0;
    }
    return {};
}

void InkMap::Sum()
{
    const size_t columns = Columns();
    for (size_t at = columns + 1; at < counts_.size(); ++at) {
        if (at % columns != 0)
            counts_[at] += counts_[at - 1] + counts_[at - columns] - counts_[at - columns - 1];
    }
}

bool InkMap::HasOtherInk(const Box &box) const
{
    const double across = sheet_.width / sheet_.box.Width(), down = sheet_.height / sheet_.box.Height();
    const Range x =
        PixelsBetween(box.left - sheet_.box.left, box.right - sheet_.box.left, across, sheet_.width);
    const Range y = PixelsBetween(sheet_.box.top - box.top, sheet_.box.top - box.bottom, down, sheet_.height);
    const auto count = [&](size_t column, size_t row) { return counts_[row * Columns() + column]; };
    return count(x.to, y.to) - count(x.from, y.to) - count(x.to, y.from) + count(x.from, y.from) != 0;
}

} // namespace vxhost
