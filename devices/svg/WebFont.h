// A font of a document, to be carried inside a picture or named there: what may be embedded, which characters it is asked
// for, and the small font of those alone.
#pragma once

#include "host/drawing/GlyphRun.h"
#include "host/fonts/FontFile.h"
#include "host/fonts/Owned.h"

#include <hb-subset.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace vxhost::svg
{

// How a style sheet names the font where it is installed.
struct FontNames {
    std::string family; // UTF-8, without quotes, backslashes and control characters; never empty
    const char *generic = "sans-serif";
    int weight = 400;
    bool isItalic = false;
    const char *stretch = "normal";
};

enum class WebFontUse : uint8_t { Carried, Named };

class WebFont
{
  public:
    // Null: the font cannot be told by its name; or it is to be carried, and the licence in its own bits forbids that, or
    // browsers do not take fonts of that kind. Here and below lack of memory is thrown, and leaves a font that is of no more
    // use.
    static std::unique_ptr<WebFont> Open(const TextFont &font, WebFontUse use = WebFontUse::Carried);

    const FontNames &Names() const { return names_; }

    // Takes the character into the embedded font, if that shows the glyph for it; false if not.
    bool Take(char32_t character, uint32_t glyph);
    // By how many ems a viewer that kerns sets the second character nearer or farther than the widths say. An em where
    // it would make one glyph of both.
    double Kerning(char32_t first, char32_t second);
    // In ems, y up.
    const Path &Outline(uint32_t glyph);

    // The font with the characters that were reached. Empty when the file turns out to be damaged, or there are none.
    std::vector<std::byte> MakeSubset() const;

  private:
    struct Known {
        char32_t character = 0;
        uint32_t glyph = 0;
        bool isReached = false;
    };

    struct KnownPair {
        char32_t first = 0, second = 0;
        double kerning = 0;
    };
    static constexpr size_t kKnownPairs = 4096;

    WebFont() : pairs_(kKnownPairs) {}
    static std::unique_ptr<WebFont> OpenFace(const TextFont &font, WebFontUse use);
    double FindKerning(char32_t first, char32_t second) const;
    std::vector<std::byte> CutSubset() const;
    void FindNames(const TextFont &font);

    Owned<hb_face_t, hb_face_destroy> face_;
    Owned<hb_font_t, hb_font_destroy> font_; // of the face, in ems of 16.16
    std::unique_ptr<FontFile> file_;
    FontNames names_;
    std::array<Known, 256> known_; // at the place of a character's last byte, the latest of each
    std::vector<KnownPair> pairs_; // at a place that follows from both characters, the latest of each
    Owned<hb_set_t, hb_set_destroy> reached_;
    std::unordered_map<uint32_t, Path> outlines_;
};

} // namespace vxhost::svg
