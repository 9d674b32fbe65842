// The font list of one document: the machine's fonts, and what serves each further name that the document asks for.
//
// Knows in which character set the text of each font stands, and opens the font files, each when it is first needed.
// For one thread at a time.
#pragma once

#include "host/Outcome.h"
#include "host/drawing/GlyphRun.h"
#include "host/fonts/CharWidths.h"
#include "host/fonts/FontFile.h"
#include "host/fonts/FontList.h"
#include "host/fonts/FontNameScan.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vxhost
{

struct DocumentFontOptions {
    std::vector<AskedFont> asked;
    std::map<std::string, std::string> served; // by the user's own choice: name asked for, PostScript name
    bool substitute = true;                    // false: names that nothing serves stay out of the list
    bool isCodePage1252 = false;               // Roman text in fonts that are not re-encoded
    std::optional<Script>
        systemScript; // of text whose font does not say its script; none: as the fonts suggest
};

class DocumentFonts final : public FontList
{
  public:
    DocumentFonts(const FontList &installed, const DocumentFontOptions &options);

    int32_t Count() const override { return static_cast<int32_t>(entries_.size()); }
    const Entry &At(int32_t index) const override { return entries_[static_cast<size_t>(index)]; }
    int32_t CharWidth(int16_t number, int16_t character) const override
    {
        return (*Widths(number))[static_cast<uint8_t>(character)];
    }
    const CharWidths *Widths(int16_t number) const override;

    int32_t Find(std::string_view postScriptName) const;  // -1: not in the list
    int32_t FindFor(std::string_view asked) const;        // the same, whatever its suffixes
    Script SystemScript() const { return systemScript_; } // to be told to the plug-in
    TextEncoding EncodingOf(int32_t index) const { return details_[static_cast<size_t>(index)].encoding; }
    const FontFile *FileOf(int32_t index) const;     // null: boxes
    bool GoesByBytes(int32_t index) const;           // its file finds the glyphs of signs by their bytes
    const TextFont *TextFontOf(int32_t index) const; // null: boxes; the same object each time
    // Asked, served, file and match; nothing counted yet.
    FontUse Describe(int32_t index) const;

  private:
    struct Detail {
        TextEncoding encoding = TextEncoding::MacRoman;
        std::string asked; // as the document writes it; empty: as the entry is named
        mutable std::unique_ptr<CharWidths> widths;
        mutable std::unique_ptr<FontFile> file;
        mutable std::unique_ptr<TextFont> textFont;
        mutable bool isFileOpened = false;
        mutable bool goesByBytes = false; // known with the file
    };

    void IndexNames();
    void AddAsked(const FontList &installed, const DocumentFontOptions &options);
    void ChooseEncodings(const DocumentFontOptions &options);
    Script FindSystemScript(const DocumentFontOptions &options) const;

    std::vector<Entry> entries_;
    std::vector<Detail> details_; // beside entries_
    Script systemScript_ = Script::Roman;
    std::unordered_map<std::string, int32_t> byName_;
    std::unordered_map<std::string, int32_t>
        byBareName_; // without suffixes; the first of each, as the plug-in searches
};

} // namespace vxhost
