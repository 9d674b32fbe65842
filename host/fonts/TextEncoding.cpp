#include "host/fonts/TextEncoding.h"

#include "host/fonts/MacRoman.h"
#include "host/fonts/SymbolSets.h"

#include <algorithm>
#include <iterator>

namespace vxhost
{

namespace
{

#include "TextTables.inc"

constexpr uint8_t kUpperHalf = 0x80;
constexpr uint8_t kFirstTrail = 0x40;
constexpr size_t kTrails = 0x100 - kFirstTrail;

// Rows of the Mac's Japanese set that hold forms for columns, each with the row of the same characters.
constexpr struct {
    uint8_t vertical;
    uint8_t upright;
} kVerticalRows[] = {{0xEB, 0x81}, {0xEC, 0x82}, {0xED, 0x83}, {0xEE, 0x87}};

struct DoubleByteSet {
    const char16_t *singles; // from 0x80
    const char16_t *pairs;   // kTrails for each lead byte
    uint8_t firstLead;
    uint8_t lastLead;
};

template <size_t kPairs>
constexpr DoubleByteSet MakeSet(const char16_t (&singles)[128], const char16_t (&pairs)[kPairs],
                                uint8_t firstLead)
{
    return {singles, pairs, firstLead, static_cast<uint8_t>(firstLead + kPairs / kTrails - 1)};
}

constexpr DoubleByteSet kJapanese = MakeSet(kJapaneseSingles, kJapanesePairs, kJapaneseFirstLead);
constexpr DoubleByteSet kChinese = MakeSet(kChineseSingles, kChinesePairs, kChineseFirstLead);
constexpr DoubleByteSet kKorean = MakeSet(kKoreanSingles, kKoreanPairs, kKoreanFirstLead);

const DoubleByteSet *FindSet(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::MacJapanese:
        return &kJapanese;
    case TextEncoding::MacChinese:
        return &kChinese;
    case TextEncoding::MacKorean:
        return &kKorean;
    default:
        return nullptr;
    }
}

char32_t DecodeSingle(TextEncoding encoding, const DoubleByteSet *set, uint8_t byte)
{
    if (encoding == TextEncoding::MacRoman)
        return FromMacRoman(byte);
    if (encoding == TextEncoding::Symbol)
        return FromSymbol(byte);
    if (encoding == TextEncoding::Dingbats)
        return FromDingbats(byte);
    if (encoding == TextEncoding::MacJapanese && byte == '\\')
        return U'\u00A5'; // where other sets have the backslash, the Japanese one has the yen sign
    if (byte < kUpperHalf)
        return byte;
    return (set == nullptr ? kCodePage1252Singles : set->singles)[byte - kUpperHalf];
}

} // namespace

TextEncoding MacEncoding(Script script)
{
    switch (script) {
    case Script::Japanese:
        return TextEncoding::MacJapanese;
    case Script::TraditionalChinese:
        return TextEncoding::MacChinese;
    case Script::Korean:
        return TextEncoding::MacKorean;
    default:
        return TextEncoding::MacRoman;
    }
}

Script ScriptOf(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::MacJapanese:
        return Script::Japanese;
    case TextEncoding::MacChinese:
        return Script::TraditionalChinese;
    case TextEncoding::MacKorean:
        return Script::Korean;
    default:
        return Script::Roman;
    }
}

bool IsLeadByte(TextEncoding encoding, uint8_t byte)
{
    const DoubleByteSet *set = FindSet(encoding);
    if (set == nullptr || byte < set->firstLead || byte > set->lastLead)
        return false;
    // Half-width katakana stand in the middle of the Japanese lead bytes.
    return encoding != TextEncoding::MacJapanese || byte <= 0x9F || byte >= 0xE0;
}

DecodedCharacter DecodeCharacter(TextEncoding encoding, std::span<const uint8_t> text)
{
    const DoubleByteSet *set = FindSet(encoding);
    uint8_t lead = text.front();
    if (!IsLeadByte(encoding, lead))
        return {DecodeSingle(encoding, set, lead), 1, false};
    if (text.size() < 2)
        return {};
    DecodedCharacter decoded = {0, 2, false};
    if (encoding == TextEncoding::MacJapanese) {
        const auto *row =
            std::ranges::find(kVerticalRows, lead, [](const auto &each) { return each.vertical; });
        if (row != std::end(kVerticalRows)) {
            decoded.isVerticalForm = true;
            lead = row->upright;
        }
    }
    if (text[1] >= kFirstTrail)
        decoded.character =
            set->pairs[static_cast<size_t>(lead - set->firstLead) * kTrails + text[1] - kFirstTrail];
    return decoded;
}

} // namespace vxhost
