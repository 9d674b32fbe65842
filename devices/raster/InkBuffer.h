// The picture in inks: 8 bits each of cyan, magenta, yellow and black.
//
// A pixel that no edge crosses is one word. A pixel on an edge has N × N samples of its own in a block that
// its word names, until something covers the whole pixel again. Bands of rows come into being when they are
// first painted.
#pragma once

#include "devices/colour/Inks.h"
#include "devices/raster/MemoryCap.h"

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

// Without overprint every paint replaces all inks.
Ink FindInk(const Paint &paint, bool simulateOverprint);

struct Band; // 64 rows

class InkBuffer
{
  public:
    // samples: a side of a pixel, 1 to 8. tracked: the buffer also knows which samples were painted at all.
    InkBuffer(int width, int height, int samples, bool tracked, MemoryCap *budget);
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

    // Fetches a pixel of the selected row that is painted soon: rows lie far from each other in memory.
    void Prefetch(int x) const { __builtin_prefetch(pixels_ + x, 1); }

    bool IsWhole(uint64_t mask) const { return mask == fullMask_; }
    // The pixels left ≤ x < right, for the caller to fill: all of their samples are replaced.
    InkWord *Replace(int left, int right)
    {
        MakeWhole(left, right);
        return pixels_ + left;
    }

    int Width() const { return width_; }
    int Height() const { return height_; }
    int Samples() const { return samples_; }

    // A row as it is, for reading.
    class Row
    {
      public:
        bool IsBlank() const { return pixels_ == nullptr; } // nothing was ever painted near it
        bool IsSplit(int x) const { return TestBit(split_, x); }
        InkWord Pixel(int x) const { return pixels_[x]; } // for a pixel that is not split
        bool IsPainted(int x) const { return painted_ == nullptr || TestBit(painted_, x); } // likewise
        std::span<const InkWord> Samples(int x) const;
        uint64_t PaintedSamples(int x) const;

      private:
        friend class InkBuffer;
        static bool TestBit(const uint64_t *bits, int x) { return ((bits[x >> 6] >> (x & 63)) & 1) != 0; }

        const InkWord *pixels_ = nullptr;
        const uint64_t *split_ = nullptr;
        const uint64_t *painted_ = nullptr;
        const InkBuffer *buffer_ = nullptr;
        const Band *band_ = nullptr;
    };
    Row ReadRow(int y) const;

  private:
    InkWord *TakeBlock(uint32_t *number);
    void PaintWhole(int left, int right, const Ink &ink);
    void MakeWhole(int left, int right);
    void PaintPart(int x, uint64_t mask, const Ink &ink);

    const int width_, height_, samples_;
    const bool tracked_;
    const uint64_t fullMask_;
    const size_t samplesPerBlock_;
    const size_t blockWords_; // the samples, then two words of painted bits where those are tracked
    const size_t bitWords_;   // of one row
    MemoryCap *const budget_;
    std::vector<std::unique_ptr<Band>> bands_;

    // The selected row.
    Band *band_ = nullptr;
    InkWord *pixels_ = nullptr;
    uint64_t *split_ = nullptr;
    uint64_t *painted_ = nullptr; // null when not tracked
};

} // namespace vxhost::raster
