#include "host/fonts/CharWidths.h"

#include "host/fonts/FontFile.h"
#include "host/fonts/FontNames.h"
#include "host/fonts/MacRoman.h"

namespace vxhost
{

namespace
{

constexpr uint8_t kFirstVisible = 0x20;
constexpr uint8_t kDelete = 0x7F;

} // namespace

CharWidths ReadCharWidths(const std::string &file, int faceIndex)
{
    CharWidths widths = {};
    const std::unique_ptr<FontFile> font = FontFile::Open(file, faceIndex);
    if (font == nullptr) {
        widths.fill(kBoxFontWidth);
        return widths;
    }
    for (size_t byte = kFirstVisible; byte < widths.size(); ++byte) {
        if (byte != kDelete)
            widths[byte] = font->Advance(font->FindGlyph(FromMacRoman(static_cast<uint8_t>(byte))));
    }
    return widths;
}

} // namespace vxhost
