// The mean of the samples' colours as the screen shows them: what viewers of such pictures expect of an edge.
#include "devices/raster/RowMixer.h"

#include <bit>

namespace vxhost::raster
{

RowMixer::RowMixer(ScreenColours *colours, const std::optional<Rgb> &background, int samples)
    : colours_(colours), background_(background), samplesPerPixel_(static_cast<unsigned>(samples * samples))
{
}

uint8_t *RowMixer::Put(uint8_t *bytes, Rgb rgb, unsigned alpha) const
{
    *bytes++ = rgb.r;
    *bytes++ = rgb.g;
    *bytes++ = rgb.b;
    if (!background_)
        *bytes++ = static_cast<uint8_t>(alpha);
    return bytes;
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
            bytes = Put(bytes, rgb, 255);
        } else {
            bytes = Put(bytes, unpainted, 0);
        }
    }
}

uint8_t *RowMixer::MixSamples(const InkBuffer::Row &row, int x, uint8_t *bytes)
{
    unsigned count = 0, r = 0, g = 0, b = 0;
    const auto add = [&](Rgb rgb, unsigned times) {
        r += rgb.r * times;
        g += rgb.g * times;
        b += rgb.b * times;
    };
    row.ForInks(x, [&](InkWord ink, uint64_t mask) {
        const auto samples = static_cast<unsigned>(std::popcount(mask));
        count += samples;
        add(colours_->Convert(ink), samples);
    });
    unsigned parts = count;
    if (background_) {
        add(*background_, samplesPerPixel_ - count);
        parts = samplesPerPixel_;
    }
    const auto mean = [&](unsigned sum) { return static_cast<uint8_t>((sum + parts / 2) / parts); };
    const unsigned alpha = (count * 255 + samplesPerPixel_ / 2) / samplesPerPixel_;
    return Put(bytes, {mean(r), mean(g), mean(b)}, alpha);
}

} // namespace vxhost::raster
