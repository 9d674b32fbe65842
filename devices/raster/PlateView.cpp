// The samples of all pages are those of one page: what one point of it has of all inks is one sample of each.
#include "devices/raster/PlateView.h"

#include "devices/raster/PixelMean.h"

#include <algorithm>
#include <utility>

namespace vxhost::raster
{

PlateView::PlateView(std::span<const std::unique_ptr<Surface>> pages, std::vector<Alternate> inks,
                     const RasterOptions &options, ScreenColours *colours)
    : pages_(pages), inks_(std::move(inks)), isGray_(options.plates->isGray), background_(options.background),
      samples_(static_cast<size_t>(options.samples) * static_cast<size_t>(options.samples)),
      colours_(colours), words_(pages.size()), pixel_(pages.size())
{
}

// Returns the colour of the words. Neighbours mostly have the same.
Rgb PlateView::FindColour()
{
    if (words_ == known_)
        return colour_;
    known_ = words_;
    InkLevels levels = {};
    double total = 0;
    for (size_t i = 0; i < inks_.size(); ++i) {
        const double amount = words_[i / levels.size()] >> (8 * (i % levels.size())) & 0xFF;
        total += amount;
        for (size_t k = 0; k < levels.size(); ++k)
            levels[k] += amount * inks_[i][k];
    }
    constexpr double kFull = 255, kHalf = 0.5; // levels have a half more
    if (isGray_) {
        const auto gray = static_cast<uint8_t>(kFull - std::min(total, kFull));
        return colour_ = {gray, gray, gray};
    }
    for (double &level : levels)
        level = std::min(level, kFull) + kHalf;
    return colour_ = colours_->Convert(WordOf(levels));
}

void PlateView::Mix(int y, uint8_t *bytes)
{
    rows_.clear();
    for (const std::unique_ptr<Surface> &page : pages_)
        rows_.push_back(page->BufferOf(y).ReadRow(y));
    const int width = pages_.front()->Width();
    for (int x = 0; x < width; ++x) {
        if (std::ranges::any_of(rows_, [x](const auto &row) { return !row.IsBlank() && row.IsSplit(x); })) {
            bytes = MixSamples(x, bytes);
            continue;
        }
        bool isPainted = false;
        for (size_t i = 0; i < rows_.size(); ++i) {
            const bool isPaintedHere = !rows_[i].IsBlank() && rows_[i].IsPainted(x);
            words_[i] = isPaintedHere ? rows_[i].Pixel(x) : 0;
            isPainted |= isPaintedHere;
        }
        if (isPainted)
            bytes = PutPixel(background_, FindColour(), 255, bytes);
        else
            bytes = PutPixel(background_, background_.value_or(Rgb{0, 0, 0}), 0, bytes);
    }
}

// The mean of grays is rounded as that of plates is, which are its opposite.
uint8_t *PlateView::MixSamples(int x, uint8_t *bytes)
{
    uint64_t painted = 0;
    for (size_t i = 0; i < rows_.size(); ++i) {
        const InkBuffer::Row &row = rows_[i];
        std::array<InkWord, kMostSamples> &samples = pixel_[i];
        samples.fill(0);
        if (row.IsBlank())
            continue;
        if (row.IsSplit(x)) {
            row.ForInks(x, [&](InkWord ink, uint64_t mask) {
                painted |= mask;
                for (; mask != 0; mask &= mask - 1)
                    samples[static_cast<size_t>(std::countr_zero(mask))] = ink;
            });
        } else if (row.IsPainted(x)) {
            samples.fill(row.Pixel(x));
            painted = ~uint64_t{0} >> (kMostSamples - samples_);
        }
    }
    PixelMean mean;
    for (; painted != 0; painted &= painted - 1) {
        const auto sample = static_cast<size_t>(std::countr_zero(painted));
        for (size_t i = 0; i < rows_.size(); ++i)
            words_[i] = pixel_[i][sample];
        mean.Add(FindColour(), 1);
    }
    return mean.Put(background_, static_cast<unsigned>(samples_), isGray_, bytes);
}

} // namespace vxhost::raster
