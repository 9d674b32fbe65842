// The fonts of a joined file: each once, with the glyphs that any page uses.
#pragma once

#include "devices/pdf/FontUse.h"
#include "devices/pdf/PdfFile.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vxhost::pdf
{

class JoinedFonts
{
  public:
    // Returns what the page refers to as its font; it is added to the file at the end.
    Reference Take(const FontUse &use, PdfFile *file);
    Failure AddTo(PdfFile *file) const;

  private:
    // A glyph may stand for one character on a page and for another on the next: those pages have a table of characters each.
    struct Meaning {
        std::map<uint32_t, char32_t> characters; // by glyph
        std::optional<Reference> across, down;
    };
    struct Font {
        std::string asked, own;
        std::set<uint32_t> glyphs;
        std::vector<Meaning> meanings;
        bool runsDown = false;
    };

    static Meaning &MeaningOf(const FontUse &use, std::vector<Meaning> *meanings);

    std::map<std::pair<std::string, int>, Font> fonts_; // by file and face
};

} // namespace vxhost::pdf
