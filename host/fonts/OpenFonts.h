// The files of a document's fonts as one parse opens them, each when it is first needed, and what is read of them: widths, and
// what devices that set text need to know.
//
// It is for one thread at a time.
#pragma once

#include "host/Outcome.h"
#include "host/drawing/GlyphRun.h"
#include "host/fonts/CharWidths.h"
#include "host/fonts/DocumentFonts.h"
#include "host/fonts/FontFile.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

class OpenFonts final : public WidthSource
{
  public:
    // The list must outlive this object.
    explicit OpenFonts(const DocumentFonts &list);

    const DocumentFonts &List() const { return list_; }

    // Each opens the file. index is that of the list.
    const FontFile *FileOf(int32_t index);     // null: boxes
    bool GoesByBytes(int32_t index);           // whether its file finds symbols by their bytes
    const TextFont *TextFontOf(int32_t index); // null: boxes; the same object each time
    FontUse Describe(int32_t index);           // asked, served, file and match; nothing is counted yet

    int32_t CharWidth(int16_t number, int16_t character) override;
    const CharWidths *Widths(int16_t number) override;

  private:
    struct Opened {
        SharedFontBytes bytes;
        std::unique_ptr<FontFile> file;
        std::unique_ptr<CharWidths> widths;
        std::unique_ptr<TextFont> textFont;
        bool isOpened = false;
        bool goesByBytes = false; // known with the file
    };

    SharedFontBytes BytesOf(const FontList::Entry &entry);

    const DocumentFonts &list_;
    std::vector<Opened> opened_;                   // beside the list's entries
    std::map<std::string, SharedFontBytes> files_; // by path; null: it cannot be read
};

} // namespace vxhost
