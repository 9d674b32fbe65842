// The picture in inks: 8 bits each of cyan, magenta, yellow and black.
//
// A pixel that no edge crosses is one word. A pixel on an edge is split: nearly always it holds two inks, its word and
// that of a pair beside it, whose mask says which samples have the second. Only a third ink takes a block of N × N
// samples, which the pixel's word then names. What covers the pixel makes it whole again. Bands of rows come into being
// when they are first painted, and the pairs of 16 neighbours when the first of them is split.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/raster/MemoryCap.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vxhost::raster
{

// What one paint does to a sample: the inks in keep stay, the others become those of value, or go towards them by
// as much as strength says.
struct Ink {
    static constexpr int kFullStrength = 256;

    InkWord value = 0; // nothing in kept inks
    InkWord keep = 0;
    int strength = kFullStrength;

    bool Replaces() const { return keep == 0 && strength == kFullStrength; }
    InkWord Over(InkWord below) const
    {
        const InkWord full = (below & keep) | value;
        return strength == kFullStrength ? full : Mix(below, full);
    }

  private:
    InkWord Mix(InkWord below, InkWord above) const
    {
        InkWord mixed = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            const auto from = static_cast<int>((below >> shift) & 0xFF),
                       to = static_cast<int>((above >> shift) & 0xFF);
            mixed |= static_cast<InkWord>(from + ((to - from) * strength + kFullStrength / 2) / kFullStrength)
                     << shift;
        }
        return mixed;
    }
};

struct Band; // 64 rows

// Points to all that belongs to a row of pixels: a word a pixel, three bits a pixel, a tile for 16 pixels.
struct RowPlaces {
    InkWord *pixels = nullptr;   // the ink, the first of two, or the number of a block
    uint64_t *split = nullptr;   // has several inks
    uint64_t *blocked = nullptr; // and a block for them
    uint64_t *painted = nullptr; // was painted, of those not split; null when not tracked
    uint64_t **tiles = nullptr;  // of pairs: null as long as none of its pixels was split
};

// A split pixel of two inks has this besides its word, which is the first ink.
struct Pair {
    InkWord second;
    uint64_t mask;    // the samples that have the second ink
    uint64_t painted; // those that were painted at all; all of them when not tracked
};

// So many neighbours some columns on, of which the same samples are meant; a pixel has 16 at most.
struct MaskedRun {
    uint16_t column;
    uint16_t count;
    uint16_t mask;
};

class InkBuffer
{
  public:
    // samples: a side of a pixel, 1 to 8. tracked: the buffer also knows which samples were painted at all.
    // Its rows are counted from top, which may be one further down a page.
    InkBuffer(int width, int height, int samples, bool tracked, MemoryCap *budget, int top = 0);
    ~InkBuffer();
    InkBuffer(const InkBuffer &) = delete;
    InkBuffer &operator=(const InkBuffer &) = delete;

    // Chooses the row that Paint is for. False when there is no memory left for it: then nothing can be painted there.
    bool SelectRow(int y);

    // Paints the pixels left ≤ x < right of the selected row: the samples of mask in each of them. Bit r · N
    // + c of a mask is the sample in row r and column c of the pixel.
    void Paint(int left, int right, uint64_t mask, const Ink &ink)
    {
        if (mask == fullMask_)
            PaintWhole(left, right, ink);
        else
            for (int x = left; x < right; ++x)
                PaintPart(x, mask, ink);
    }

    // Paints pixels of the selected row, counted from left.
    void PaintMasks(int left, std::span<const MaskedRun> runs, const Ink &ink);
    // These fetch what that paints in row y: the pixels from left to right, and once they are there, their blocks.
    void PrefetchRow(int y, int left, int right) const;
    void PrefetchMasks(int y, int left, std::span<const MaskedRun> runs) const;

    // These fetch what is painted soon in the selected row, since rows lie far from each other in memory: a pixel with
    // its pair, and once pixels are there, the blocks that they name: those of bits, of the 64 that word says.
    void Prefetch(int x) const
    {
        __builtin_prefetch(row_.pixels + x, 1);
        if (row_.tiles[x >> kTileShift] != nullptr)
            __builtin_prefetch(FindPair(row_, x), 1);
    }
    void PrefetchBlocks(size_t word, uint64_t bits) const;

    bool IsWhole(uint64_t mask) const { return mask == fullMask_; }
    // The pixels left ≤ x < right, for the caller to fill: all of their samples are replaced.
    InkWord *Replace(int left, int right)
    {
        MakeWhole(left, right);
        return row_.pixels + left;
    }

    int Width() const { return width_; }
    int Top() const { return top_; }
    int Height() const { return height_; }
    int Samples() const { return samples_; }

    // A row as it is, for reading.
    class Row
    {
      public:
        bool IsBlank() const { return row_.pixels == nullptr; } // nothing was ever painted near it
        bool IsSplit(int x) const { return TestBit(row_.split, x); }
        InkWord Pixel(int x) const { return row_.pixels[x]; } // for a pixel that is not split
        bool IsPainted(int x) const                           // likewise
        {
            return row_.painted == nullptr || TestBit(row_.painted, x);
        }
        // Calls use(ink, mask) for the inks of a split pixel, with the painted samples that have it, of which there may
        // be none. An ink may come again with other samples.
        template <class Use>
        void ForInks(int x, Use &&use) const
        {
            if (!TestBit(row_.blocked, x)) {
                const Pair pair = buffer_->LoadPair(row_, x);
                use(row_.pixels[x], pair.painted & ~pair.mask);
                use(pair.second, pair.painted & pair.mask);
                return;
            }
            const InkWord *samples = nullptr;
            for (uint64_t rest = FindBlock(x, &samples); rest != 0; rest &= rest - 1)
                use(samples[std::countr_zero(rest)], rest & -rest);
        }

      private:
        friend class InkBuffer;
        uint64_t FindBlock(int x, const InkWord **samples) const; // returns which are painted

        RowPlaces row_;
        const InkBuffer *buffer_ = nullptr;
        const Band *band_ = nullptr;
    };
    Row ReadRow(int y) const;

  private:
    static constexpr int kTileShift = 4, kTilePixels = 1 << kTileShift;

    static bool TestBit(const uint64_t *bits, int x) { return ((bits[x >> 6] >> (x & 63)) & 1) != 0; }
    uint64_t *FindPair(const RowPlaces &row, int x) const
    {
        return row.tiles[x >> kTileShift] + static_cast<size_t>(x & (kTilePixels - 1)) * pairWords_;
    }
    Pair LoadPair(const RowPlaces &row, int x) const
    {
        const uint64_t *words = FindPair(row, x);
        if (pairWords_ == 1)
            return {static_cast<InkWord>(*words), *words >> 32 & 0xFFFF, *words >> 48};
        return {static_cast<InkWord>(words[0]), words[1], words[2]};
    }
    void StorePair(int x, const Pair &pair)
    {
        uint64_t *words = FindPair(row_, x);
        words[0] = pair.second;
        if (pairWords_ == 1) {
            words[0] |= pair.mask << 32 | pair.painted << 48;
        } else {
            words[1] = pair.mask;
            words[2] = pair.painted;
        }
    }
    bool MakeTile(int x);
    bool MakeBlock(int x, const Pair &pair);
    void MakeWhole(int left, int right);
    void PaintWhole(int left, int right, const Ink &ink);
    void PaintPart(int x, uint64_t mask, const Ink &ink);
    void Split(int x, uint64_t mask, const Ink &ink);
    void PaintPair(int x, uint64_t mask, const Ink &ink);
    void PaintBlock(int x, uint64_t mask, const Ink &ink);

    const int width_, height_, samples_, top_;
    const bool tracked_;
    const uint64_t fullMask_;
    const size_t samplesPerBlock_;
    const size_t blockWords_; // the samples, then two words of painted bits where those are tracked
    const size_t pairWords_;  // three, or one with room for masks of 16 bits
    const size_t rowWords_,
        rowTiles_; // of bits and of tiles, with room for the pixel behind a row, where spans may end
    MemoryCap *const budget_;
    std::vector<std::unique_ptr<Band>> bands_;

    // The selected row.
    Band *band_ = nullptr;
    RowPlaces row_;
};

} // namespace vxhost::raster
