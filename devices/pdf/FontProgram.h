// A font file as PDF sees it: of which kind it is, whether its licence lets it be embedded, its measures, and the part
// of it that a document uses.
#pragma once

#include "host/drawing/GlyphRun.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vxhost::pdf
{

enum class FontKind : uint8_t {
    TrueType,
    NamedCff, // its glyphs have names
    CidCff,   // its glyphs have numbers of a character collection
    Type1
};

// Lengths are in 1/1000 em, the angle in degrees.
struct FontMeasures {
    double left = 0, bottom = 0, right = 0, top = 0; // of all glyphs
    double ascent = 0, descent = 0, capHeight = 0, stem = 0;
    double italicAngle = 0;
    bool isFixedPitch = false;
};

struct CharacterCollection {
    std::string registry = "Adobe";
    std::string ordering = "Identity";
    int supplement = 0;
};

// The bytes to embed. The lengths are of the two parts of a Type 1 font, 0 for the others.
struct EmbeddedProgram {
    std::string bytes;
    size_t clearLength = 0, encryptedLength = 0;
};

class FontProgram
{
  public:
    // Null when the font cannot be embedded: its licence forbids it, or its kind (variations, bitmaps, formats of
    // other systems) is none that PDF takes. Here and below lack of memory is thrown, and leaves a program that is of no
    // more use.
    static std::unique_ptr<FontProgram> Open(const TextFont &font);

    FontProgram() = default;
    FontProgram(const FontProgram &) = delete;
    FontProgram &operator=(const FontProgram &) = delete;
    virtual ~FontProgram() = default;

    virtual FontKind Kind() const = 0;
    virtual uint32_t GlyphCount() const = 0;
    virtual double Width(uint32_t glyph) const = 0; // 1/1000 em
    virtual FontMeasures Measures() const = 0;

    // The number by which strings name a glyph of a CFF or TrueType font: that in its collection, else its index.
    virtual uint32_t CodeOf(uint32_t glyph) const { return glyph; }
    virtual CharacterCollection Collection() const { return {}; }
    virtual std::string GlyphName(uint32_t) const { return {}; } // of a Type 1 font

    // The font with the glyphs that are marked, or all of them where IsSubset says no. Empty when the file turns out to
    // be damaged.
    virtual EmbeddedProgram Embed(const std::vector<bool> &used) const = 0;
    virtual bool IsSubset() const { return true; }
};

} // namespace vxhost::pdf
