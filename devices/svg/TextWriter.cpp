#include "devices/svg/TextWriter.h"

#include "devices/svg/PathData.h"
#include "devices/svg/StrokeAttributes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vxhost::svg
{

namespace
{

// Viewers round, clamp or leave out sizes beyond these, and nobody can read them.
constexpr double kSmallestFont = 0.1, kLargestFont = 2000;
constexpr double kFlattest = 0.02;
constexpr double kSameNumber = 1e-9;
constexpr double kSamePlace = 0.5e-4;
// How far a character may be from where the widths and the kerning of those before it put it, until it is placed anew;
// ems. Viewers that know but one place for a piece of text go wrong by no more than this.
constexpr double kSlack = 0.01;
constexpr size_t kMaxLine = 4096; // characters; a line is held until it ends
// A gap that is no letter spacing; ems.
constexpr double kWidestSpacing = 1;

constexpr char32_t kSpace = U' ';
constexpr char32_t kSoftHyphen = 0xAD, kHyphen = 0x2010;

// Viewers do not show soft hyphens, fonts do.
char32_t WrittenCharacter(char32_t character)
{
    return character == kSoftHyphen ? kHyphen : character;
}

bool IsSame(const Matrix &one, const Matrix &other)
{
    return std::abs(one.a - other.a) < kSameNumber && std::abs(one.b - other.b) < kSameNumber &&
           std::abs(one.c - other.c) < kSameNumber && std::abs(one.d - other.d) < kSameNumber;
}

Matrix WithTranslation(Matrix matrix, Point to)
{
    matrix.tx = to.x;
    matrix.ty = to.y;
    return matrix;
}

} // namespace

TextWriter::Face *TextWriter::OpenFont(const TextFont &font)
{
    const auto known = faceOfFont_.find(&font);
    if (known != faceOfFont_.end())
        return known->second;
    const auto [found, isNew] = faces_.try_emplace({font.bytes.get(), font.faceIndex});
    Face *face = &found->second;
    if (isNew)
        face->font = WebFont::Open(font, isEditable_ ? WebFontUse::Named : WebFontUse::Carried);
    if (face->font == nullptr)
        face = nullptr;
    faceOfFont_.emplace(&font, face);
    return face;
}

TextWriter::Face *TextWriter::UseFont(const TextFont &font)
{
    Face *face = OpenFont(font);
    if (face != nullptr && face->family.empty()) {
        order_.push_back(face);
        face->family = isEditable_ ? face->font->Names().family : NameFace(*face->font);
    }
    return face;
}

// Viewers take two fonts of one name, weight and style for one, so the second is numbered. In a page with several pictures a
// name means one font too: what each of them carries of it makes one.
std::string TextWriter::NameFace(const WebFont &font)
{
    const FontNames &names = font.Names();
    std::string family = names.family;
    // Names differ by more than the case of their letters.
    const auto isNew = [&] {
        std::string lowered = family;
        std::ranges::transform(lowered, lowered.begin(), [](char c) {
            return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        return names_.emplace(std::move(lowered), names.weight, names.isItalic, names.stretch).second;
    };
    for (uint64_t number = 2; !isNew(); ++number)
        family = names.family + " " + std::to_string(number);
    return family;
}

// The font is as large as its em is high on the page; width, slope and turn are left to the transform.
TextWriter::Setting TextWriter::FindSetting(const GlyphRun &run) const
{
    const Matrix toPicture = Product(run.matrix, WithTranslation(toPicture_, {}));
    Setting setting;
    setting.size = std::hypot(toPicture.c, toPicture.d);
    const Frame frame = FindFrame(toPicture);
    const double area = Determinant(toPicture);
    setting.isReadable = setting.size >= kSmallestFont && setting.size <= kLargestFont &&
                         std::abs(area) > kFlattest * frame.scale * frame.scale;
    if (!setting.isReadable)
        return setting;
    const double unit = 1 / setting.size; // text has its y axis down
    const Matrix matrix = {
        toPicture.a * unit, toPicture.b * unit, -toPicture.c * unit, -toPicture.d * unit, 0, 0};
    setting.isSimilar = frame.isPlain;
    setting.isPlain = IsSame(matrix, {});
    if (setting.isPlain)
        return setting;
    setting.toText = Inverse(matrix);
    setting.transform = WithTranslation(matrix, toPicture_.Map(run.glyphs.front().origin));
    return setting;
}

Point TextWriter::InElement(const Setting &setting, Point onPage) const
{
    const Point inPicture = toPicture_.Map(onPage);
    return setting.toText.Map({inPicture.x - setting.transform.tx, inPicture.y - setting.transform.ty});
}

void TextWriter::PlaceCharacters(const GlyphRun &run, const Setting &setting, WebFont *font)
{
    placed_.clear();
    for (const PlacedGlyph &glyph : run.glyphs) {
        const char32_t character = WrittenCharacter(glyph.character);
        placed_.push_back({InElement(setting, glyph.origin), character, !font->Take(character, glyph.glyph)});
    }
}

// Returns whether a character there goes on along the line.
bool TextWriter::IsNext(Point at) const
{
    const LineCharacter &last = line_.characters.back();
    return line_.characters.size() < kMaxLine && std::abs(at.y - line_.y) <= kSamePlace &&
           std::abs(at.x - last.x - last.advance) < kWidestSpacing * line_.setting.size;
}

bool TextWriter::IsOnLine(const GlyphRun &run, const TextPaint &paint) const
{
    return HasLine() && !paint.clips && !run.isColumn && !run.glyphs.empty() && run.font == line_.font &&
           run.matrix == line_.matrix && paint.object.number == line_.paint.object.number &&
           paint.fills == line_.paint.fills && paint.strokes == line_.paint.strokes &&
           paint.paint == line_.paint.paint && (!paint.strokes || paint.style == line_.paint.style) &&
           IsNext(InElement(line_.setting, run.glyphs.front().origin));
}

void TextWriter::CountPlaced(const GlyphRun &run, const TextPaint &paint)
{
    const bool isPlaced = isEditable_ && (run.isColumn || paint.object.kind == TextKind::Path);
    if (!isPlaced || lastPlaced_ == paint.object.number)
        return;
    lastPlaced_ = paint.object.number;
    ++placedTexts_;
}

// The first run of a line has the element's space to itself.
void TextWriter::AddToLines(const GlyphRun &run, const Face &face, const Setting &setting,
                            const TextPaint &paint, bool strokes)
{
    for (size_t i = 0; i < run.glyphs.size(); ++i) {
        const PlacedGlyph &glyph = run.glyphs[i];
        const bool isHidden = placed_[i].isHidden;
        if (HasLine() && !(isHidden == line_.isHidden && IsNext(InElement(line_.setting, glyph.origin))))
            EndLine();
        if (!HasLine()) {
            std::vector<LineCharacter> storage = std::move(line_.characters);
            line_ = {run.font, &face, run.matrix, paint, setting, 0, strokes, isHidden, std::move(storage)};
            if (!setting.isPlain)
                line_.setting.transform = WithTranslation(setting.transform, toPicture_.Map(glyph.origin));
            line_.y = InElement(line_.setting, glyph.origin).y;
        }
        line_.characters.push_back(
            {InElement(line_.setting, glyph.origin).x, glyph.advance * setting.size, placed_[i].character});
    }
}

void TextWriter::EndLine()
{
    if (!HasLine())
        return;
    const SpacedLine spaced = FindSpacing(line_.characters, kSlack * line_.setting.size);
    xml_->Markup("<text xml:space=\"preserve\"");
    xml_->Attribute("x", line_.characters.front().x);
    xml_->Attribute("y", line_.y);
    if (!line_.setting.isPlain)
        xml_->Transform(line_.setting.transform);
    WriteFontAttributes(*line_.font, *line_.face, line_.setting.size);
    if (spaced.spacing != 0)
        xml_->Attribute("letter-spacing", spaced.spacing);
    WritePaint(line_.paint, line_.strokes, line_.isHidden);
    xml_->Markup(">");
    size_t begin = 0;
    for (const SpacedPiece &piece : spaced.pieces) {
        const bool isOther = piece.spacing != spaced.spacing;
        if (isOther) {
            xml_->Markup("<tspan");
            xml_->Attribute("letter-spacing", piece.spacing);
            xml_->Markup(">");
        }
        for (; begin < piece.end; ++begin)
            xml_->Character(line_.characters[begin].character);
        if (isOther)
            xml_->Markup("</tspan>");
    }
    xml_->Markup("</text>\n");
    line_.characters.clear();
}

// The spacing of the first two characters. If the others do not follow it they are placed one by one.
double TextWriter::FirstSpacing(const GlyphRun &run, double size) const
{
    if (placed_.size() < 2 || run.isColumn)
        return 0;
    const double gap = placed_[1].at.x - placed_[0].at.x - run.glyphs[0].advance * size;
    return std::abs(gap) > kSlack * size && std::abs(gap) < kWidestSpacing * size ? gap : 0;
}

// A chunk has one y and is placed once for simple viewers: a word, or as much of it as is set without a gap.
size_t TextWriter::FindChunkEnd(const GlyphRun &run, size_t begin, double size, double spacing,
                                WebFont *font) const
{
    const PlacedCharacter &first = placed_[begin];
    double expected = first.at.x;
    size_t end = begin + 1;
    for (; end < placed_.size(); ++end) {
        const PlacedCharacter &last = placed_[end - 1], &next = placed_[end];
        expected += run.glyphs[end - 1].advance * size + spacing;
        if (!next.isHidden)
            expected += font->Kerning(last.character, next.character) * size;
        if (std::abs(next.at.y - first.at.y) > kSamePlace || next.isHidden != first.isHidden ||
            std::abs(next.at.x - expected) > kSlack * size ||
            (last.character == kSpace && next.character != kSpace))
            break;
    }
    return end;
}

// y is that of the text so far; it is written where it changes.
void TextWriter::WriteChunkPlace(size_t begin, size_t end, double *y)
{
    xml_->Markup(" x=\"");
    for (size_t i = begin; i < end; ++i) {
        if (i > begin)
            xml_->Markup(" ");
        xml_->Number(placed_[i].at.x);
    }
    xml_->Markup("\"");
    const double chunkY = placed_[begin].at.y;
    if (!(std::abs(chunkY - *y) <= kSamePlace))
        xml_->Attribute("y", chunkY);
    *y = chunkY;
}

void TextWriter::WriteChunk(size_t begin, size_t end)
{
    for (size_t i = begin; i < end; ++i)
        xml_->Character(placed_[i].character);
}

void TextWriter::WriteFontAttributes(const TextFont &font, const Face &face, double size)
{
    const FontNames &names = face.font->Names();
    xml_->Markup(" font-family=\"'");
    xml_->Escaped(face.family);
    if (face.family != names.family) {
        xml_->Markup("','");
        xml_->Escaped(names.family);
    }
    xml_->Markup("',");
    xml_->Markup(names.generic);
    xml_->Markup("\"");
    const FontNames usual;
    if (names.weight != usual.weight)
        xml_->Attribute("font-weight", names.weight);
    if (names.isItalic)
        xml_->Markup(" font-style=\"italic\"");
    if (std::string_view(names.stretch) != usual.stretch)
        xml_->Attribute("font-stretch", std::string_view(names.stretch));
    xml_->Attribute("font-size", size);
    xml_->Attribute("data-font", font.asked);
}

void TextWriter::WritePaint(const TextPaint &paint, bool strokes, bool isUnpainted)
{
    if (paint.fills && !isUnpainted)
        paints_->Write(paint.paint, PaintUse::Fill, xml_);
    else
        xml_->Markup(" fill=\"none\"");
    if (strokes && !isUnpainted) {
        paints_->Write(paint.paint, PaintUse::Stroke, xml_);
        WriteStroke(paint.style, FindStrokeFrame(paint.style, toPicture_), xml_);
    }
    if ((paint.fills || strokes) && paints_->Multiplies(paint.paint))
        PaintAttributes::WriteMultiply(xml_);
}

void TextWriter::WriteElement(const GlyphRun &run, const Face &face, const Setting &setting,
                              const TextPaint &paint, bool strokes)
{
    const size_t count = placed_.size();
    const double spacing = FirstSpacing(run, setting.size);
    const bool isOneChunk = FindChunkEnd(run, 0, setting.size, spacing, face.font.get()) == count;
    const bool isUnpainted = isOneChunk && placed_.front().isHidden;
    double y = std::numeric_limits<double>::quiet_NaN(); // none yet
    xml_->Markup("<text xml:space=\"preserve\"");
    if (isOneChunk)
        WriteChunkPlace(0, count, &y);
    if (!setting.isPlain)
        xml_->Transform(setting.transform);
    WriteFontAttributes(*run.font, face, setting.size);
    if (spacing != 0)
        xml_->Attribute("letter-spacing", spacing);
    WritePaint(paint, strokes, isUnpainted);
    xml_->Markup(">");
    if (isOneChunk)
        WriteChunk(0, count);
    for (size_t begin = 0; begin < count && !isOneChunk;) {
        const size_t end = FindChunkEnd(run, begin, setting.size, spacing, face.font.get());
        xml_->Markup("<tspan");
        WriteChunkPlace(begin, end, &y);
        if (placed_[begin].isHidden)
            xml_->Markup(" fill=\"none\" stroke=\"none\"");
        xml_->Markup(">");
        WriteChunk(begin, end);
        xml_->Markup("</tspan>");
        begin = end;
    }
    xml_->Markup("</text>\n");
}

void TextWriter::AppendOutlines(const GlyphRun &run, bool hiddenAlone, WebFont *font, Path *path) const
{
    for (size_t i = 0; i < run.glyphs.size(); ++i) {
        const PlacedGlyph &glyph = run.glyphs[i];
        if (!hiddenAlone || placed_[i].isHidden)
            AppendOutline(font->Outline(glyph.glyph), WithTranslation(run.matrix, glyph.origin), path);
    }
}

void TextWriter::Show(const GlyphRun &run, const TextPaint &paint)
{
    Face *face = UseFont(*run.font);
    if (face == nullptr || run.glyphs.empty())
        return;
    const Setting setting = FindSetting(run);
    const bool strokesText =
        paint.strokes && setting.isSimilar && FindStrokeFrame(paint.style, toPicture_).isPlain;
    if (setting.isReadable) {
        PlaceCharacters(run, setting, face->font.get());
        CountPlaced(run, paint);
        if (isEditable_ && !run.isColumn)
            AddToLines(run, *face, setting, paint, strokesText);
        else
            WriteElement(run, *face, setting, paint, strokesText);
    }
    const auto shapes = [&](bool hiddenAlone) {
        Path path;
        AppendOutlines(run, hiddenAlone, face->font.get(), &path);
        return path;
    };
    // Any call, of no shape too, ends the line.
    if (const Path path = paint.fills ? shapes(setting.isReadable) : Path(); !path.IsEmpty())
        shapes_->FillPath(path, paint.paint);
    if (const Path path = paint.strokes ? shapes(setting.isReadable && strokesText) : Path(); !path.IsEmpty())
        shapes_->StrokePath(path, paint.style, paint.paint);
}

void TextWriter::WriteOutlines(std::span<const GlyphRun> runs)
{
    Path path;
    for (const GlyphRun &run : runs) {
        const Face *face = UseFont(*run.font);
        if (face == nullptr)
            continue;
        path.Clear();
        AppendOutlines(run, false, face->font.get(), &path);
        WritePathData(path, toPicture_, xml_);
    }
}

void TextWriter::WriteFonts()
{
    if (isEditable_)
        return;
    for (const Face *face : order_) {
        const std::vector<std::byte> bytes = face->font->MakeSubset();
        if (bytes.empty())
            continue;
        const FontNames &names = face->font->Names();
        const bool isCff = bytes.front() == std::byte{'O'}; // "OTTO"
        xml_->Markup("<style>@font-face{font-family:'");
        xml_->Escaped(face->family);
        xml_->Markup("';font-weight:");
        xml_->Number(names.weight);
        xml_->Markup(names.isItalic ? ";font-style:italic;font-stretch:"
                                    : ";font-style:normal;font-stretch:");
        xml_->Markup(names.stretch);
        xml_->Markup(isCff ? ";src:url(data:font/otf;base64," : ";src:url(data:font/ttf;base64,");
        xml_->Base64(bytes);
        xml_->Markup(")}</style>\n");
    }
}

} // namespace vxhost::svg
