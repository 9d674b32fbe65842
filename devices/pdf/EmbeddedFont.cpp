#include "devices/pdf/EmbeddedFont.h"

#include "devices/pdf/FontUse.h"
#include "devices/pdf/ToUnicode.h"
#include "devices/vector/Numbers.h"

#include <algorithm>

namespace vxhost::pdf
{

namespace
{

constexpr uint32_t kFirstCode = 1,
                   kLastCode = 255; // codes of one byte; 0 stays out, since some readers end strings there

} // namespace

EmbeddedFont::EmbeddedFont(std::unique_ptr<FontProgram> program, const TextFont &font)
    : program_(std::move(program)), asked_(font.asked), own_(PlainName(font.served)),
      file_(font.bytes->Path()), face_(font.faceIndex), used_(program_->GlyphCount())
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
        used.width = WrittenWidth(*program_, glyph);
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

void EmbeddedFont::AddComposite(PdfFile *file, const std::vector<bool> &used,
                                const NamedDescriptor &descriptor, Dictionary *resources) const
{
    const Part &part = parts_.front();
    const std::string descendants = AddDescendant(*program_, used, !part.nameDown.empty(), descriptor, file);
    const Reference toUnicode = file->AddStream({}, ToUnicodeMap(part.characters, 2));
    const auto add = [&](const std::string &resource, bool runsDown) {
        if (!resource.empty())
            resources->Add(resource,
                           file->Add(CompositeFont(descriptor.name, descendants, toUnicode, runsDown)));
    };
    add(part.nameAcross, false);
    add(part.nameDown, true);
}

void EmbeddedFont::AddSimple(PdfFile *file, const NamedDescriptor &descriptor, Dictionary *resources) const
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
        font.Add("Type", "/Font").Add("Subtype", "/Type1").Add("BaseFont", NameValue(descriptor.name));
        font.Add("FirstChar", kFirstCode);
        font.Add("LastChar", kFirstCode + static_cast<double>(part.glyphs.size()) - 1);
        font.Add("Widths", ArrayValue(widths)).Add("Encoding", encoding.Value());
        font.Add("FontDescriptor", descriptor.object);
        font.Add("ToUnicode", file->AddStream({}, ToUnicodeMap(part.characters, 1)));
        if (!part.nameAcross.empty())
            resources->Add(part.nameAcross, file->Add(font.Value()));
    }
}

// The program is cut to see that it can be: the joined file has another cut of it.
Failure EmbeddedFont::AddUse(PdfFile *file, const std::vector<bool> &used, Dictionary *resources) const
{
    if (program_->Embed(used).bytes.empty())
        return DamagedFont(asked_);
    FontUse use = {file_, face_, asked_, own_};
    for (uint32_t glyph = 0; glyph < used.size(); ++glyph) {
        if (used[glyph])
            use.characters.emplace(glyph, used_[glyph].character);
    }
    const auto add = [&](const std::string &resource, bool runsDown) {
        use.runsDown = runsDown;
        if (!resource.empty())
            resources->Add(resource, file->Add(ValueOf(use)));
    };
    add(parts_.front().nameAcross, false);
    add(parts_.front().nameDown, true);
    return {};
}

Failure EmbeddedFont::AddTo(PdfFile *file, bool isToBeJoined, Dictionary *resources) const
{
    if (parts_.empty())
        return {};
    std::vector<bool> used(used_.size());
    std::transform(used_.begin(), used_.end(), used.begin(), [](const Used &glyph) { return glyph.isUsed; });
    if (isToBeJoined && CodeBytes() == 2 && !file_.empty())
        return AddUse(file, used, resources);
    NamedDescriptor descriptor;
    if (Failure failure = AddDescriptor(*program_, used, asked_, own_, file, &descriptor))
        return failure;
    if (CodeBytes() == 2)
        AddComposite(file, used, descriptor, resources);
    else
        AddSimple(file, descriptor, resources);
    return {};
}

} // namespace vxhost::pdf
