#include "devices/raster/InkCoverage.h"

#include "devices/raster/PngWriter.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr double kFull = 255; // the level of a full ink

// A heat map: paper, then bluer the more ink there is, yellow just below the limit, and red above it.
struct Heat {
    double amount; // of the limit
    Rgb colour;
};
constexpr Heat kHeat[] = {{0, {255, 255, 255}}, {0.4, {189, 215, 231}}, {0.8, {107, 174, 214}},
                          {1, {254, 217, 118}}, {1, {227, 26, 28}},     {1.33, {103, 0, 13}}};

Rgb HeatOf(double amount)
{
    const Heat *last = std::ranges::find_if(kHeat, [&](const Heat &heat) { return heat.amount >= amount; });
    if (last == std::begin(kHeat))
        return kHeat[0].colour;
    if (last == std::end(kHeat))
        return std::prev(last)->colour;
    const Heat &first = *std::prev(last);
    const double part = (amount - first.amount) / (last->amount - first.amount);
    const auto mix = [&](uint8_t from, uint8_t to) {
        return static_cast<uint8_t>(std::lround(from + (to - from) * part));
    };
    return {mix(first.colour.r, last->colour.r), mix(first.colour.g, last->colour.g),
            mix(first.colour.b, last->colour.b)};
}

} // namespace

Failure CoverageMeter::Begin(const PlateSheet &sheet, std::span<const std::string> inks)
{
    sheet_ = sheet;
    row_ = 0;
    if (inks_.size() + inks.size() > kMostInks)
        return {FailureKind::BadInput, "it has more spot inks than can be measured"};
    inks_.insert(inks_.end(), inks.begin(), inks.end());
    sums_.resize(inks_.size());
    totals_.resize(Pixels());
    return {};
}

Failure CoverageMeter::TakeRow(std::span<const uint8_t *const> plates)
{
    Total *const totals = totals_.data() + row_++ * static_cast<size_t>(sheet_.width);
    for (size_t i = 0; i < plates.size(); ++i) {
        uint64_t sum = 0;
        for (size_t x = 0; x < static_cast<size_t>(sheet_.width); ++x) {
            sum += plates[i][x];
            totals[x] = static_cast<Total>(totals[x] + plates[i][x]);
        }
        sums_[inks_.size() - plates.size() + i] += sum;
    }
    return {};
}

InkCoverage CoverageMeter::Measure() const
{
    InkCoverage coverage;
    coverage.limit = limit_;
    const auto pixels = static_cast<double>(Pixels());
    for (size_t i = 0; i < inks_.size(); ++i) {
        coverage.inks.push_back({inks_[i], static_cast<double>(sums_[i]) / kFull / pixels});
        coverage.mean += coverage.inks.back().mean;
    }
    const auto most = std::ranges::max_element(totals_);
    coverage.most = *most / kFull;
    if (*most > 0) {
        const auto at = static_cast<size_t>(most - totals_.begin()),
                   width = static_cast<size_t>(sheet_.width);
        const size_t row = at / width; // a whole number
        const auto fromLeft = static_cast<double>(at % width) + 0.5, fromTop = static_cast<double>(row) + 0.5;
        coverage.mostAt = {sheet_.box.left + fromLeft / sheet_.width * sheet_.box.Width(),
                           sheet_.box.top - fromTop / sheet_.height * sheet_.box.Height()};
    }
    const double least = limit_ * kFull;
    const auto above = std::ranges::count_if(totals_, [&](Total total) { return total > least; });
    coverage.above = static_cast<double>(above) / pixels;
    coverage.aboveArea = coverage.above * sheet_.box.Width() * sheet_.box.Height();
    return coverage;
}

Failure CoverageMeter::WriteHeatMap(const ByteSink &sink) const
{
    raster::PngHeader header;
    header.width = sheet_.width;
    header.height = sheet_.height;
    header.pixelsPerInchX = sheet_.pixelsPerInchX;
    header.pixelsPerInchY = sheet_.pixelsPerInchY;
    header.title = sheet_.title;
    raster::PngWriter writer(header, sink);
    std::vector<uint8_t> row;
    Total known = 0;
    Rgb colour = HeatOf(0);
    for (size_t at = 0; at < totals_.size(); ++at) {
        if (totals_[at] != known) {
            known = totals_[at];
            colour = HeatOf(known / kFull / limit_);
        }
        row.insert(row.end(), {colour.r, colour.g, colour.b});
        if ((at + 1) % static_cast<size_t>(sheet_.width) == 0) {
            writer.WriteRow(row.data());
            row.clear();
        }
    }
    return writer.End();
}

} // namespace vxhost
