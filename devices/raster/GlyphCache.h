// What was found out about the glyphs of a page, for those that come again: the lines of an outline under a matrix; their
// spans for a fraction of y; and for a fraction of x the masks of the pixels.
//
// Of x only the interval matters in which its fraction lies, between two of those at which an end of a span goes over to
// the next sample. Whatever is kept is what would be made anew, to the last bit, and when there is no room for more all
// of it is forgotten.
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

// A glyph at one fraction of y.
class KeptSpans
{
  public:
    int32_t fractionY = 0;
    GlyphSpans spans;
    size_t accounted = 0; // of its bytes

    // The masks for that fraction of x: from the third use on kept ones, before that made in scratch.
    const GlyphMasks &FindMasksAt(int32_t fractionX, int shift, GlyphMasks *scratch);
    // Makes room for others.
    void Clear();
    size_t Bytes() const;

  private:
    void FindTurns(int shift);

    int uses_ = 0;
    std::vector<uint16_t> turns_;  // the fractions of x from which on an end of a span is a sample farther
    std::vector<uint16_t> placed_; // for each interval in a pixel its place in masks_, from 1 on; 0: not made
    std::vector<GlyphMasks> masks_;
    size_t maskBytes_ = 0; // behind the pointers of masks_
};

// An outline under a matrix, with its spans for the last few fractions of y: the glyphs of a line have one.
struct KeptGlyph {
    GlyphShape shape;
    bool isMade = false, fits = false;
    std::vector<KeptSpans> spans;
    size_t oldest = 0; // the place of those that are replaced next

    // Those for that fraction of y; isNew: they are still to be found.
    KeptSpans *SpansFor(int32_t fractionY, bool *isNew);
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
    // Tells what something of the glyph in use took, and what it takes now.
    void Account(size_t before, size_t now);

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
