// The mean of the samples' colours as the screen shows them: what viewers of such pictures expect of an edge.
#include "devices/raster/RowMixer.h"

#include "devices/raster/PixelMean.h"

#include <bit>

namespace vxhost::raster
{

RowMixer::RowMixer(ScreenColours *colours, const std::optional<Rgb> &background, int samples)
    : colours_(colours), background_(background), samplesPerPixel_(static_cast<unsigned>(samples * samples))
{
}

void RowMixer::Mix(const InkBuffer &buffer, int y, uint8_t *bytes)
{
    const InkBuffer::Row row = buffer.ReadRow(y);
    const Rgb unpainted = background_.value_or(Rgb{0, 0, 0});
    // Neighbours mostly have one ink.
    InkWord ink = 0;
    Rgb rgb = colours_->Convert(ink);
    for (int x = 0; x < buffer.Width(); ++x) {
        if (!row.IsBlank() && row.IsSplit(x)) {
            bytes = MixSamples(row, x, bytes);
        } else if (!row.IsBlank() && row.IsPainted(x)) {
            if (row.Pixel(x) != ink) {
                ink = row.Pixel(x);
                rgb = colours_->Convert(ink);
            }
            bytes = PutPixel(background_, rgb, 255, bytes);
        } else {
            bytes = PutPixel(background_, unpainted, 0, bytes);
        }
    }
}

uint8_t *RowMixer::MixSamples(const InkBuffer::Row &row, int x, uint8_t *bytes)
{
    PixelMean mean;
    row.ForInks(x, [&](InkWord ink, uint64_t mask) {
        mean.Add(colours_->Convert(ink), static_cast<unsigned>(std::popcount(mask)));
    });
    return mean.Put(background_, samplesPerPixel_, false, bytes);
}

} // namespace vxhost::raster
