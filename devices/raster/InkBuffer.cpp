// A split pixel is marked by a bit beside the pixels, not in them, so that runs of whole pixels are plain
// words and 64 of them are tested at once.
#include "devices/raster/InkBuffer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <iterator>

namespace vxhost::raster
{

namespace
{

constexpr int kBandRows = 64;
constexpr uint32_t kChunkBlocks = 256; // blocks are allocated this many at a time

// The 16 samples of a pixel lie in one line of the cache, not across two.
struct alignas(64) CacheLine {
    InkWord words[16];
};
constexpr size_t kLineWords = std::size(CacheLine().words);

// Four samples are worked on at a time, since each step is one machine instruction then.
using FourSamples = InkWord __attribute__((vector_size(16)));

// The four samples that each four bits of a mask stand for, the lowest first: all ones where a bit is set.
constexpr auto kFourSamples = [] {
    std::array<FourSamples, 16> four = {};
    for (unsigned bits = 0; bits < 16; ++bits) {
        const auto all = [&](unsigned i) { return (bits >> i & 1) != 0 ? ~InkWord{0} : 0; };
        four[bits] = FourSamples{all(0), all(1), all(2), all(3)};
    }
    return four;
}();

// The bits of the pixels x to end, which lie in one word.
uint64_t BitsOf(int x, int end)
{
    return (~uint64_t{0} >> (64 - (end - x))) << (x & 63);
}

} // namespace

Ink FindInk(const Paint &paint, bool simulateOverprint)
{
    const bool overprint = paint.overprint && simulateOverprint;
    constexpr InkWord kAllButBlack = 0x00FFFFFF;
    Ink ink;
    ink.value = InksOf(paint.colour);
    if (!overprint)
        return ink;
    if (paint.colour.space == ColourSpace::Gray)
        ink.keep = kAllButBlack;
    for (int i = 0; i < 4 && paint.colour.space == ColourSpace::Cmyk; ++i) {
        if (paint.colour.ink[i] == 0)
            ink.keep |= InkWord{0xFF} << (8 * i);
    }
    return ink;
}

struct Band {
    std::vector<InkWord> pixels;   // ink, or the number of a block where split
    std::vector<uint64_t> split;   // one bit a pixel
    std::vector<uint64_t> painted; // one bit a pixel, for those not split; empty when not tracked
    std::vector<std::unique_ptr<CacheLine[]>> chunks;
    uint32_t blocks = 0;              // handed out so far
    std::vector<uint32_t> freeBlocks; // beside the blocks, not in them: those are far from any cache

    InkWord *Block(uint32_t number, size_t blockWords) const
    {
        return reinterpret_cast<InkWord *>(chunks[number / kChunkBlocks].get()) +
               (number % kChunkBlocks) * blockWords;
    }
};

InkBuffer::InkBuffer(int width, int height, int samples, bool tracked, MemoryCap *budget)
    : width_(width), height_(height), samples_(samples), tracked_(tracked),
      fullMask_(samples == 8 ? ~uint64_t{0} : (uint64_t{1} << (samples * samples)) - 1),
      samplesPerBlock_(static_cast<size_t>(samples * samples)),
      blockWords_(samplesPerBlock_ + (tracked ? 2 : 0)), bitWords_((static_cast<size_t>(width) + 63) / 64),
      budget_(budget), bands_((static_cast<size_t>(height) + kBandRows - 1) / kBandRows)
{
}

InkBuffer::~InkBuffer() = default;

bool InkBuffer::SelectRow(int y)
{
    std::unique_ptr<Band> &band = bands_[static_cast<size_t>(y / kBandRows)];
    if (band == nullptr) {
        const auto rows = static_cast<size_t>(std::min(kBandRows, height_ - y / kBandRows * kBandRows));
        const size_t pixels = rows * static_cast<size_t>(width_);
        const size_t words = rows * bitWords_;
        if (!budget_->Take(pixels * sizeof(InkWord) + words * sizeof(uint64_t) * (tracked_ ? 2 : 1)))
            return false;
        band = std::make_unique<Band>();
        band->pixels.assign(pixels, 0);
        band->split.assign(words, 0);
        if (tracked_)
            band->painted.assign(words, 0);
    }
    const auto row = static_cast<size_t>(y % kBandRows);
    band_ = band.get();
    pixels_ = band->pixels.data() + row * static_cast<size_t>(width_);
    split_ = band->split.data() + row * bitWords_;
    painted_ = tracked_ ? band->painted.data() + row * bitWords_ : nullptr;
    return true;
}

// Makes the pixels between the two whole again, and takes them for painted.
void InkBuffer::MakeWhole(int left, int right)
{
    for (int x = left; x < right;) {
        const int end = std::min(right, (x | 63) + 1);
        const uint64_t bits = BitsOf(x, end);
        const size_t word = static_cast<size_t>(x >> 6);
        for (uint64_t rest = split_[word] & bits; rest != 0; rest &= rest - 1)
            band_->freeBlocks.push_back(pixels_[(x & ~63) + std::countr_zero(rest)]);
        split_[word] &= ~bits;
        if (tracked_)
            painted_[word] |= bits;
        x = end;
    }
}

void InkBuffer::PaintWhole(int left, int right, const Ink &ink)
{
    if (ink.Replaces()) {
        std::fill_n(Replace(left, right), right - left, ink.value);
        return;
    }
    for (int x = left; x < right;) {
        const int end = std::min(right, (x | 63) + 1);
        const uint64_t bits = BitsOf(x, end);
        const size_t word = static_cast<size_t>(x >> 6);
        const uint64_t split = split_[word] & bits;
        for (uint64_t rest = split; rest != 0; rest &= rest - 1) {
            InkWord *block = band_->Block(pixels_[(x & ~63) + std::countr_zero(rest)], blockWords_);
            for (size_t i = 0; i < samplesPerBlock_; ++i)
                block[i] = ink.Over(block[i]);
            if (tracked_)
                block[samplesPerBlock_] = block[samplesPerBlock_ + 1] = UINT32_MAX;
        }
        for (int at = x; at < end; ++at) {
            if (((split >> (at & 63)) & 1) == 0)
                pixels_[at] = ink.Over(pixels_[at]);
        }
        if (tracked_)
            painted_[word] |= bits;
        x = end;
    }
}

void InkBuffer::PaintPart(int x, uint64_t mask, const Ink &ink)
{
    InkWord &pixel = pixels_[x];
    const size_t word = static_cast<size_t>(x >> 6);
    const uint64_t bit = uint64_t{1} << (x & 63);
    InkWord *block;
    if ((split_[word] & bit) != 0) {
        block = band_->Block(pixel, blockWords_);
    } else {
        const bool painted = !tracked_ || (painted_[word] & bit) != 0;
        if (painted && ink.Over(pixel) == pixel)
            return;
        uint32_t number = 0;
        block = TakeBlock(&number);
        if (block == nullptr)
            return;
        std::fill_n(block, samplesPerBlock_, pixel);
        if (tracked_)
            block[samplesPerBlock_] = block[samplesPerBlock_ + 1] = painted ? UINT32_MAX : 0;
        pixel = number;
        split_[word] |= bit;
    }
    uint64_t rest = mask;
    if (ink.strength != Ink::kFullStrength) {
        for (; rest != 0; rest &= rest - 1) {
            InkWord &sample = block[std::countr_zero(rest)];
            sample = ink.Over(sample);
        }
    }
    // A partly painted pixel has at least four samples.
    for (InkWord *four = block; rest != 0; four += 4, rest >>= 4) {
        const FourSamples chosen = kFourSamples[rest & 15];
        FourSamples samples;
        std::memcpy(&samples, four, sizeof samples);
        samples = (samples & ~(chosen & ~ink.keep)) | (chosen & ink.value);
        std::memcpy(four, &samples, sizeof samples);
    }
    if (tracked_) {
        block[samplesPerBlock_] |= static_cast<uint32_t>(mask);
        block[samplesPerBlock_ + 1] |= static_cast<uint32_t>(mask >> 32);
    }
}

// Null when memory has run out.
InkWord *InkBuffer::TakeBlock(uint32_t *number)
{
    if (!band_->freeBlocks.empty()) {
        *number = band_->freeBlocks.back();
        band_->freeBlocks.pop_back();
        return band_->Block(*number, blockWords_);
    }
    if (band_->blocks % kChunkBlocks == 0) {
        const size_t lines =
            kChunkBlocks * blockWords_ / kLineWords; // 256 blocks of any size fill whole lines
        if (!budget_->Take(lines * sizeof(CacheLine) + kChunkBlocks * sizeof(uint32_t)))
            return nullptr;
        band_->chunks.push_back(std::make_unique_for_overwrite<CacheLine[]>(lines));
    }
    *number = band_->blocks++;
    return band_->Block(*number, blockWords_);
}

InkBuffer::Row InkBuffer::ReadRow(int y) const
{
    Row row;
    const Band *band = bands_[static_cast<size_t>(y / kBandRows)].get();
    if (band == nullptr)
        return row;
    const auto inBand = static_cast<size_t>(y % kBandRows);
    row.pixels_ = band->pixels.data() + inBand * static_cast<size_t>(width_);
    row.split_ = band->split.data() + inBand * bitWords_;
    row.painted_ = tracked_ ? band->painted.data() + inBand * bitWords_ : nullptr;
    row.buffer_ = this;
    row.band_ = band;
    return row;
}

std::span<const InkWord> InkBuffer::Row::Samples(int x) const
{
    return {band_->Block(pixels_[x], buffer_->blockWords_), buffer_->samplesPerBlock_};
}

uint64_t InkBuffer::Row::PaintedSamples(int x) const
{
    const InkWord *painted = band_->Block(pixels_[x], buffer_->blockWords_) + buffer_->samplesPerBlock_;
    if (painted_ == nullptr)
        return buffer_->fullMask_;
    return (painted[0] | uint64_t{painted[1]} << 32) & buffer_->fullMask_;
}

} // namespace vxhost::raster
