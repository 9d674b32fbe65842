#include "host/reading/BetweenLayers.h"

#include "host/reading/BodySections.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <algorithm>
#include <array>

namespace vxhost
{

namespace
{

class PaintCounter
{
  public:
    void TakeLine(std::string_view line)
    {
        LineTokens tokens(line, isInHex_);
        for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next())
            TakeToken(token.kind, line.substr(token.begin, token.end - token.begin));
        isInHex_ = tokens.IsInHex();
    }

    uint64_t Count() const { return count_; }

  private:
    void TakeToken(TokenKind kind, std::string_view text)
    {
        if (kind == TokenKind::Operator) {
            TakeOperator(text);
            hasCharacters_ = false;
        } else if (kind == TokenKind::Integer) {
            integer_ = IntegerOfToken(text).value_or(0);
        } else {
            hasCharacters_ = hasCharacters_ || (kind == TokenKind::String && text.size() > 2);
        }
    }

    void TakeOperator(std::string_view word)
    {
        const auto isOneOf = [word](auto... words) { return ((word == words) || ...); };
        if (isOneOf("m", "l", "L", "c", "C", "v", "V", "y", "Y"))
            hasPath_ = true;
        else if (isOneOf("f", "F", "b", "B", "s", "S"))
            PaintPath();
        else if (isOneOf("n", "N", "*"))
            hasPath_ = false;
        else if (word == "*u")
            ++compoundDepth_;
        else if (word == "*U")
            EndCompound();
        else if (isOneOf("To", "a", "e", "o", "r"))
            BeginText(word != "To");
        else if (word == "Tr")
            isTextPainted_ = integer_ != kInvisible && integer_ != kClips;
        else if (isOneOf("Tx", "Tj", "TS", "T~", "t"))
            ShowText();
    }

    // Within a compound path painting is put off to its end.
    void PaintPath()
    {
        isCompoundPainted_ = isCompoundPainted_ || (hasPath_ && compoundDepth_ > 0);
        count_ += hasPath_ && compoundDepth_ == 0 ? 1 : 0;
        hasPath_ = false;
    }

    void EndCompound()
    {
        compoundDepth_ -= compoundDepth_ > 0 ? 1 : 0;
        if (compoundDepth_ > 0 || !isCompoundPainted_)
            return;
        ++count_;
        isCompoundPainted_ = false;
    }

    // Texts of the older syntax say with their first word that they are painted.
    void BeginText(bool isPainted)
    {
        isTextPainted_ = isPainted;
        isTextCounted_ = false;
    }

    // A text counts once, whatever pieces it has.
    void ShowText()
    {
        if (!hasCharacters_ || !isTextPainted_ || isTextCounted_)
            return;
        ++count_;
        isTextCounted_ = true;
    }

    static constexpr int32_t kInvisible = 3, kClips = 7; // ways to render text

    bool isInHex_ = false;
    bool hasCharacters_ = false; // among the operands
    int32_t integer_ = 0;        // the last of them
    bool hasPath_ = false;
    uint64_t compoundDepth_ = 0;
    bool isCompoundPainted_ = false;
    bool isTextPainted_ = false, isTextCounted_ = false;
    uint64_t count_ = 0;
};

} // namespace

uint64_t CountPainted(const Document &document, std::string_view drawing, const BodyPart &part, int version,
                      const Blanks &blanks)
{
    const auto start =
        static_cast<size_t>(drawing.data() - reinterpret_cast<const char *>(document.Bytes().data()));
    std::array<char, kLineRoom> room;
    const auto lineOf = [&](size_t begin, size_t end) {
        return BlankedLine(drawing.substr(begin, end - begin), start + begin, blanks, &room);
    };
    PaintCounter counter;
    counter.TakeLine(lineOf(part.begin, std::min(part.lineEnd, part.end)));
    BodySections sections(version);
    (void)sections.Follow("%%EndSetup"); // it stands before the part
    LineWalk lines(drawing.substr(0, part.end), FindNextLine(drawing, part.lineEnd));
    size_t left = part.begin;
    while (lines.Next()) {
        const std::string_view line = lineOf(lines.Start(), lines.End());
        const BodySections::Fate fate = sections.Follow(line);
        if (fate == BodySections::Fate::End)
            break;
        if (fate == BodySections::Fate::Interpret)
            counter.TakeLine(line);
        if (lines.Start() - left >= Document::kReadAtOnce) {
            document.Leave(start + left, start + lines.Start());
            left = lines.Start();
        }
    }
    return counter.Count();
}

} // namespace vxhost
