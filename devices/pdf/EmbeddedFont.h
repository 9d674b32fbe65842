// A font of the document: which of its glyphs are used, by which codes strings name them, and the objects that say all
// that in the file.
//
// TrueType and CFF fonts have codes of two bytes. A Type 1 font has codes of one byte, given out in the order of first
// use; where 255 do not do, it is several fonts with the same program.
#pragma once

#include "devices/pdf/FontObjects.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vxhost::pdf
{

struct GlyphCode {
    uint32_t part = 0; // which of its fonts has the glyph
    uint32_t code = 0;
    double width = 0;          // 1/1000 em
    bool needsOwnText = false; // the code stands for another character elsewhere
};

class EmbeddedFont
{
  public:
    // The file gives the font its own name, whatever the document calls it.
    EmbeddedFont(std::unique_ptr<FontProgram> program, const TextFont &font);

    const std::string &AskedName() const { return asked_; }
    const std::string &OwnName() const { return own_; }

    // The number tells the document's fonts apart. It has to be set before the first glyph is used.
    void SetNumber(size_t number);
    bool HasNumber() const { return !resource_.empty(); }

    bool CanRunDown() const { return program_->Kind() != FontKind::Type1; }
    int CodeBytes() const { return program_->Kind() == FontKind::Type1 ? 1 : 2; }

    GlyphCode Use(uint32_t glyph, char32_t character);
    // The name of a part's resource. The part is written to the file from now on.
    const std::string &ResourceName(uint32_t part, bool runsDown);

    // Adds what was used to the file and to the page's fonts. A page that is to be joined to others says what it uses of
    // the font where that is enough, and who joins them adds the font. Returns what went wrong, if something did.
    Failure AddTo(PdfFile *file, bool isToBeJoined, Dictionary *resources) const;

  private:
    struct Used {
        bool isUsed = false;
        uint32_t part = 0, code = 0;
        double width = 0;
        char32_t character = 0;
    };
    struct Part { // codes of one font object
        std::map<uint32_t, char32_t> characters;
        std::map<uint32_t, uint32_t> glyphs;
        std::string nameAcross, nameDown; // of resources; empty: not used
    };

    Failure AddUse(PdfFile *file, const std::vector<bool> &used, Dictionary *resources) const;
    void AddComposite(PdfFile *file, const std::vector<bool> &used, const NamedDescriptor &descriptor,
                      Dictionary *resources) const;
    void AddSimple(PdfFile *file, const NamedDescriptor &descriptor, Dictionary *resources) const;

    std::unique_ptr<FontProgram> program_;
    std::string asked_, own_;
    std::string file_;       // that the program is in; empty: in none
    int face_ = 0;           // of it
    std::string resource_;   // the start of the names of its resources; empty: it has no number yet
    std::vector<Used> used_; // by glyph
    std::vector<Part> parts_;
};

} // namespace vxhost::pdf
