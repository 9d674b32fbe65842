#include "host/reading/Unshown.h"

#include "host/reading/BodySections.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <set>
#include <span>

namespace vxhost
{

namespace
{

constexpr std::string_view kBeginPlace = "%VX5_BeginPlace";

size_t OffsetIn(const Document &document, std::string_view drawing)
{
    return static_cast<size_t>(drawing.data() - reinterpret_cast<const char *>(document.Bytes().data()));
}

class Counter
{
  public:
    // Takes a comment that stands at a line's start.
    void TakeComment(std::string_view line)
    {
        if (line.starts_with("%%BeginBinary:")) {
            unshown_.binary += section_ == Section::Binary ? 0 : 1;
            section_ = Section::Binary;
        } else if (line.starts_with(kBeginPlace)) {
            if (section_ != Section::None) // it is of the picture's or the data's own
                return;
            ++unshown_.placedPictures;
            section_ = Section::Placed;
        } else if (line.starts_with("%%EndBinary") || line.starts_with("%VX5_EndPlace")) {
            section_ = Section::None;
        }
    }

    // Takes a line of the interpreter's.
    void TakeLine(std::string_view line, bool showsHidden)
    {
        LineTokens tokens(line, isInHex_, showsHidden);
        for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next())
            TakeToken(token.kind, line.substr(token.begin, token.end - token.begin));
        isInHex_ = tokens.IsInHex();
    }

    Unshown Counts() const
    {
        Unshown unshown = unshown_;
        unshown.patterns = patterns_.size();
        return unshown;
    }

  private:
    enum class Section : uint8_t { None, Placed, Binary };
    using Pattern = std::optional<std::string>; // none: another paint

    // A pattern's name is the first string of its operands.
    void TakeToken(TokenKind kind, std::string_view text)
    {
        switch (kind) {
        case TokenKind::String:
            if (!isNameWhole_)
                name_ = StringBytes(text);
            isNameWhole_ = true;
            break;
        case TokenKind::HexData:
            if (!isNameWhole_)
                name_ += HexBytes(text);
            break;
        case TokenKind::HexEnd:
            isNameWhole_ = true;
            break;
        case TokenKind::Operator:
            TakeOperator(text);
            name_.clear();
            isNameWhole_ = false;
            break;
        default:
            break;
        }
    }

    void TakeOperator(std::string_view word)
    {
        const auto isOneOf = [word](auto... words) { return ((word == words) || ...); };
        if (word == "p")
            fill_ = name_;
        else if (word == "P")
            stroke_ = name_;
        else if (isOneOf("g", "k", "x"))
            fill_.reset();
        else if (isOneOf("G", "K", "X"))
            stroke_.reset();
        else if (word == "`")
            BeginPostScript();
        else if (word == "~")
            EndPostScript();
        // Text takes the fill's paint, also where it is only stroked.
        if (isOneOf("f", "F", "b", "B", "Tx", "Tj", "TS", "T~", "t"))
            PaintIn(fill_);
        if (isOneOf("s", "S", "b", "B"))
            PaintIn(stroke_);
    }

    void PaintIn(const Pattern &pattern)
    {
        if (pattern && patterns_.size() < Unshown::kMostPatterns)
            patterns_.insert(*pattern);
    }

    void BeginPostScript()
    {
        if (openFragments_++ == 0)
            ++unshown_.postscript;
    }

    // An end without a beginning is one that was passed over too.
    void EndPostScript()
    {
        if (openFragments_ == 0)
            ++unshown_.postscript;
        else
            --openFragments_;
    }

    Unshown unshown_;
    Section section_ = Section::None;
    bool isInHex_ = false;
    std::string name_;
    bool isNameWhole_ = false;
    Pattern fill_, stroke_;
    std::set<std::string> patterns_;
    uint64_t openFragments_ = 0;
};

} // namespace

bool MayHoldPlacedPicture(const Document &document, std::string_view drawing)
{
    const size_t offset = OffsetIn(document, drawing);
    for (size_t at = 0; at < drawing.size(); at += Document::kReadAtOnce) {
        const std::string_view piece = drawing.substr(at, Document::kReadAtOnce + kBeginPlace.size() - 1);
        if (piece.find(kBeginPlace) != std::string_view::npos)
            return true;
        document.Leave(offset + at, offset + at + piece.size());
    }
    return false;
}

Unshown CountUnshown(const Document &document, std::string_view drawing, int version, const Blanks &blanks)
{
    const size_t offset = OffsetIn(document, drawing);
    BodySections sections(version);
    Counter counter;
    std::array<char, kLineRoom> room;
    LineWalk lines(drawing, FindBody(drawing, version));
    size_t left = 0;
    while (lines.Next()) {
        const std::string_view line = BlankedLine(lines.Line(), offset + lines.Start(), blanks, &room);
        const BodySections::Fate fate = sections.Follow(line);
        if (fate == BodySections::Fate::End)
            break;
        // The setup section defines things, and shows nothing. Version 2 is read from behind it.
        if (line.starts_with('%') && (version <= 2 || !sections.IsInSetup()))
            counter.TakeComment(line);
        if (fate == BodySections::Fate::Interpret)
            counter.TakeLine(line, sections.ShowsHidden());
        if (lines.Start() - left >= Document::kReadAtOnce) {
            document.Leave(offset + left, offset + lines.Start());
            left = lines.Start();
        }
    }
    return counter.Counts();
}

bool IsCounted(const Unshown &unshown, int problem)
{
    return (problem == kVXProblemPattern && unshown.patterns > 0) ||
           (problem == kVXProblemPostScript && unshown.postscript > 0) ||
           (problem == kVXProblemBinary && unshown.binary > 0);
}

std::vector<std::string> UnshownTexts(const Unshown &unshown)
{
    struct Row {
        uint64_t count;
        const char *one, *many;
    };
    const Row rows[] = {
        {unshown.patterns, " pattern is painted in half gray", " patterns are painted in half gray"},
        {unshown.placedPictures, " placed picture is not drawn", " placed pictures are not drawn"},
        {unshown.postscript, " fragment of embedded PostScript is passed over, what it draws is missing",
         " fragments of embedded PostScript are passed over, what they draw is missing"},
        {unshown.binary, " section of binary data is passed over, a picture may be missing",
         " sections of binary data are passed over, pictures may be missing"},
        {unshown.betweenLayers, " object behind the end of a layer, before another begins, is not drawn",
         " objects behind the end of a layer, before another begins, are not drawn"}};
    std::vector<std::string> texts;
    for (const auto &[count, one, many] : rows) {
        if (count > 0)
            texts.push_back(std::to_string(count).append(count == 1 ? one : many));
    }
    return texts;
}

} // namespace vxhost
