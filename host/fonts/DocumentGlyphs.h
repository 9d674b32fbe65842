// The glyphs of a document's text: bytes decoded by the font's character set, outlines from the font's file.
//
// Owns a bounded cache of outlines, and the account of which fonts were used and what they lacked.
#pragma once

#include "host/drawing/GlyphSource.h"
#include "host/fonts/OpenFonts.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace vxhost
{

class DocumentGlyphs final : public GlyphSource
{
  public:
    // The fonts must outlive this object.
    explicit DocumentGlyphs(OpenFonts *fonts) : fonts_(fonts) {}

    const TextFont *OpenFont(std::string_view fontName) override;
    void BeginString(std::string_view fontName, bool isNew) override;
    Glyph Next(std::span<const uint8_t> text, bool isUpright) override;
    std::vector<FontUse> FontsUsed() const override { return uses_; }

  private:
    struct CachedGlyph {
        Path outline;
        uint64_t number = 0; // of the outline
        uint32_t glyph = 0;
        bool isMissing = false;
    };
    struct FoundGlyph {
        Glyph glyph;
        bool isMissing = false;
        bool isKnown = false;
    };
    using BytesOfFont = std::array<FoundGlyph, 256>; // bytes that are characters, not set in a column

    FoundGlyph FindCharacter(std::span<const uint8_t> text, bool isUpright);
    void ForgetGlyphs();
    BytesOfFont *BytesOf(int32_t font);
    CachedGlyph MakeGlyph(char32_t character, bool isUpright, bool isWide) const;
    const CachedGlyph &FindGlyph(char32_t character, bool isUpright, bool isWide);

    OpenFonts *fonts_;
    std::map<std::string, TextFont, std::less<>> boxFonts_; // by the names that nothing serves
    int32_t font_ = -1; // of the current string; -1: boxes, since no font of the list serves it
    size_t use_ = 0;    // that font's place in uses_
    bool isNew_ = true; // the current string is counted
    std::vector<FontUse> uses_;
    std::map<std::string, size_t, std::less<>> useOfName_;
    std::unordered_map<uint64_t, CachedGlyph> cache_;
    size_t cachedPoints_ = 0;
    uint64_t outlines_ = 0; // made so far
    // The characters of most text are found without a search. Points into the cache.
    std::unordered_map<int32_t, BytesOfFont> bytesOfFonts_;
    BytesOfFont *bytes_ = nullptr; // of the current font
};

} // namespace vxhost
