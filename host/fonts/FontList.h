// The fonts that the plug-in may name, in the order in which it searches them; and where one parse gets the widths of
// their characters.
//
// A list is immutable once built, so that threads may share it. What is opened or remembered for a parse is that
// parse's own: a WidthSource is for one thread at a time.
#pragma once

#include "host/fonts/FontBytes.h"
#include "host/fonts/NameTraits.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

// The width of each byte of text, in ems, 16.16.
using CharWidths = std::array<int32_t, 256>;

class FontList
{
  public:
    struct Entry {
        std::string postScriptName; // at most 255 bytes
        std::string familyName;
        std::string file;      // empty: it came from memory, or there is none and boxes are drawn
        SharedFontBytes bytes; // of a font from memory; null: it is in the file
        int faceIndex = 0; // as fontconfig counts: the face in its file, plus 65536 times the named variation
        std::string
            servedBy; // PostScript name of the font in file when it stands in for this one, else empty
        FaceStyle style;
        uint8_t scripts = 0;       // of the font in file: bits by Script
        bool isSubstitute = false; // what serves it is of another design

        bool IsDrawn() const { return !file.empty() || bytes != nullptr; } // else boxes are
        const std::string &ServedName() const { return servedBy.empty() ? postScriptName : servedBy; }
        bool HasScript(Script script) const { return (scripts >> static_cast<int>(script) & 1) != 0; }
        bool HasEastAsianScript() const { return scripts >> 1 != 0; }
    };

    virtual ~FontList() = default;
    virtual int32_t Count() const = 0;
    virtual const Entry &At(int32_t index) const = 0; // 0 <= index < Count()
};

class WidthSource
{
  public:
    virtual ~WidthSource() = default;
    // Width of one byte of text in ems, 16.16. number is the index of the font's entry.
    virtual int32_t CharWidth(int16_t number, int16_t character) = 0;
    // The widths of all bytes, where they are known together; else null. Valid as long as this object.
    virtual const CharWidths *Widths(int16_t) { return nullptr; }
};

} // namespace vxhost
