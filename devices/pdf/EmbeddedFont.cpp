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

QPDFObjectHandle Real(double value)
{
    return MakeNumber(Written(value));
}

QPDFObjectHandle Integer(int64_t value)
{
    return QPDFObjectHandle::newInteger(value);
}

} // namespace

EmbeddedFont::EmbeddedFont(std::unique_ptr<FontProgram> program, const std::string &asked)
    : program_(std::move(program)), asked_(PlainName(asked)), used_(program_->GlyphCount())
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
    return program_->IsSubset() ? SubsetTag(program.bytes) + asked_ : asked_;
}

QPDFObjectHandle EmbeddedFont::Descriptor(PdfFile *file, const EmbeddedProgram &program,
                                          const std::string &name) const
{
    const FontMeasures measures = program_->Measures();
    QPDFObjectHandle embedded = QPDFObjectHandle::newDictionary();
    const char *key = "/FontFile3";
    switch (program_->Kind()) {
    case FontKind::TrueType:
        key = "/FontFile2";
        embedded.replaceKey("/Length1", Integer(static_cast<int64_t>(program.bytes.size())));
        break;
    case FontKind::NamedCff:
    case FontKind::CidCff:
        embedded.replaceKey("/Subtype", MakeName("CIDFontType0C"));
        break;
    case FontKind::Type1:
        key = "/FontFile";
        embedded.replaceKey("/Length1", Integer(static_cast<int64_t>(program.clearLength)));
        embedded.replaceKey("/Length2", Integer(static_cast<int64_t>(program.encryptedLength)));
        embedded.replaceKey("/Length3", Integer(0));
        break;
    }
    QPDFObjectHandle descriptor = QPDFObjectHandle::newDictionary();
    descriptor.replaceKey("/Type", MakeName("FontDescriptor"));
    descriptor.replaceKey("/FontName", MakeName(name));
    descriptor.replaceKey("/Flags", Integer(kSymbolic | (measures.isFixedPitch ? kFixedPitch : 0) |
                                            (measures.italicAngle != 0 ? kItalic : 0)));
    descriptor.replaceKey("/FontBBox",
                          QPDFObjectHandle::newArray({Real(measures.left), Real(measures.bottom),
                                                      Real(measures.right), Real(measures.top)}));
    descriptor.replaceKey("/ItalicAngle", Real(measures.italicAngle));
    descriptor.replaceKey("/Ascent", Real(measures.ascent));
    descriptor.replaceKey("/Descent", Real(measures.descent));
    descriptor.replaceKey("/CapHeight", Real(measures.capHeight));
    descriptor.replaceKey("/StemV", Real(measures.stem));
    descriptor.replaceKey(key, file->AddStream(embedded, program.bytes));
    return file->Add(descriptor);
}

// Strings name glyphs by index, or by number in the font's own collection: the encoding is the identity.
void EmbeddedFont::AddComposite(PdfFile *file, const QPDFObjectHandle &descriptor, const std::string &name,
                                QPDFObjectHandle *resources) const
{
    const Part &part = parts_.front();
    QPDFObjectHandle widths = QPDFObjectHandle::newArray(), columns = QPDFObjectHandle::newArray();
    for (const auto &[code, glyph] : part.glyphs) {
        const double width = used_[glyph].width;
        widths.appendItem(Integer(code));
        widths.appendItem(QPDFObjectHandle::newArray({Real(width)}));
        columns.appendItem(Integer(code));
        columns.appendItem(QPDFObjectHandle::newArray({Integer(-1000), Real(kColumnX), Real(kColumnY)}));
    }
    const CharacterCollection collection = program_->Collection();
    QPDFObjectHandle system = QPDFObjectHandle::newDictionary();
    system.replaceKey("/Registry", QPDFObjectHandle::newString(collection.registry));
    system.replaceKey("/Ordering", QPDFObjectHandle::newString(collection.ordering));
    system.replaceKey("/Supplement", Integer(collection.supplement));

    const bool isTrueType = program_->Kind() == FontKind::TrueType;
    QPDFObjectHandle descendant = QPDFObjectHandle::newDictionary();
    descendant.replaceKey("/Type", MakeName("Font"));
    descendant.replaceKey("/Subtype", MakeName(isTrueType ? "CIDFontType2" : "CIDFontType0"));
    descendant.replaceKey("/BaseFont", MakeName(name));
    descendant.replaceKey("/CIDSystemInfo", system);
    descendant.replaceKey("/FontDescriptor", descriptor);
    descendant.replaceKey("/W", widths);
    if (!part.nameDown.empty())
        descendant.replaceKey("/W2", columns);
    if (isTrueType)
        descendant.replaceKey("/CIDToGIDMap", MakeName("Identity"));
    descendant = file->Add(descendant);
    const QPDFObjectHandle toUnicode =
        file->AddStream(QPDFObjectHandle::newDictionary(), ToUnicodeMap(part.characters, 2));

    const auto add = [&](const std::string &resource, const std::string &encoding) {
        if (resource.empty())
            return;
        QPDFObjectHandle font = QPDFObjectHandle::newDictionary();
        font.replaceKey("/Type", MakeName("Font"));
        font.replaceKey("/Subtype", MakeName("Type0"));
        // A CFF font is named together with its encoding, by custom.
        font.replaceKey("/BaseFont", MakeName(isTrueType ? name : name + "-" + encoding));
        font.replaceKey("/Encoding", MakeName(encoding));
        font.replaceKey("/DescendantFonts", QPDFObjectHandle::newArray({descendant}));
        font.replaceKey("/ToUnicode", toUnicode);
        resources->replaceKey(KeyOf(resource), file->Add(font));
    };
    add(part.nameAcross, "Identity-H");
    add(part.nameDown, "Identity-V");
}

void EmbeddedFont::AddSimple(PdfFile *file, const QPDFObjectHandle &descriptor, const std::string &name,
                             QPDFObjectHandle *resources) const
{
    for (const Part &part : parts_) {
        QPDFObjectHandle widths = QPDFObjectHandle::newArray(), names = QPDFObjectHandle::newArray();
        names.appendItem(Integer(kFirstCode));
        for (const auto &[code, glyph] : part.glyphs) {
            widths.appendItem(Real(used_[glyph].width));
            names.appendItem(MakeName(program_->GlyphName(glyph)));
        }
        QPDFObjectHandle encoding = QPDFObjectHandle::newDictionary();
        encoding.replaceKey("/Type", MakeName("Encoding"));
        encoding.replaceKey("/Differences", names);
        QPDFObjectHandle font = QPDFObjectHandle::newDictionary();
        font.replaceKey("/Type", MakeName("Font"));
        font.replaceKey("/Subtype", MakeName("Type1"));
        font.replaceKey("/BaseFont", MakeName(name));
        font.replaceKey("/FirstChar", Integer(kFirstCode));
        font.replaceKey("/LastChar", Integer(kFirstCode + static_cast<int64_t>(part.glyphs.size()) - 1));
        font.replaceKey("/Widths", widths);
        font.replaceKey("/Encoding", encoding);
        font.replaceKey("/FontDescriptor", descriptor);
        font.replaceKey("/ToUnicode",
                        file->AddStream(QPDFObjectHandle::newDictionary(), ToUnicodeMap(part.characters, 1)));
        if (!part.nameAcross.empty())
            resources->replaceKey(KeyOf(part.nameAcross), file->Add(font));
    }
}

Failure EmbeddedFont::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    if (parts_.empty())
        return {};
    std::vector<bool> glyphs(used_.size());
    std::transform(used_.begin(), used_.end(), glyphs.begin(), [](const Used &used) { return used.isUsed; });
    const EmbeddedProgram program = program_->Embed(glyphs);
    if (program.bytes.empty())
        return {FailureKind::BadInput,
                "the font for \"" + asked_ +
                    "\" is damaged, its glyphs cannot be embedded: use outlines for text"};
    const std::string name = BaseName(program);
    const QPDFObjectHandle descriptor = Descriptor(file, program, name);
    if (CodeBytes() == 2)
        AddComposite(file, descriptor, name, resources);
    else
        AddSimple(file, descriptor, name, resources);
    return {};
}

} // namespace vxhost::pdf
