// The font list of one document: the machine's fonts, and what serves each further name that the document asks for.
//
// It knows in which character set the text of each font stands. It opens no file: OpenFonts does. It is immutable once
// built, so that threads may share it.
#pragma once

#include "host/fonts/FontList.h"
#include "host/fonts/FontNameScan.h"
#include "host/fonts/TextEncoding.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vxhost
{

struct DocumentFontOptions {
    std::vector<AskedFont> asked;
    std::map<std::string, std::string> served; // by the user's own choice: name asked for, PostScript name
    bool substitute = true;                    // false: names that nothing serves stay out of the list
    bool isCodePage1252 = false;               // Roman text in fonts that are not re-encoded
    std::optional<Script>
        systemScript; // for text whose font does not say its script; none: as the fonts suggest
};

class DocumentFonts final : public FontList
{
  public:
    DocumentFonts(const FontList &installed, const DocumentFontOptions &options);

    int32_t Count() const override { return static_cast<int32_t>(entries_.size()); }
    const Entry &At(int32_t index) const override { return entries_[static_cast<size_t>(index)]; }
    int32_t Find(std::string_view postScriptName) const;  // -1: not in the list
    int32_t FindFor(std::string_view asked) const;        // the same, whatever its suffixes
    Script SystemScript() const { return systemScript_; } // to be told to the plug-in
    TextEncoding EncodingOf(int32_t index) const { return details_[static_cast<size_t>(index)].encoding; }
    // The name as the document writes it, or that in the list if the document does not ask for the font.
    const std::string &AskedName(int32_t index) const;

  private:
    struct Detail {
        TextEncoding encoding = TextEncoding::MacRoman;
        std::string asked; // as the document writes it; empty: as the entry is named
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
