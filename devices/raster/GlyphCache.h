// Keeps what was found out about the glyphs of a page for when they come again: the lines of an outline under a matrix, and
// their spans for the last few fractions of y.
//
// Whatever is kept is what would be made anew, to the last bit, and when there is no room for more all of it is
// forgotten. Masks of pixels are not kept: there are hundreds of places in a pixel where they differ, and they are made
// faster than they are fetched from memory.
#pragma once

#include "devices/raster/GlyphShape.h"
#include "devices/raster/MemoryCap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace vxhost::raster
{

// An outline under a matrix. The glyphs of a line have one fraction of y.
class KeptGlyph
{
  public:
    GlyphShape shape;
    bool isMade = false, fits = false;

    // The spans for that fraction of y; isNew: they are still to be found.
    GlyphSpans *SpansFor(int32_t fractionY, bool *isNew);
    size_t Bytes() const;
    size_t accounted = 0; // of them

  private:
    struct Kept {
        int32_t fractionY;
        GlyphSpans spans;
    };
    std::vector<Kept> kept_;
    size_t oldest_ = 0; // the place of those that are replaced next
};

class GlyphCache final : public Borrower
{
  public:
    GlyphCache() = default;
    ~GlyphCache() override { Forget(); }

    // Forgets everything, and borrows so much at most from now on. The cap must outlive what is held.
    void Reset(size_t maxBytes, MemoryCap *cap);
    void GiveBack() override;

    // Chooses the matrix of the glyphs that follow.
    void SetMatrix(const Matrix &emsToSamples);
    // A glyph is in use until Release, and nothing is forgotten as long as one is. It may be a new one.
    KeptGlyph *Use(uint64_t number);
    void Release();
    // To be called when the glyph in use has grown.
    void Account(KeptGlyph *glyph);

  private:
    using Glyphs = std::unordered_map<uint64_t, KeptGlyph>; // by their numbers

    void Forget();

    size_t maxBytes_ = 0;
    MemoryCap *cap_ = nullptr;
    size_t borrowed_ = 0;
    bool isUsed_ = false, isFull_ = false;
    std::array<double, 4> matrix_ = {};
    Glyphs *glyphs_ = nullptr; // of that matrix; null: not looked for
    std::map<std::array<double, 4>, Glyphs> glyphsOf_;
};

} // namespace vxhost::raster
