#include "host/fonts/DocumentGlyphs.h"

#include "host/fonts/FontNames.h"
#include "host/fonts/GlyphChoice.h"

#include <utility>

namespace vxhost
{

namespace
{

constexpr double kOneEm = 65536;
constexpr char32_t kUnknownCharacter = 0xFFFD;
constexpr uint8_t kFirstVisible = 0x20;
constexpr uint8_t kDelete = 0x7F;
constexpr size_t kMaxUses = 1024;
constexpr size_t kMaxKnownFonts = 64;
constexpr size_t kMaxCachedGlyphs = 8192;
constexpr size_t kMaxCachedPoints = size_t{1} << 20;

void AddRectangle(Point from, Point to, Path *path)
{
    path->verbs.insert(path->verbs.end(), {Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close});
    path->points.insert(path->points.end(), {from, {to.x, from.y}, to, {from.x, to.y}});
}

// A frame, with some room on all sides.
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

const TextFont *DocumentGlyphs::OpenFont(std::string_view fontName)
{
    const int32_t font = fonts_->List().Find(fontName);
    if (const TextFont *served = font < 0 ? nullptr : fonts_->TextFontOf(font))
        return served;
    auto found = boxFonts_.find(fontName);
    if (found == boxFonts_.end()) {
        if (boxFonts_.size() == kMaxUses) // as with the account of them
            return &boxFonts_.rbegin()->second;
        TextFont boxes;
        boxes.asked = font < 0 ? std::string(fontName) : fonts_->List().AskedName(font);
        found = boxFonts_.emplace(fontName, std::move(boxes)).first;
    }
    return &found->second;
}

void DocumentGlyphs::BeginString(std::string_view fontName, bool isNew)
{
    font_ = fonts_->List().Find(fontName);
    auto found = useOfName_.find(fontName);
    if (found == useOfName_.end() && uses_.size() < kMaxUses) {
        found = useOfName_.emplace(fontName, uses_.size()).first;
        FontUse use;
        use.asked = fontName;
        uses_.push_back(font_ < 0 ? use : fonts_->Describe(font_));
    }
    // No real document uses so many fonts: the last one of the account takes the rest.
    use_ = found == useOfName_.end() ? uses_.size() - 1 : found->second;
    bytes_ = BytesOf(font_);
    isNew_ = isNew;
    uses_[use_].strings += isNew_ ? 1 : 0;
}

Glyph DocumentGlyphs::Next(std::span<const uint8_t> text, bool isUpright)
{
    const uint8_t byte = text.front();
    if (byte < kFirstVisible || byte == kDelete)
        return {};
    const FoundGlyph &known = (*bytes_)[byte];
    const FoundGlyph found = known.isKnown && !isUpright ? known : FindCharacter(text, isUpright);
    if (isNew_) {
        ++uses_[use_].characters;
        uses_[use_].missingGlyphs += found.isMissing ? 1 : 0;
    }
    return found.glyph;
}

DocumentGlyphs::FoundGlyph DocumentGlyphs::FindCharacter(std::span<const uint8_t> text, bool isUpright)
{
    const uint8_t byte = text.front();
    const TextEncoding encoding = font_ < 0 ? TextEncoding::MacRoman : fonts_->List().EncodingOf(font_);
    const DecodedCharacter decoded = DecodeCharacter(encoding, text);
    const bool isWide = decoded.bytes > 1;
    const bool goesByBytes = font_ >= 0 && fonts_->GoesByBytes(font_);
    const CachedGlyph &cached =
        FindGlyph(goesByBytes ? byte : decoded.character, isUpright || decoded.isVerticalForm, isWide);
    FoundGlyph found;
    found.isMissing = cached.isMissing;
    found.glyph.bytes = decoded.bytes;
    found.glyph.advance = isWide      ? 1
                          : font_ < 0 ? kBoxFontWidth / kOneEm
                                      : fonts_->CharWidth(static_cast<int16_t>(font_), byte) / kOneEm;
    found.glyph.glyph = cached.glyph;
    found.glyph.character = decoded.character != 0 ? decoded.character : kUnknownCharacter;
    if (!cached.outline.IsEmpty()) {
        found.glyph.outline = &cached.outline;
        found.glyph.outlineNumber = cached.number;
    }
    if (!isUpright && !IsLeadByte(encoding, byte)) {
        found.isKnown = true;
        (*bytes_)[byte] = found;
    }
    return found;
}

DocumentGlyphs::BytesOfFont *DocumentGlyphs::BytesOf(int32_t font)
{
    if (bytesOfFonts_.size() == kMaxKnownFonts && !bytesOfFonts_.contains(font))
        bytesOfFonts_.clear();
    return &bytesOfFonts_[font];
}

void DocumentGlyphs::ForgetGlyphs()
{
    cache_.clear();
    cachedPoints_ = 0;
    bytesOfFonts_.clear();
    bytes_ = BytesOf(font_);
}

const DocumentGlyphs::CachedGlyph &DocumentGlyphs::FindGlyph(char32_t character, bool isUpright, bool isWide)
{
    const uint64_t key = (static_cast<uint64_t>(static_cast<uint32_t>(font_)) << 32) |
                         (static_cast<uint64_t>(character) << 2) | (isUpright ? 2U : 0U) | (isWide ? 1U : 0U);
    const auto found = cache_.find(key);
    if (found != cache_.end())
        return found->second;
    CachedGlyph made = MakeGlyph(character, isUpright, isWide);
    made.number = ++outlines_;
    const size_t points = made.outline.points.size();
    if (cache_.size() == kMaxCachedGlyphs || cachedPoints_ + points > kMaxCachedPoints)
        ForgetGlyphs();
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
    glyph.glyph = ChooseGlyph(*file, character, isUpright);
    glyph.isMissing = glyph.glyph == 0;
    glyph.outline = file->Outline(glyph.glyph);
    return glyph;
}

} // namespace vxhost
