#include "host/fonts/DocumentGlyphs.h"

#include "host/fonts/FontNames.h"

#include <algorithm>

namespace vxhost
{

namespace
{

constexpr double kOneEm = 65536;
constexpr char32_t kUnknownCharacter = 0xFFFD;
constexpr uint8_t kFirstVisible = 0x20;
constexpr uint8_t kDelete = 0x7F;
constexpr size_t kMaxUses = 1024;
constexpr size_t kMaxCachedGlyphs = 8192;
constexpr size_t kMaxCachedPoints = size_t{1} << 20;

// Characters that fonts have at one place or at the other.
constexpr struct {
    char32_t character;
    char32_t instead;
} kAlternates[] = {
    {0x00A0, 0x0020}, {0x00AF, 0x02C9}, {0x00B5, 0x03BC}, {0x00B7, 0x2219},
    {0x03A9, 0x2126}, {0x2206, 0x0394}, {0x2014, 0x2015}, {0x2015, 0x2014},
    {0x2016, 0x2225}, {0x2044, 0x2215}, {0x2212, 0xFF0D}, {0x301C, 0xFF5E},
    {0xFFE0, 0x00A2}, {0xFFE1, 0x00A3}, {0xFFE2, 0x00AC}, {0xFFE3, 0x00AF},
};

char32_t AlternateOf(char32_t character)
{
    const auto *found =
        std::ranges::find(kAlternates, character, [](const auto &row) { return row.character; });
    return found == std::end(kAlternates) ? 0 : found->instead;
}

uint32_t FindInFile(const FontFile &file, char32_t character, bool isUpright)
{
    for (const char32_t each : {character, AlternateOf(character)}) {
        const uint32_t glyph = each == 0   ? 0
                               : isUpright ? file.FindVerticalGlyph(each)
                                           : file.FindGlyph(each);
        if (glyph != 0)
            return glyph;
    }
    return 0;
}

void AddRectangle(Point from, Point to, Path *path)
{
    path->verbs.insert(path->verbs.end(), {Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close});
    path->points.insert(path->points.end(), {from, {to.x, from.y}, to, {from.x, to.y}});
}

// A frame with a bearing on all sides.
Path BoxOutline(double width)
{
    constexpr double kBearing = 0.06, kLine = 0.04, kHeight = 0.7;
    const Point low = {kBearing, 0}, high = {width - kBearing, kHeight};
    Path inner, box;
    AddRectangle(low, high, &box);
    AddRectangle({low.x + kLine, low.y + kLine}, {high.x - kLine, high.y - kLine}, &inner);
    AppendReversed(inner, {}, &box);
    return box;
}

} // namespace

const TextFont *DocumentGlyphs::FindFont(std::string_view fontName) const
{
    const int32_t font = fonts_->Find(fontName);
    return font < 0 ? nullptr : fonts_->TextFontOf(font);
}

void DocumentGlyphs::BeginString(std::string_view fontName)
{
    font_ = fonts_->Find(fontName);
    auto found = useOfName_.find(fontName);
    if (found == useOfName_.end() && uses_.size() < kMaxUses) {
        found = useOfName_.emplace(fontName, uses_.size()).first;
        FontUse use;
        use.asked = fontName;
        uses_.push_back(font_ < 0 ? use : fonts_->Describe(font_));
    }
    // Beyond any real document: the last font of the account takes the rest.
    use_ = found == useOfName_.end() ? uses_.size() - 1 : found->second;
    ++uses_[use_].strings;
}

Glyph DocumentGlyphs::Next(std::span<const uint8_t> text, bool isUpright)
{
    const uint8_t byte = text.front();
    const TextEncoding encoding = font_ < 0 ? TextEncoding::MacRoman : fonts_->EncodingOf(font_);
    const DecodedCharacter decoded = DecodeCharacter(encoding, text);
    const bool isWide = decoded.bytes > 1;
    Glyph glyph;
    glyph.bytes = decoded.bytes;
    if (byte < kFirstVisible || byte == kDelete)
        return glyph;
    ++uses_[use_].characters;
    glyph.advance = isWide      ? 1
                    : font_ < 0 ? kBoxFontWidth / kOneEm
                                : fonts_->CharWidth(static_cast<int16_t>(font_), byte) / kOneEm;
    const CachedGlyph &cached = FindGlyph(decoded.character, isUpright || decoded.isVerticalForm, isWide);
    glyph.glyph = cached.glyph;
    glyph.character = decoded.character != 0 ? decoded.character : kUnknownCharacter;
    if (cached.isMissing)
        ++uses_[use_].missingGlyphs;
    if (!cached.outline.IsEmpty())
        glyph.outline = &cached.outline;
    return glyph;
}

const DocumentGlyphs::CachedGlyph &DocumentGlyphs::FindGlyph(char32_t character, bool isUpright, bool isWide)
{
    const uint64_t key = (static_cast<uint64_t>(static_cast<uint32_t>(font_)) << 32) |
                         (static_cast<uint64_t>(character) << 2) | (isUpright ? 2U : 0U) | (isWide ? 1U : 0U);
    const auto found = cache_.find(key);
    if (found != cache_.end())
        return found->second;
    CachedGlyph made = MakeGlyph(character, isUpright, isWide);
    const size_t points = made.outline.points.size();
    if (cache_.size() == kMaxCachedGlyphs || cachedPoints_ + points > kMaxCachedPoints) {
        cache_.clear();
        cachedPoints_ = 0;
    }
    cachedPoints_ += points;
    return cache_.emplace(key, std::move(made)).first->second;
}

DocumentGlyphs::CachedGlyph DocumentGlyphs::MakeGlyph(char32_t character, bool isUpright, bool isWide) const
{
    CachedGlyph glyph;
    const FontFile *file = font_ < 0 ? nullptr : fonts_->FileOf(font_);
    if (file == nullptr) {
        glyph.isMissing = true;
        if (character != U' ')
            glyph.outline = BoxOutline(isWide ? 1 : kBoxFontWidth / kOneEm);
        return glyph;
    }
    glyph.glyph = FindInFile(*file, character, isUpright);
    glyph.isMissing = glyph.glyph == 0;
    glyph.outline = file->Outline(glyph.glyph);
    return glyph;
}

} // namespace vxhost
