// A press adds up ink where a screen adds up light: the mean is that of the inks.
#include "devices/raster/PlateMixer.h"

#include <bit>

namespace vxhost::raster
{

PlateMixer::PlateMixer(int width, int samples) : samplesPerPixel_(static_cast<unsigned>(samples * samples))
{
    for (std::vector<uint8_t> &row : rows_)
        row.resize(static_cast<size_t>(width));
}

InkWord PlateMixer::MeanOf(const InkBuffer::Row &row, int x) const
{
    std::array<unsigned, 4> sums = {};
    row.ForInks(x, [&](InkWord ink, uint64_t mask) {
        const auto samples = static_cast<unsigned>(std::popcount(mask));
        for (size_t i = 0; i < sums.size(); ++i)
            sums[i] += (ink >> (8 * i) & 0xFF) * samples;
    });
    InkWord mean = 0;
    for (size_t i = 0; i < sums.size(); ++i)
        mean |= InkWord{(sums[i] + samplesPerPixel_ / 2) / samplesPerPixel_} << (8 * i);
    return mean;
}

void PlateMixer::Mix(const InkBuffer &buffer, int y)
{
    const InkBuffer::Row row = buffer.ReadRow(y);
    for (int x = 0; x < buffer.Width(); ++x) {
        const InkWord ink = row.IsBlank() ? 0 : row.IsSplit(x) ? MeanOf(row, x) : row.Pixel(x);
        for (size_t i = 0; i < rows_.size(); ++i)
            rows_[i][static_cast<size_t>(x)] = static_cast<uint8_t>(ink >> (8 * i));
    }
}

} // namespace vxhost::raster
