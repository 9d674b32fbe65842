#include "devices/pdf/EmbeddedFont.h"

#include "devices/pdf/ToUnicode.h"
#include "devices/vector/Numbers.h"

#include <algorithm>
#include <cmath>

namespace vxhost::pdf
{

namespace
{

constexpr uint32_t kFirstCode = 1,
                   kLastCode = 255; // codes of one byte; 0 stays out, since some readers end strings there
constexpr size_t kMaxName = 100;    // old readers take 127, other parts of the name included
constexpr int kTagLetters = 6;

// Bits of a descriptor.
constexpr int kFixedPitch = 1, kSymbolic = 4, kItalic = 64;

// A width as it is written, rounded to 1/100 of 1/1000 em: readers place what follows by that.
double Written(double width)
{
    return std::round(width * 100) / 100;
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

// The printable characters of a name that are no delimiters: old readers stumble over others.
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

} // namespace

EmbeddedFont::EmbeddedFont(std::unique_ptr<FontProgram> program, const TextFont &font)
    : program_(std::move(program)), asked_(font.asked), own_(PlainName(font.served)),
      used_(program_->GlyphCount())
{
}

void EmbeddedFont::SetNumber(size_t number)
{
    resource_.assign(1, 'F');
    resource_ += std::to_string(number);
}

GlyphCode EmbeddedFont::Use(uint32_t glyph, char32_t character)
{
    Used &used = used_[glyph < used_.size() ? glyph : 0];
    if (!used.isUsed) {
        glyph = static_cast<uint32_t>(&used - used_.data());
        used.isUsed = true;
        used.width = Written(program_->Width(glyph));
        used.character = character;
        if (CodeBytes() == 2)
            used.code = program_->CodeOf(glyph);
        else if (parts_.empty() || parts_.back().glyphs.size() == kLastCode - kFirstCode + 1)
            parts_.emplace_back();
        if (parts_.empty())
            parts_.emplace_back();
        Part &part = parts_.back();
        used.part = static_cast<uint32_t>(parts_.size() - 1);
        if (CodeBytes() == 1)
            used.code = kFirstCode + static_cast<uint32_t>(part.glyphs.size());
        part.glyphs.emplace(used.code, glyph);
        part.characters.emplace(used.code, character);
    }
    return {used.part, used.code, used.width, used.character != character};
}

const std::string &EmbeddedFont::ResourceName(uint32_t part, bool runsDown)
{
    std::string &name = runsDown ? parts_[part].nameDown : parts_[part].nameAcross;
    if (!name.empty())
        return name;
    name = resource_ + (runsDown ? "V" : "");
    if (part > 0)
        name.append(1, '.').append(std::to_string(part));
    return name;
}

std::string EmbeddedFont::BaseName(const EmbeddedProgram &program) const
{
    return program_->IsSubset() ? SubsetTag(program.bytes) + own_ : own_;
}

Reference EmbeddedFont::AddDescriptor(PdfFile *file, const EmbeddedProgram &program,
                                      const std::string &name) const
{
    const FontMeasures measures = program_->Measures();
    Dictionary embedded;
    const char *key = "FontFile3";
    switch (program_->Kind()) {
    case FontKind::TrueType:
        key = "FontFile2";
        embedded.Add("Length1", static_cast<double>(program.bytes.size()));
        break;
    case FontKind::NamedCff:
    case FontKind::CidCff:
        embedded.Add("Subtype", "/CIDFontType0C");
        break;
    case FontKind::Type1:
        key = "FontFile";
        embedded.Add("Length1", static_cast<double>(program.clearLength));
        embedded.Add("Length2", static_cast<double>(program.encryptedLength));
        embedded.Add("Length3", 0);
        break;
    }
    Dictionary descriptor;
    descriptor.Add("Type", "/FontDescriptor").Add("FontName", NameValue(name));
    descriptor.Add("Flags", kSymbolic | (measures.isFixedPitch ? kFixedPitch : 0) |
                                (measures.italicAngle != 0 ? kItalic : 0));
    descriptor.Add("FontBBox", ArrayValue({Written(measures.left), Written(measures.bottom),
                                           Written(measures.right), Written(measures.top)}));
    descriptor.Add("ItalicAngle", Written(measures.italicAngle)).Add("Ascent", Written(measures.ascent));
    descriptor.Add("Descent", Written(measures.descent)).Add("CapHeight", Written(measures.capHeight));
    descriptor.Add("StemV", Written(measures.stem)).Add(key, file->AddStream(embedded, program.bytes));
    return file->Add(descriptor.Value());
}

// Strings name glyphs by index, or by number in the font's own collection: the encoding is the identity.
void EmbeddedFont::AddComposite(PdfFile *file, Reference descriptor, const std::string &name,
                                Dictionary *resources) const
{
    const Part &part = parts_.front();
    std::string widths, columns;
    for (const auto &[code, glyph] : part.glyphs) {
        widths.append(std::to_string(code)).append(ArrayValue({used_[glyph].width}));
        columns.append(std::to_string(code)).append(ArrayValue({-1000, kColumnX, kColumnY}));
    }
    const CharacterCollection collection = program_->Collection();
    Dictionary system;
    system.Add("Registry", TextValue(collection.registry)).Add("Ordering", TextValue(collection.ordering));
    system.Add("Supplement", collection.supplement);

    const bool isTrueType = program_->Kind() == FontKind::TrueType;
    Dictionary descendant;
    descendant.Add("Type", "/Font").Add("Subtype", isTrueType ? "/CIDFontType2" : "/CIDFontType0");
    descendant.Add("BaseFont", NameValue(name)).Add("CIDSystemInfo", system.Value());
    descendant.Add("FontDescriptor", descriptor).Add("W", ArrayValue(widths));
    if (!part.nameDown.empty())
        descendant.Add("W2", ArrayValue(columns));
    if (isTrueType)
        descendant.Add("CIDToGIDMap", "/Identity");
    const std::string descendants = ArrayValue(ValueOf(file->Add(descendant.Value())));
    const Reference toUnicode = file->AddStream({}, ToUnicodeMap(part.characters, 2));

    const auto add = [&](const std::string &resource, const std::string &encoding) {
        if (resource.empty())
            return;
        Dictionary font;
        font.Add("Type", "/Font").Add("Subtype", "/Type0");
        // By custom a CFF font is named together with its encoding; editors then look for a font of that whole name, in vain.
        font.Add("BaseFont", NameValue(name));
        font.Add("Encoding", NameValue(encoding)).Add("DescendantFonts", descendants);
        resources->Add(resource, file->Add(font.Add("ToUnicode", toUnicode).Value()));
    };
    add(part.nameAcross, "Identity-H");
    add(part.nameDown, "Identity-V");
}

void EmbeddedFont::AddSimple(PdfFile *file, Reference descriptor, const std::string &name,
                             Dictionary *resources) const
{
    for (const Part &part : parts_) {
        std::string widths, names = std::to_string(kFirstCode);
        for (const auto &[code, glyph] : part.glyphs) {
            widths.append(FactorText(used_[glyph].width)).append(" ");
            names += NameValue(program_->GlyphName(glyph));
        }
        Dictionary encoding;
        encoding.Add("Type", "/Encoding").Add("Differences", ArrayValue(names));
        Dictionary font;
        font.Add("Type", "/Font").Add("Subtype", "/Type1").Add("BaseFont", NameValue(name));
        font.Add("FirstChar", kFirstCode);
        font.Add("LastChar", kFirstCode + static_cast<double>(part.glyphs.size()) - 1);
        font.Add("Widths", ArrayValue(widths)).Add("Encoding", encoding.Value());
        font.Add("FontDescriptor", descriptor);
        font.Add("ToUnicode", file->AddStream({}, ToUnicodeMap(part.characters, 1)));
        if (!part.nameAcross.empty())
            resources->Add(part.nameAcross, file->Add(font.Value()));
    }
}

Failure EmbeddedFont::AddTo(PdfFile *file, Dictionary *resources) const
{
    if (parts_.empty())
        return {};
    std::vector<bool> glyphs(used_.size());
    std::transform(used_.begin(), used_.end(), glyphs.begin(), [](const Used &used) { return used.isUsed; });
    const EmbeddedProgram program = program_->Embed(glyphs);
    if (program.bytes.empty())
        return {FailureKind::BadInput,
                "the font for \"" + PlainName(asked_) +
                    "\" is damaged, its glyphs cannot be embedded: use outlines for text"};
    const std::string name = BaseName(program);
    const Reference descriptor = AddDescriptor(file, program, name);
    if (CodeBytes() == 2)
        AddComposite(file, descriptor, name, resources);
    else
        AddSimple(file, descriptor, name, resources);
    return {};
}

} // namespace vxhost::pdf
