#include "devices/pdf/TextWriter.h"

#include "devices/pdf/Matrices.h"
#include "devices/pdf/ToUnicode.h"
#include "devices/vector/Numbers.h"

#include <cmath>

namespace vxhost::pdf
{

namespace
{

// In 1/1000 em. A glyph that is nearer to its place is not moved; for one that is further away a new line begins, so
// that numbers stay in every reader's range.
constexpr double kNear = 0.1, kFar = 20000;
// A column moves on by this after every glyph.
constexpr double kColumnAdvance = -1000;

// The size that a reader would call the text's: the height of an em, however it is slanted.
double SizeOf(const Matrix &m)
{
    return m.b == 0 ? std::abs(m.d) : std::hypot(m.c, m.d);
}

} // namespace

void TextWriter::Begin()
{
    if (isOpen_)
        return;
    content_->Operator("BT");
    isOpen_ = true;
}

void TextWriter::End()
{
    if (!isOpen_)
        return;
    content_->Operator("ET");
    isOpen_ = false;
}

void TextWriter::Show(const GlyphRun &run, const Matrix &fromPage, EmbeddedFont *font)
{
    emsToSpace_ = Product(run.matrix, fromPage);
    if (!IsInvertible(emsToSpace_))
        return;
    spaceToEms_ = Inverse(emsToSpace_);
    size_ = SizeOf(emsToSpace_);
    direction_ = {
        emsToSpace_.a / size_, emsToSpace_.b / size_, emsToSpace_.c / size_, emsToSpace_.d / size_, 0, 0};
    runsDown_ = run.isColumn && font->CanRunDown();
    const Point hang = {kColumnX / 1000, kColumnY / 1000};
    const Point byHang = runsDown_ ? emsToSpace_.Map(hang) : Point{};
    hasLine_ = false;
    for (const PlacedGlyph &glyph : run.glyphs) {
        const GlyphCode code = font->Use(glyph.glyph, glyph.character);
        Point at = fromPage.Map(glyph.origin);
        at = {at.x + byHang.x, at.y + byHang.y};
        const std::string &name = font->ResourceName(code.part, runsDown_);
        if (!state_->IsFont(name, size_)) {
            FlushLine();
            state_->SetFont(name, size_);
        }
        PlaceNext(at);
        if (code.needsOwnText) {
            FlushLine();
            content_->Raw("/Span<</ActualText<FEFF" + Utf16Hex(glyph.character) + ">>>").Operator("BDC");
        }
        AddGlyph(code, font->CodeBytes());
        if (code.needsOwnText) {
            FlushLine();
            content_->Operator("EMC");
        }
    }
    FlushLine();
}

void TextWriter::StartLine(Point at)
{
    FlushLine();
    content_->Factor(direction_.a)
        .Factor(direction_.b)
        .Factor(direction_.c)
        .Factor(direction_.d)
        .At(at)
        .Operator("Tm");
    lineStart_ = at;
    next_ = 0;
    hasLine_ = true;
}

// Moves from where the next glyph would stand to where it is to stand.
void TextWriter::PlaceNext(Point at)
{
    if (hasLine_) {
        const Point ems = MapVector(spaceToEms_, {at.x - lineStart_.x, at.y - lineStart_.y});
        const double along = (runsDown_ ? ems.y : ems.x) * 1000, across = (runsDown_ ? ems.x : ems.y) * 1000;
        // A number between strings moves back: it is taken off the advance. One decimal is kept.
        const double back = std::round((next_ - along) * 10) / 10;
        if (std::abs(across) < kNear && std::abs(back) < kFar && line_.size() < ContentStream::kMaxRaw / 2) {
            if (std::abs(back) < kNear)
                return;
            CloseString();
            line_ += NumberText(back);
            hasNumbers_ = true;
            next_ -= back;
            return;
        }
    }
    StartLine(at);
}

void TextWriter::AddGlyph(const GlyphCode &code, int codeBytes)
{
    OpenString();
    for (int shift = 8 * (codeBytes - 1); shift >= 0; shift -= 8)
        AddByte(static_cast<char>(code.code >> shift & 0xFF));
    next_ += runsDown_ ? kColumnAdvance : code.width;
}

// A byte stands as it is, which is half as long as in hexadecimal, but for those that end a string or that readers
// change.
void TextWriter::AddByte(char byte)
{
    if (byte == '(' || byte == ')' || byte == '\\')
        line_ += '\\';
    if (byte == '\r')
        line_ += "\\r";
    else
        line_ += byte;
}

void TextWriter::OpenString()
{
    if (!isInString_)
        line_ += '(';
    isInString_ = true;
}

void TextWriter::CloseString()
{
    if (isInString_)
        line_ += ')';
    isInString_ = false;
}

void TextWriter::FlushLine()
{
    if (line_.empty())
        return;
    CloseString();
    if (hasNumbers_)
        content_->Raw("[").Raw(line_).Raw("]").Operator("TJ");
    else
        content_->Raw(line_).Operator("Tj");
    line_.clear();
    hasNumbers_ = false;
}

} // namespace vxhost::pdf
