#include "host/reading/FaultFinder.h"

#include "host/reading/BodySections.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"
#include "host/reading/OperandRules.h"

#include <vx/HostCall.h>

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

std::string_view TextOf(const Document &document)
{
    return {reinterpret_cast<const char *>(document.Bytes().data()), document.Bytes().size()};
}

// Goes through the lines as the interpreter does, and knows which operands wait where each begins.
class LineFollower final : public StreamCompanion
{
  public:
    // The drawing stands at that offset of the document.
    LineFollower(std::string_view drawing, size_t offset, int version, const Blanks &blanks)
        : drawing_(drawing), offset_(offset), blanks_(blanks), lines_(drawing), sections_(version),
          body_(FindBody(drawing, version))
    {
    }

    void Deliver(std::span<std::byte>, size_t) override {}
    void BeginLine() override
    {
        if (count_++ > 0 && !isAtEnd_ && IsInBody())
            CarryOut();
        isAtEnd_ = !lines_.Next();
        line_.clear();
        if (!isAtEnd_)
            line_ = drawing_.substr(Start(), lines_.NextStart() - Start());
        blanks_.Apply(std::as_writable_bytes(std::span(line_)), offset_ + Start());
    }

    size_t Count() const { return count_; }
    bool IsAtEnd() const { return isAtEnd_; } // there are no more lines
    size_t Start() const { return isAtEnd_ ? drawing_.size() : lines_.Start(); }
    std::string_view Line() const { return line_; } // with its end
    bool IsInBody() const { return Start() >= body_; }

    bool IsInSetup() const { return sections_.IsInSetup(); }
    bool IsInHex() const { return isInHex_; }
    const OperandStack &Stack() const { return stack_; }

  private:
    void CarryOut()
    {
        if (sections_.Follow(lines_.Line()) != BodySections::Fate::Interpret)
            return;
        LineTokens tokens(Line(), isInHex_, sections_.ShowsHidden());
        for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next())
            stack_.Take(token, Line(), Start());
        isInHex_ = tokens.IsInHex();
    }

    std::string_view drawing_;
    size_t offset_;
    const Blanks &blanks_;
    LineWalk lines_;
    std::string line_;
    BodySections sections_;
    size_t body_;
    size_t count_ = 0;
    bool isAtEnd_ = false;
    bool isInHex_ = false;
    OperandStack stack_;
};

// The interpreter may refuse a token for itself where it does more with it than to take an operand.
bool MayEndPiece(TokenKind kind)
{
    return kind == TokenKind::Operator || kind == TokenKind::ArrayEnd || kind == TokenKind::HexEnd ||
           kind == TokenKind::Malformed;
}

// One line taken apart: each piece ends with the one token that may be refused, and becomes a line.
struct Pieces {
    std::vector<size_t> ends; // in the line
    std::string text;
    std::vector<size_t> starts; // in the text
};

// room: how many bytes the text may have. Where there is too little, a piece has more than one such token.
Pieces TakeApart(std::string_view line, bool isInHex, bool showsHidden, size_t room)
{
    Pieces pieces;
    size_t spare = room - line.size();
    size_t begin = 0, last = 0;
    LineTokens tokens(line, isInHex, showsHidden);
    for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
        if (token.kind == TokenKind::Comment)
            break;
        last = token.end;
        const bool hasSpace = token.end < line.size() && IsTokenSpace(line[token.end]);
        if (!MayEndPiece(token.kind) || (!hasSpace && spare == 0))
            continue;
        spare -= hasSpace ? 0 : 1;
        pieces.starts.push_back(pieces.text.size());
        pieces.text.append(line.substr(begin, token.end - begin)).append("\r");
        begin = token.end + (hasSpace ? 1 : 0);
        pieces.ends.push_back(token.end);
    }
    if (last > begin) {
        pieces.starts.push_back(pieces.text.size());
        pieces.text.append(line.substr(begin, last - begin)).append(spare > 0 ? "\r" : "");
        pieces.ends.push_back(last);
    }
    return pieces;
}

// Gives the plug-in other bytes from an offset on, and blanks behind them.
class TailFeeder final : public StreamCompanion
{
  public:
    TailFeeder(size_t offset, std::string tail) : offset_(offset), tail_(std::move(tail)) {}

    void Deliver(std::span<std::byte> bytes, size_t offset) override
    {
        const size_t first = offset >= offset_ ? 0 : std::min(offset_ - offset, bytes.size());
        for (size_t i = first; i < bytes.size(); ++i) {
            const size_t at = offset + i - offset_;
            bytes[i] = static_cast<std::byte>(at < tail_.size() ? tail_[at] : ' ');
        }
    }
    void BeginLine() override { ++count_; }

    size_t Count() const { return count_; }

  private:
    size_t offset_;
    std::string tail_;
    size_t count_ = 0;
};

// Returns the piece that the interpreter refused, which took so many lines of the pieces; none: it refused none.
std::optional<size_t> PieceOfLine(const Pieces &pieces, size_t lines)
{
    LineWalk walk(pieces.text);
    for (; lines > 0; --lines) {
        if (!walk.Next())
            return std::nullopt;
    }
    const auto after = std::ranges::upper_bound(pieces.starts, walk.Start());
    return static_cast<size_t>(after - pieces.starts.begin()) - 1;
}

class FaultFinder
{
  public:
    FaultFinder(const Document &document, int version, const Blanks &blanks, const SilentPass &pass)
        : pass_(pass), version_(version), drawing_(DrawingSection(TextOf(document), &isWrapped_)),
          offset_(static_cast<size_t>(drawing_.data() - TextOf(document).data())),
          follower_(drawing_, offset_, version, blanks)
    {
    }

    std::optional<FoundFault> Find()
    {
        const Outcome outcome = pass_(&follower_);
        if (outcome.result != kVXBadFormat || follower_.Count() == 0)
            return std::nullopt;
        FoundFault fault;
        fault.offset = offset_ + follower_.Start();
        fault.isInBody = follower_.IsInBody() && !follower_.IsAtEnd();
        if (!fault.isInBody) {
            fault.told.text = std::string("the document ends here, without a line \"") +
                              (version_ > 2 ? "%%BeginSetup" : "%%EndSetup") + "\"";
            return fault;
        }
        fault.told.text = "this line cannot be carried out";
        const Pieces pieces = TakeApart(follower_.Line(), follower_.IsInHex(), follower_.IsInSetup(),
                                        drawing_.size() - follower_.Start());
        if (const std::optional<size_t> piece = FindPiece(pieces))
            FindToken(*piece == 0 ? 0 : pieces.ends[*piece - 1], pieces.ends[*piece], &fault);
        return fault;
    }

  private:
    std::optional<size_t> FindPiece(const Pieces &pieces)
    {
        if (pieces.starts.size() == 1)
            return 0; // it can be no other
        TailFeeder feeder(offset_ + follower_.Start(), pieces.text);
        const Outcome outcome = pass_(&feeder);
        if (outcome.result != kVXBadFormat || feeder.Count() < follower_.Count() || pieces.starts.empty())
            return std::nullopt;
        return PieceOfLine(pieces, feeder.Count() - follower_.Count() + 1);
    }

    // The fault ends between the two places of the line.
    void FindToken(size_t from, size_t to, FoundFault *fault) const
    {
        const std::string_view line = follower_.Line();
        const size_t lineStart = follower_.Start();
        OperandStack stack = follower_.Stack();
        bool isInHex = follower_.IsInHex();
        LineTokens tokens(line, isInHex, follower_.IsInSetup());
        for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
            if (token.end > from) {
                std::string why = token.kind == TokenKind::Operator
                                      ? ExplainOperands(line.substr(token.begin, token.end - token.begin),
                                                        stack, follower_.IsInSetup())
                                      : ExplainToken(token, line, isInHex, stack);
                if (!why.empty() || token.end == to) {
                    Tell(token, std::move(why), stack, fault);
                    return;
                }
            }
            stack.Take(token, line, lineStart);
            isInHex = tokens.IsInHex();
        }
    }

    void Tell(const Token &token, std::string why, const OperandStack &stack, FoundFault *fault) const
    {
        const size_t lineStart = follower_.Start();
        fault->offset = offset_ + lineStart + token.begin;
        fault->places.assign(stack.Places().begin(), stack.Places().end());
        fault->places.push_back(PlaceOf(token));
        for (ByteRange &place : fault->places) {
            place.begin += offset_;
            place.end += offset_;
        }
        if (why.empty())
            why = ExplainOtherwise(token);
        fault->told.text = std::move(why);
    }

    // Says what no rule explains.
    std::string ExplainOtherwise(const Token &token) const
    {
        const std::string_view name = follower_.Line().substr(token.begin, token.end - token.begin);
        if (token.kind == TokenKind::String || token.kind == TokenKind::HexData)
            return "more strings before an operator than the interpreter keeps, 8192 bytes";
        const bool isPlain = std::ranges::all_of(name, [](char byte) { return byte > ' ' && byte <= '~'; });
        const bool isNamed = isPlain && token.kind == TokenKind::Operator && name.size() <= 2;
        return (isNamed ? std::string("\"").append(name).append("\"") : "this") + " cannot be carried out";
    }

    // Returns what has to go so that the token is none.
    ByteRange PlaceOf(const Token &token) const
    {
        const std::string_view line = follower_.Line();
        const size_t begin = follower_.Start() + token.begin;
        // Behind "%_": it becomes a comment, as what follows it is.
        if (token.begin >= 2 && line.substr(token.begin - 2, 2) == "%_")
            return {begin - 1, begin};
        const bool isOneByte =
            token.kind == TokenKind::Malformed && (line[token.begin] == ')' || line[token.begin] == '>');
        return {begin, isOneByte ? begin + 1 : follower_.Start() + token.end};
    }

    const SilentPass &pass_;
    int version_;
    bool isWrapped_ = false;
    std::string_view drawing_;
    size_t offset_; // of the drawing in the document
    LineFollower follower_;
};

} // namespace

std::optional<FoundFault> FindFault(const Document &document, int version, const Blanks &blanks,
                                    const SilentPass &pass)
{
    return FaultFinder(document, version, blanks, pass).Find();
}

void PlaceFault(const Document &file, size_t offset, DocumentFault *fault)
{
    const std::string_view text = TextOf(file).substr(0, offset);
    size_t lineStart = 0;
    fault->line = 1;
    for (size_t at = 0; at < text.size();) {
        const size_t pieceEnd = std::min(at + Document::kReadAtOnce, text.size());
        const size_t end = text.substr(0, pieceEnd).find_first_of("\r\n", at);
        if (end == std::string_view::npos) {
            file.Leave(at, pieceEnd);
            at = pieceEnd;
            continue;
        }
        // CR LF is one end.
        at = end + (TextOf(file).substr(end, 2) == "\r\n" ? 2 : 1);
        if (at > offset)
            break;
        ++fault->line;
        lineStart = at;
    }
    fault->column = static_cast<int64_t>(offset - lineStart) + 1;
}

} // namespace vxhost
