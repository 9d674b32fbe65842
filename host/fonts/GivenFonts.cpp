#include "host/fonts/GivenFonts.h"

#include "host/fonts/FontLibrary.h"
#include "host/fonts/NameTraits.h"
#include "host/fonts/Owned.h"

#include FT_FONT_FORMATS_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

constexpr FT_Long kMaxFaces = 256;

// A weight or a width as OpenType counts it, and as we do.
struct Step {
    int openType, ours;
};

constexpr Step kWeights[] = {{100, -40}, {200, -20}, {300, -15}, {350, -12}, {380, -2}, {400, 0},
                             {500, 3},   {600, 16},  {700, 20},  {800, 20},  {900, 21}, {1000, 22}};
constexpr Step kWidths[] = {{1, -40}, {2, -29}, {3, -20}, {4, -10}, {5, 0},
                            {6, 10},  {7, 20},  {8, 40},  {9, 80}};

// Between two steps: the one below.
template <size_t kCount>
int StepOf(const Step (&steps)[kCount], int value)
{
    int ours = steps[0].ours;
    for (const Step &step : steps)
        ours = value >= step.openType ? step.ours : ours;
    return ours;
}

const TT_OS2 *OpenTypeFacts(FT_Face face)
{
    constexpr FT_UShort kNone = 0xFFFF; // is the version where there is no table
    const auto *facts = static_cast<const TT_OS2 *>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    return facts == nullptr || facts->version == kNone ? nullptr : facts;
}

// A font of the old format says it by its name; the tables of another go before that.
FaceStyle StyleOf(FT_Face face, const std::string &name)
{
    FaceStyle style = TraitsOfName(name).style;
    if (const TT_OS2 *facts = OpenTypeFacts(face)) {
        style.weight = StepOf(kWeights, facts->usWeightClass);
        style.width = StepOf(kWidths, facts->usWidthClass);
        style.isSlanted = false;
    }
    style.isSlanted = style.isSlanted || (face->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
    return style;
}

// Codes of two bytes.
struct Codes {
    uint8_t firstLead, lastLead, firstTrail, lastTrail;
};

// The syllables, and the characters of the first level.
constexpr Codes kJapanese[] = {{0x82, 0x82, 0x9F, 0xF1},
                               {0x83, 0x83, 0x40, 0x96},
                               {0x88, 0x88, 0x9F, 0xFC},
                               {0x89, 0x97, 0x40, 0xFC},
                               {0x98, 0x98, 0x40, 0x72}};
constexpr Codes kChinese[] = {{0xA4, 0xC5, 0x40, 0xFE}, {0xC6, 0xC6, 0x40, 0x7E}};
constexpr Codes kKorean[] = {{0xB0, 0xC8, 0xA1, 0xFE}};

// What every font of a script has, and the bit by which a font names that script's code page.
struct ScriptNeeds {
    Script script;
    std::span<const Codes> codes;
    FT_ULong codePage;
};

constexpr ScriptNeeds kEastAsianNeeds[] = {
    {Script::Japanese, kJapanese, FT_ULong{1} << 17},
    {Script::TraditionalChinese, kChinese, FT_ULong{1} << 20},
    {Script::Korean, kKorean, FT_ULong{1} << 19},
};
constexpr FT_ULong kEastAsianCodePages = FT_ULong{0xF} << 17; // simplified Chinese is one of them

bool HasCodes(FT_Face face, TextEncoding encoding, const Codes &codes)
{
    for (unsigned lead = codes.firstLead; lead <= codes.lastLead; ++lead) {
        for (unsigned trail = codes.firstTrail; trail <= codes.lastTrail; ++trail) {
            const uint8_t bytes[] = {static_cast<uint8_t>(lead), static_cast<uint8_t>(trail)};
            const DecodedCharacter decoded = DecodeCharacter(encoding, bytes);
            if (decoded.character != 0 && FT_Get_Char_Index(face, decoded.character) == 0)
                return false;
        }
    }
    return true;
}

// The letters, and those with the accents of words that English took over: an East Asian font may have plain ones beside its
// own characters, which does not make it one for Roman text.
bool HasLetters(FT_Face face)
{
    constexpr std::u32string_view kLetters = U"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                             U"\u00C0\u00C7\u00C8\u00C9\u00CA\u00CB\u00CF\u00D1\u00D4\u00D6"
                                             U"\u00E0\u00E7\u00E8\u00E9\u00EA\u00EB\u00EF\u00F1\u00F4\u00F6";
    return std::ranges::all_of(kLetters,
                               [face](char32_t letter) { return FT_Get_Char_Index(face, letter) != 0; });
}

// A font that names one East Asian code page is of that script alone, whatever else it has.
uint8_t ScriptsOf(FT_Face face)
{
    if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) != 0)
        return 0;
    const TT_OS2 *facts = OpenTypeFacts(face);
    const FT_ULong pages = facts == nullptr ? 0 : facts->ulCodePageRange1 & kEastAsianCodePages;
    const bool isOfOne = pages != 0 && (pages & (pages - 1)) == 0;
    uint8_t scripts = HasLetters(face) ? 1U << static_cast<int>(Script::Roman) : 0;
    for (const ScriptNeeds &needs : kEastAsianNeeds) {
        if (isOfOne && pages != needs.codePage)
            continue;
        const auto has = [&](const Codes &codes) { return HasCodes(face, MacEncoding(needs.script), codes); };
        if (std::ranges::all_of(needs.codes, has))
            scripts |= static_cast<uint8_t>(1U << static_cast<int>(needs.script));
    }
    return scripts;
}

std::string TextOf(const char *text)
{
    return text == nullptr ? "" : text;
}

void ReadFace(FT_Face face, FontCandidate *candidate)
{
    FontList::Entry &entry = candidate->entry;
    entry.postScriptName = TextOf(FT_Get_Postscript_Name(face));
    entry.familyName = TextOf(face->family_name);
    entry.style = StyleOf(face, entry.postScriptName);
    // Symbol fonts may call them Latin letters.
    entry.scripts = SymbolSetOfName(entry.postScriptName) ? uint8_t{0} : ScriptsOf(face);
    candidate->isType1 = TextOf(FT_Get_Font_Format(face)) == "Type 1";
}

} // namespace

void ReadGivenFont(const SharedFontBytes &bytes, std::vector<FontCandidate> *candidates)
{
    FontLibrary library;
    FT_Long count = 1;
    for (FT_Long i = 0; i < std::min(count, kMaxFaces); ++i) {
        FT_Face opened = nullptr;
        const FT_Error error = library.OpenFace(bytes, static_cast<int>(i), &opened);
        const Owned<FT_FaceRec_, FT_Done_Face> face(opened);
        library.Check();
        if (error != 0)
            continue;
        count = face->num_faces;
        FontCandidate candidate;
        candidate.entry.bytes = bytes;
        candidate.entry.faceIndex = static_cast<int>(i);
        ReadFace(face.get(), &candidate);
        library.Check();
        if (FT_IS_SCALABLE(face.get()) && CanBeAskedFor(candidate.entry))
            candidates->push_back(std::move(candidate));
    }
}

} // namespace vxhost
