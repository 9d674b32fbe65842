#include "devices/pdf/FontObjects.h"

#include <cmath>
#include <string_view>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kMaxName = 100; // old readers take 127, other parts of the name included
constexpr int kTagLetters = 6;

// Bits of a descriptor.
constexpr int kFixedPitch = 1, kSymbolic = 4, kItalic = 64;

double Written(double length)
{
    return std::round(length * 100) / 100;
}

// Six capitals that tell this subset from others of the same font, from what is in it.
std::string SubsetTag(const std::string &bytes)
{
    uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<uint8_t>(byte)) * 0x100000001B3;
    std::string tag;
    for (int i = 0; i < kTagLetters; ++i) {
        tag += static_cast<char>('A' + hash % 26);
        hash /= 26;
    }
    return tag + "+";
}

} // namespace

std::string PlainName(const std::string &name)
{
    std::string plain;
    for (const char character : name.substr(0, kMaxName)) {
        const bool isPlain = character > ' ' && character <= '~' &&
                             std::string_view("()<>[]{}/%#").find(character) == std::string_view::npos;
        plain += isPlain ? character : '-';
    }
    return plain.empty() ? "Font" : plain;
}

double WrittenWidth(const FontProgram &program, uint32_t glyph)
{
    return Written(program.Width(glyph));
}

Failure DamagedFont(const std::string &asked)
{
    return {FailureKind::BadInput, "the font for \"" + PlainName(asked) +
                                       "\" is damaged, its glyphs cannot be embedded: use outlines for text"};
}

Failure AddDescriptor(const FontProgram &program, const std::vector<bool> &used, const std::string &asked,
                      const std::string &own, PdfFile *file, NamedDescriptor *added)
{
    const EmbeddedProgram part = program.Embed(used);
    if (part.bytes.empty())
        return DamagedFont(asked);
    added->name = program.IsSubset() ? SubsetTag(part.bytes) + own : own;
    Dictionary embedded;
    const char *key = "FontFile3";
    switch (program.Kind()) {
    case FontKind::TrueType:
        key = "FontFile2";
        embedded.Add("Length1", static_cast<double>(part.bytes.size()));
        break;
    case FontKind::NamedCff:
    case FontKind::CidCff:
        embedded.Add("Subtype", "/CIDFontType0C");
        break;
    case FontKind::Type1:
        key = "FontFile";
        embedded.Add("Length1", static_cast<double>(part.clearLength));
        embedded.Add("Length2", static_cast<double>(part.encryptedLength));
        embedded.Add("Length3", 0);
        break;
    }
    const FontMeasures measures = program.Measures();
    Dictionary descriptor;
    descriptor.Add("Type", "/FontDescriptor").Add("FontName", NameValue(added->name));
    descriptor.Add("Flags", kSymbolic | (measures.isFixedPitch ? kFixedPitch : 0) |
                                (measures.italicAngle != 0 ? kItalic : 0));
    descriptor.Add("FontBBox", ArrayValue({Written(measures.left), Written(measures.bottom),
                                           Written(measures.right), Written(measures.top)}));
    descriptor.Add("ItalicAngle", Written(measures.italicAngle)).Add("Ascent", Written(measures.ascent));
    descriptor.Add("Descent", Written(measures.descent)).Add("CapHeight", Written(measures.capHeight));
    descriptor.Add("StemV", Written(measures.stem)).Add(key, file->AddStream(embedded, part.bytes));
    added->object = file->Add(descriptor.Value());
    return {};
}

// Strings name glyphs by index, or by number in the font's own collection: the encoding is the identity.
std::string AddDescendant(const FontProgram &program, const std::vector<bool> &used, bool runsDown,
                          const NamedDescriptor &descriptor, PdfFile *file)
{
    std::map<uint32_t, uint32_t> glyphs; // by code
    for (uint32_t glyph = 0; glyph < used.size(); ++glyph) {
        if (used[glyph])
            glyphs.emplace(program.CodeOf(glyph), glyph);
    }
    std::string widths, columns;
    for (const auto &[code, glyph] : glyphs) {
        widths.append(std::to_string(code)).append(ArrayValue({WrittenWidth(program, glyph)}));
        columns.append(std::to_string(code)).append(ArrayValue({-1000, kColumnX, kColumnY}));
    }
    const CharacterCollection collection = program.Collection();
    Dictionary system;
    system.Add("Registry", TextValue(collection.registry)).Add("Ordering", TextValue(collection.ordering));
    system.Add("Supplement", collection.supplement);

    const bool isTrueType = program.Kind() == FontKind::TrueType;
    Dictionary descendant;
    descendant.Add("Type", "/Font").Add("Subtype", isTrueType ? "/CIDFontType2" : "/CIDFontType0");
    descendant.Add("BaseFont", NameValue(descriptor.name)).Add("CIDSystemInfo", system.Value());
    descendant.Add("FontDescriptor", descriptor.object).Add("W", ArrayValue(widths));
    if (runsDown)
        descendant.Add("W2", ArrayValue(columns));
    if (isTrueType)
        descendant.Add("CIDToGIDMap", "/Identity");
    return ArrayValue(ValueOf(file->Add(descendant.Value())));
}

std::string CompositeFont(const std::string &name, const std::string &descendants, Reference toUnicode,
                          bool runsDown)
{
    Dictionary font;
    font.Add("Type", "/Font").Add("Subtype", "/Type0");
    // By custom a CFF font is named together with its encoding; editors then look for a font of that whole name, in vain.
    font.Add("BaseFont", NameValue(name)).Add("Encoding", runsDown ? "/Identity-V" : "/Identity-H");
    return font.Add("DescendantFonts", descendants).Add("ToUnicode", toUnicode).Value();
}

} // namespace vxhost::pdf
