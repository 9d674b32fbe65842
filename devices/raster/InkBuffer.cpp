// A split pixel is marked by a bit beside the pixels, not in them, so that runs of whole pixels are plain
// words and 64 of them are tested at once.
//
// Pairs and blocks hold the same samples as one word a sample would: whatever a paint makes of the two inks, the outcome
// is kept as a pair when it has two, and as a block when it may have more.
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
constexpr size_t kChunkTiles = 64;     // and tiles

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

struct Band {
    std::vector<InkWord> pixels;
    std::vector<uint64_t> split, blocked, painted; // painted is empty when not tracked
    std::vector<uint64_t *> tiles;
    std::vector<std::unique_ptr<CacheLine[]>> tileChunks, chunks; // of tiles, and of blocks
    size_t tilesMade = 0;
    uint32_t blocks = 0;              // handed out so far
    std::vector<uint32_t> freeBlocks; // beside the blocks, not in them: those are far from any cache

    InkWord *Block(uint32_t number, size_t blockWords) const
    {
        return reinterpret_cast<InkWord *>(chunks[number / kChunkBlocks].get()) +
               (number % kChunkBlocks) * blockWords;
    }
    RowPlaces Row(size_t row, size_t width, size_t rowWords, size_t rowTiles)
    {
        const size_t word = row * rowWords;
        return {pixels.data() + row * width, split.data() + word, blocked.data() + word,
                painted.empty() ? nullptr : painted.data() + word, tiles.data() + row * rowTiles};
    }
};

InkBuffer::InkBuffer(int width, int height, int samples, bool tracked, MemoryCap *budget, int top)
    : width_(width), height_(height), samples_(samples), top_(top), tracked_(tracked),
      fullMask_(samples == 8 ? ~uint64_t{0} : (uint64_t{1} << (samples * samples)) - 1),
      samplesPerBlock_(static_cast<size_t>(samples * samples)),
      blockWords_(samplesPerBlock_ + (tracked ? 2 : 0)), pairWords_(samples == 8 ? 3 : 1),
      rowWords_(static_cast<size_t>(width) / 64 + 1), rowTiles_(static_cast<size_t>(width) / kTilePixels + 1),
      budget_(budget), bands_((static_cast<size_t>(height) + kBandRows - 1) / kBandRows)
{
}

InkBuffer::~InkBuffer() = default;

bool InkBuffer::SelectRow(int y)
{
    y -= top_;
    std::unique_ptr<Band> &band = bands_[static_cast<size_t>(y / kBandRows)];
    if (band == nullptr) {
        const auto rows = static_cast<size_t>(std::min(kBandRows, height_ - y / kBandRows * kBandRows));
        const size_t pixels = rows * static_cast<size_t>(width_);
        const size_t words = rows * rowWords_, tiles = rows * rowTiles_;
        if (!budget_->Take(pixels * sizeof(InkWord) + words * sizeof(uint64_t) * (tracked_ ? 3 : 2) +
                           tiles * sizeof(band->tiles.front())))
            return false;
        band = std::make_unique<Band>();
        band->pixels.assign(pixels, 0);
        band->split.assign(words, 0);
        band->blocked.assign(words, 0);
        if (tracked_)
            band->painted.assign(words, 0);
        band->tiles.assign(tiles, nullptr);
    }
    band_ = band.get();
    row_ = band->Row(static_cast<size_t>(y % kBandRows), static_cast<size_t>(width_), rowWords_, rowTiles_);
    return true;
}

// Makes the pixels between the two whole again, and takes them for painted.
void InkBuffer::MakeWhole(int left, int right)
{
    for (int x = left; x < right;) {
        const int end = std::min(right, (x | 63) + 1);
        const uint64_t bits = BitsOf(x, end);
        const size_t word = static_cast<size_t>(x >> 6);
        for (uint64_t rest = row_.blocked[word] & bits; rest != 0; rest &= rest - 1)
            band_->freeBlocks.push_back(row_.pixels[(x & ~63) + std::countr_zero(rest)]);
        row_.blocked[word] &= ~bits;
        row_.split[word] &= ~bits;
        if (tracked_)
            row_.painted[word] |= bits;
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
        const uint64_t blocked = row_.blocked[word] & bits;
        for (uint64_t rest = blocked; rest != 0; rest &= rest - 1) {
            InkWord *block = band_->Block(row_.pixels[(x & ~63) + std::countr_zero(rest)], blockWords_);
            for (size_t i = 0; i < samplesPerBlock_; ++i)
                block[i] = ink.Over(block[i]);
            if (tracked_)
                block[samplesPerBlock_] = block[samplesPerBlock_ + 1] = UINT32_MAX;
        }
        for (uint64_t rest = row_.split[word] & bits & ~blocked; rest != 0; rest &= rest - 1) {
            const int at = (x & ~63) + std::countr_zero(rest);
            const Pair pair = LoadPair(row_, at);
            StorePair(at, {ink.Over(pair.second), pair.mask, fullMask_});
        }
        for (int at = x; at < end; ++at) {
            if (((blocked >> (at & 63)) & 1) == 0)
                row_.pixels[at] = ink.Over(row_.pixels[at]);
        }
        if (tracked_)
            row_.painted[word] |= bits;
        x = end;
    }
}

void InkBuffer::PaintMasks(int left, std::span<const MaskedRun> runs, const Ink &ink)
{
    const bool replaces = ink.Replaces();
    for (const MaskedRun &run : runs) {
        const int begin = left + run.column, end = begin + run.count;
        if (run.mask == fullMask_) {
            PaintWhole(begin, end, ink);
            continue;
        }
        for (int x = begin; x < end; ++x) {
            const uint64_t bit = uint64_t{1} << (x & 63);
            const size_t word = static_cast<size_t>(x >> 6);
            if ((row_.split[word] & bit) != 0) {
                if ((row_.blocked[word] & bit) != 0)
                    PaintBlock(x, run.mask, ink);
                else
                    PaintPair(x, run.mask, ink);
            } else if (!tracked_ && replaces) {
                if (row_.pixels[x] == ink.value || (row_.tiles[x >> kTileShift] == nullptr && !MakeTile(x)))
                    continue;
                StorePair(x, {ink.value, run.mask, fullMask_});
                row_.split[word] |= bit;
            } else {
                Split(x, run.mask, ink);
            }
        }
    }
}

void InkBuffer::PrefetchRow(int y, int left, int right) const
{
    y -= top_;
    Band *band = bands_[static_cast<size_t>(y / kBandRows)].get();
    if (band == nullptr)
        return;
    const auto row = static_cast<size_t>(y % kBandRows);
    const InkWord *pixels = band->pixels.data() + row * static_cast<size_t>(width_);
    __builtin_prefetch(pixels + left, 1);
    __builtin_prefetch(pixels + right, 1);
    uint64_t *const *tiles = band->tiles.data() + row * rowTiles_;
    for (int tile = left >> kTileShift; tile <= right >> kTileShift; ++tile) {
        if (tiles[tile] != nullptr) {
            __builtin_prefetch(tiles[tile], 1);
            __builtin_prefetch(tiles[tile] + 8, 1);
        }
    }
}

void InkBuffer::PrefetchMasks(int y, int left, std::span<const MaskedRun> runs) const
{
    y -= top_;
    Band *band = bands_[static_cast<size_t>(y / kBandRows)].get();
    if (band == nullptr || band->blocks == 0)
        return;
    const auto row = static_cast<size_t>(y % kBandRows);
    const uint64_t *blocked = band->blocked.data() + row * rowWords_;
    const InkWord *inks = band->pixels.data() + row * static_cast<size_t>(width_);
    for (const MaskedRun &run : runs) {
        if (run.mask == fullMask_)
            continue;
        for (int x = left + run.column, end = x + run.count; x < end; ++x) {
            if (TestBit(blocked, x))
                __builtin_prefetch(band->Block(inks[x], blockWords_), 1);
        }
    }
}

void InkBuffer::PrefetchBlocks(size_t word, uint64_t bits) const
{
    const InkWord *pixels = row_.pixels + word * 64;
    for (uint64_t rest = bits & row_.blocked[word]; rest != 0; rest &= rest - 1)
        __builtin_prefetch(band_->Block(pixels[std::countr_zero(rest)], blockWords_), 1);
}

void InkBuffer::PaintPart(int x, uint64_t mask, const Ink &ink)
{
    if (!TestBit(row_.split, x))
        Split(x, mask, ink);
    else if (!TestBit(row_.blocked, x))
        PaintPair(x, mask, ink);
    else
        PaintBlock(x, mask, ink);
}

// Paints a part of a pixel that has one ink.
void InkBuffer::Split(int x, uint64_t mask, const Ink &ink)
{
    const InkWord first = row_.pixels[x], second = ink.Over(first);
    const bool painted = !tracked_ || TestBit(row_.painted, x);
    if ((painted && second == first) || !MakeTile(x))
        return;
    StorePair(x, {second, mask, painted ? fullMask_ : mask});
    row_.split[x >> 6] |= BitsOf(x, x + 1);
}

void InkBuffer::PaintPair(int x, uint64_t mask, const Ink &ink)
{
    InkWord &first = row_.pixels[x];
    Pair pair = LoadPair(row_, x);
    pair.painted |= mask;
    const InkWord overFirst = ink.Over(first), overSecond = ink.Over(pair.second);
    // Samples that have the ink already do not change.
    const uint64_t firsts = overFirst == first ? 0 : mask & ~pair.mask;
    const uint64_t seconds = overSecond == pair.second ? 0 : mask & pair.mask;
    const uint64_t changed = firsts | seconds, rest = fullMask_ & ~changed;
    const InkWord over = firsts != 0 ? overFirst : overSecond;
    const bool becomeOne = firsts == 0 || seconds == 0 || overFirst == overSecond;
    if (changed == 0 || (becomeOne && over == first)) {
        pair.mask &= rest;
    } else if (becomeOne && over == pair.second) {
        pair.mask |= changed;
    } else if (becomeOne && (rest & pair.mask) == 0) {
        pair.second = over;
        pair.mask = changed;
    } else if (becomeOne && (rest & ~pair.mask) == 0) {
        first = over;
        pair.mask = rest;
    } else {
        if (MakeBlock(x, pair))
            PaintBlock(x, mask, ink);
        return;
    }
    StorePair(x, pair);
    if (pair.painted != fullMask_ || (pair.mask != 0 && pair.mask != fullMask_))
        return;
    const InkWord left = pair.mask == 0 ? first : pair.second;
    *Replace(x, x + 1) = left;
}

void InkBuffer::PaintBlock(int x, uint64_t mask, const Ink &ink)
{
    InkWord *block = band_->Block(row_.pixels[x], blockWords_);
    if (ink.strength != Ink::kFullStrength) {
        for (uint64_t rest = mask; rest != 0; rest &= rest - 1) {
            InkWord &sample = block[std::countr_zero(rest)];
            sample = ink.Over(sample);
        }
    } else {
        // A partly painted pixel has at least four samples.
        for (size_t i = 0; i < samplesPerBlock_; i += 4) {
            const FourSamples chosen = kFourSamples[mask >> i & 15];
            FourSamples samples;
            std::memcpy(&samples, block + i, sizeof samples);
            samples = (samples & ~(chosen & ~ink.keep)) | (chosen & ink.value);
            std::memcpy(block + i, &samples, sizeof samples);
        }
    }
    if (tracked_) {
        block[samplesPerBlock_] |= static_cast<uint32_t>(mask);
        block[samplesPerBlock_ + 1] |= static_cast<uint32_t>(mask >> 32);
    }
}

// False when memory has run out.
bool InkBuffer::MakeTile(int x)
{
    uint64_t *&tile = row_.tiles[x >> kTileShift];
    if (tile != nullptr)
        return true;
    const size_t tileLines = kTilePixels * pairWords_ * sizeof(uint64_t) / sizeof(CacheLine);
    const size_t inChunk = band_->tilesMade % kChunkTiles;
    if (inChunk == 0) {
        const size_t lines = kChunkTiles * tileLines;
        if (!budget_->Take(lines * sizeof(CacheLine)))
            return false;
        band_->tileChunks.push_back(std::make_unique_for_overwrite<CacheLine[]>(lines));
    }
    ++band_->tilesMade;
    tile = reinterpret_cast<uint64_t *>(band_->tileChunks.back().get() + inChunk * tileLines);
    return true;
}

// Gives the pixel a block in place of its pair. False when memory has run out.
bool InkBuffer::MakeBlock(int x, const Pair &pair)
{
    InkWord &pixel = row_.pixels[x];
    uint32_t number = band_->blocks;
    if (!band_->freeBlocks.empty()) {
        number = band_->freeBlocks.back();
        band_->freeBlocks.pop_back();
    } else {
        if (number % kChunkBlocks == 0) {
            const size_t lines =
                kChunkBlocks * blockWords_ / kLineWords; // 256 blocks of any size fill whole lines
            if (!budget_->Take(lines * sizeof(CacheLine) + kChunkBlocks * sizeof(uint32_t)))
                return false;
            band_->chunks.push_back(std::make_unique_for_overwrite<CacheLine[]>(lines));
        }
        ++band_->blocks;
    }
    InkWord *block = band_->Block(number, blockWords_);
    for (size_t i = 0; i < samplesPerBlock_; ++i)
        block[i] = (pair.mask >> i & 1) != 0 ? pair.second : pixel;
    if (tracked_) {
        block[samplesPerBlock_] = static_cast<uint32_t>(pair.painted);
        block[samplesPerBlock_ + 1] = static_cast<uint32_t>(pair.painted >> 32);
    }
    pixel = number;
    row_.blocked[x >> 6] |= BitsOf(x, x + 1);
    return true;
}

InkBuffer::Row InkBuffer::ReadRow(int y) const
{
    y -= top_;
    Row row;
    Band *band = bands_[static_cast<size_t>(y / kBandRows)].get();
    if (band == nullptr)
        return row;
    row.row_ =
        band->Row(static_cast<size_t>(y % kBandRows), static_cast<size_t>(width_), rowWords_, rowTiles_);
    row.buffer_ = this;
    row.band_ = band;
    return row;
}

uint64_t InkBuffer::Row::FindBlock(int x, const InkWord **samples) const
{
    const InkWord *block = band_->Block(row_.pixels[x], buffer_->blockWords_);
    const InkWord *painted = block + buffer_->samplesPerBlock_;
    *samples = block;
    if (row_.painted == nullptr)
        return buffer_->fullMask_;
    return (painted[0] | uint64_t{painted[1]} << 32) & buffer_->fullMask_;
}

} // namespace vxhost::raster
