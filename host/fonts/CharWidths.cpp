#include "host/fonts/CharWidths.h"

#include "host/fonts/FontNames.h"
#include "host/fonts/GlyphChoice.h"
#include "host/fonts/NameTraits.h"

namespace vxhost
{

namespace
{

constexpr int32_t kOneEm = 0x10000;
constexpr uint8_t kFirstVisible = 0x20;
constexpr uint8_t kDelete = 0x7F;

// Each stands in every font of its symbol set.
constexpr char32_t kAlpha = 0x03B1;
constexpr char32_t kScissors = 0x2702;

} // namespace

bool GoesByBytes(const FontFile &file, std::string_view postScriptName, TextEncoding encoding)
{
    if (SymbolSetOfName(postScriptName) != encoding)
        return false;
    return file.FindGlyph(encoding == TextEncoding::Symbol ? kAlpha : kScissors) == 0;
}

CharWidths ReadCharWidths(const FontFile *file, TextEncoding encoding, bool goesByBytes)
{
    CharWidths widths = {};
    for (size_t i = kFirstVisible; i < widths.size(); ++i) {
        const auto byte = static_cast<uint8_t>(i);
        if (byte == kDelete)
            continue;
        if (IsLeadByte(encoding, byte)) {
            widths[i] = kOneEm;
        } else if (file == nullptr) {
            widths[i] = kBoxFontWidth;
        } else {
            const char32_t character = goesByBytes ? byte : DecodeCharacter(encoding, {&byte, 1}).character;
            widths[i] = file->Advance(ChooseGlyph(*file, character));
        }
    }
    return widths;
}

} // namespace vxhost
