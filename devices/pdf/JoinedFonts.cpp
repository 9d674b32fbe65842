#include "devices/pdf/JoinedFonts.h"

#include "devices/pdf/FontObjects.h"
#include "devices/pdf/ToUnicode.h"

#include <algorithm>

namespace vxhost::pdf
{

// Returns the first that says nothing else of a glyph.
JoinedFonts::Meaning &JoinedFonts::MeaningOf(const FontUse &use, std::vector<Meaning> *meanings)
{
    const auto agrees = [&](const Meaning &meaning) {
        return std::ranges::all_of(use.characters, [&](const auto &entry) {
            const auto found = meaning.characters.find(entry.first);
            return found == meaning.characters.end() || found->second == entry.second;
        });
    };
    const auto found = std::ranges::find_if(*meanings, agrees);
    Meaning &meaning = found != meanings->end() ? *found : meanings->emplace_back();
    meaning.characters.insert(use.characters.begin(), use.characters.end());
    return meaning;
}

Reference JoinedFonts::Take(const FontUse &use, PdfFile *file)
{
    Font &font = fonts_.try_emplace({use.file, use.face}, Font{use.asked, use.own, {}, {}}).first->second;
    for (const auto &[glyph, character] : use.characters)
        font.glyphs.insert(glyph);
    font.runsDown = font.runsDown || use.runsDown;
    Meaning &meaning = MeaningOf(use, &font.meanings);
    std::optional<Reference> &reference = use.runsDown ? meaning.down : meaning.across;
    if (!reference)
        reference = file->Reserve();
    return *reference;
}

Failure JoinedFonts::AddTo(PdfFile *file) const
{
    for (const auto &[place, font] : fonts_) {
        const TextFont source = {font.asked, font.own, FontBytes::Open(place.first), place.second};
        const std::unique_ptr<FontProgram> program = FontProgram::Open(source);
        if (program == nullptr || program->Kind() == FontKind::Type1 ||
            (!font.glyphs.empty() && *font.glyphs.rbegin() >= program->GlyphCount()))
            return DamagedFont(font.asked); // it was another when the pages were drawn
        std::vector<bool> used(program->GlyphCount());
        for (const uint32_t glyph : font.glyphs)
            used[glyph] = true;
        NamedDescriptor descriptor;
        if (Failure failure = AddDescriptor(*program, used, font.asked, font.own, file, &descriptor))
            return failure;
        const std::string descendants = AddDescendant(*program, used, font.runsDown, descriptor, file);
        for (const Meaning &meaning : font.meanings) {
            std::map<uint32_t, char32_t> characterOfCode;
            for (const auto &[glyph, character] : meaning.characters)
                characterOfCode.emplace(program->CodeOf(glyph), character);
            const Reference toUnicode = file->AddStream({}, ToUnicodeMap(characterOfCode, 2));
            const auto add = [&](const std::optional<Reference> &reference, bool runsDown) {
                if (reference)
                    file->AddReserved(*reference,
                                      CompositeFont(descriptor.name, descendants, toUnicode, runsDown));
            };
            add(meaning.across, false);
            add(meaning.down, true);
        }
    }
    return {};
}

} // namespace vxhost::pdf
