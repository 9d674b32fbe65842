#include "host/reading/DocumentEnd.h"

#include "host/reading/BodySections.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr std::string_view kLineEnds = "\r\n";

// Follows the comments that open and close sections.
class Sections
{
  public:
    // False: the line says that the document ends.
    bool Follow(std::string_view line)
    {
        isInSetup_ = isInSetup_ && !line.starts_with("%%EndSetup");
        if (const std::optional<bool> passesOver = PassesOverBehind(line)) {
            passesOver_ = *passesOver;
            return true;
        }
        return passesOver_ || (!IsWholeLine(line, "%%PageTrailer") && !IsWholeLine(line, "%%Trailer") &&
                               !IsWholeLine(line, "%%EOF"));
    }

    bool PassesOver() const { return passesOver_; }
    bool IsInSetup() const { return isInSetup_; }

  private:
    bool passesOver_ = false;
    bool isInSetup_ = true;
};

// The lines that begin with "%", one after the other.
class CommentLines
{
  public:
    CommentLines(std::string_view text, const Document &document) : text_(text), document_(document) {}

    bool Next(std::string_view *line)
    {
        while (FindSign()) {
            const size_t at = at_;
            const bool beginsLine = BeginsLine(at);
            at_ = FindNextStart(at);
            if (!beginsLine)
                continue;
            *line =
                text_.substr(at, std::min(text_.substr(at, kLineRoom).find_first_of(kLineEnds), kLineRoom));
            start_ = at;
            return true;
        }
        return false;
    }

    size_t Start() const { return start_; } // where the line begins that was given last
    size_t Behind() const { return at_; }   // where the next begins

  private:
    // No more of the document stays in memory than a piece.
    bool FindSign()
    {
        while (at_ < text_.size()) {
            const std::string_view piece = text_.substr(at_, Document::kReadAtOnce);
            const size_t found = piece.find('%');
            at_ += std::min(found, piece.size());
            if (found != std::string_view::npos)
                return true;
            const size_t offset = OffsetOf(at_);
            document_.Leave(offset - piece.size(), offset);
        }
        return false;
    }

    // Returns where the next line may begin: behind the end of the one at hand, or where that gets too long.
    size_t FindNextStart(size_t at) const
    {
        const size_t cut = lineStart_ + ((at - lineStart_) / kLineRoom + 1) * kLineRoom;
        const size_t end = text_.substr(at, cut - at).find_first_of(kLineEnds);
        return end == std::string_view::npos ? std::min(cut, text_.size()) : at + end + 1;
    }

    size_t OffsetOf(size_t at) const
    {
        return static_cast<size_t>(text_.data() - reinterpret_cast<const char *>(document_.Bytes().data())) +
               at;
    }

    bool BeginsLine(size_t at)
    {
        if (at == 0 || IsLineEnd(text_[at - 1])) {
            lineStart_ = searched_ = at;
            return true;
        }
        // Every byte is searched once, however many signs a line has.
        const size_t end = text_.substr(searched_, at - searched_).find_last_of(kLineEnds);
        if (end != std::string_view::npos)
            lineStart_ = searched_ + end + 1;
        searched_ = at;
        return (at - lineStart_) % kLineRoom == 0;
    }

    std::string_view text_;
    const Document &document_;
    size_t at_ = 0;
    size_t start_ = 0;
    size_t lineStart_ = 0; // the last before searched_
    size_t searched_ = 0;
};

// Counts what operators open and close.
class OpenCounter
{
  public:
    void Take(std::string_view word)
    {
        struct Row {
            std::string_view opening, closing;
            uint64_t OpenThings::*count;
        };
        static constexpr Row kRows[] = {
            {"u", "U", &OpenThings::groups},      {"*u", "*U", &OpenThings::compoundPaths},
            {"q", "Q", &OpenThings::saves},       {"Lb", "LB", &OpenThings::layers},
            {"Bb", "BB", &OpenThings::gradients}, {"To", "TO", &OpenThings::texts}};
        for (const auto &[opening, closing, count] : kRows) {
            if (word == opening)
                ++(open.*count);
            else if (word == closing && open.*count > 0)
                --(open.*count);
        }
    }

    OpenThings open;
};

// Takes the operators of a line. isInHex says whether a hex string is open, which may go over lines.
void TakeOperators(std::string_view line, bool *isInHex, OpenCounter *counter)
{
    LineTokens tokens(line, *isInHex);
    for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
        if (token.kind == TokenKind::Operator)
            counter->Take(line.substr(token.begin, token.end - token.begin));
    }
    *isInHex = tokens.IsInHex();
}

// A document without a setup section, as the oldest are, has its operators anywhere. The text stands there in the document.
OpenThings FindOpenThings(std::string_view text, size_t start, const Blanks &blanks)
{
    std::array<char, kLineRoom> room;
    Sections sections;
    OpenCounter counter;
    bool isInHex = false;
    const bool hasSetup = text.find("%%BeginSetup") != std::string_view::npos;
    LineWalk lines(text);
    while (lines.Next()) {
        const std::string_view line = BlankedLine(lines.Line(), start + lines.Start(), blanks, &room);
        if (line.starts_with('%'))
            (void)sections.Follow(line);
        else if (!sections.PassesOver() && !(hasSetup && sections.IsInSetup()))
            TakeOperators(line, &isInHex, &counter);
    }
    return counter.open;
}

// Returns whether lines outside of sections have anything but comments.
bool HasMoreThanComments(std::string_view text)
{
    Sections sections;
    LineWalk lines(text);
    while (lines.Next()) {
        const std::string_view line = lines.Line();
        if (line.starts_with('%'))
            (void)sections.Follow(line);
        else if (!sections.PassesOver() && !std::ranges::all_of(line, IsTokenSpace))
            return true;
    }
    return false;
}

} // namespace

uint64_t CountLineEnds(std::span<const std::byte> bytes, size_t before)
{
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), before);
    uint64_t count = 0;
    for (size_t at = 0; at < text.size(); ++at)
        count += text[at] == '\n' || (text[at] == '\r' && !text.substr(at + 1).starts_with('\n')) ? 1 : 0;
    return count;
}

DocumentEnd FindEnd(const Document &document, bool looksForOpenThings, const Blanks &blanks)
{
    bool isWrapped = false;
    const std::span<const std::byte> bytes = document.Bytes();
    const std::string_view text =
        DrawingSection({reinterpret_cast<const char *>(bytes.data()), bytes.size()}, &isWrapped);
    const auto start = static_cast<size_t>(text.data() - reinterpret_cast<const char *>(bytes.data()));
    CommentLines lines(text, document);
    Sections sections;
    DocumentEnd end;
    end.isSaid = false;
    std::string_view line;
    size_t stop = 0,
           behind =
               0; // where the interpreter stops in a section, and what it so never reads begins; 0: nowhere
    while (!end.isSaid && lines.Next(&line)) {
        const bool isStop = sections.PassesOver() && IsWholeLine(line, "%%EOF");
        end.isSaid = !sections.Follow(line);
        if (stop == 0 && isStop)
            stop = lines.Start();
        else if (stop != 0 && behind == 0 && !sections.PassesOver())
            behind = lines.Behind();
    }
    if (behind != 0) {
        const std::string_view rest =
            text.substr(behind, end.isSaid ? lines.Start() - behind : std::string_view::npos);
        if (HasMoreThanComments(rest))
            end.undrawn = {CountLineEnds(bytes, start + stop) + 1, rest.size()};
    }
    end.isInLine = !end.isSaid && !text.empty() && !IsLineEnd(text.back());
    if (looksForOpenThings || !end.isSaid)
        end.open = FindOpenThings(end.isSaid ? text.substr(0, lines.Start()) : text, start, blanks);
    end.open.isSetup =
        !end.isSaid && sections.IsInSetup() && text.find("%%BeginSetup") != std::string_view::npos;
    return end;
}

std::string OpenText(const OpenThings &open)
{
    struct Row {
        uint64_t count;
        const char *one, *many;
    };
    const Row rows[] = {{open.groups, "a group", "groups"},
                        {open.compoundPaths, "a compound path", "compound paths"},
                        {open.saves, "a saved state", "saved states"},
                        {open.layers, "a layer", "layers"},
                        {open.gradients, "a gradient", "gradients"},
                        {open.texts, "a text", "texts"},
                        {open.isSetup ? uint64_t{1} : uint64_t{0}, "the setup section", ""}};
    std::vector<std::string> parts;
    for (const auto &[count, one, many] : rows) {
        if (count > 0)
            parts.push_back(count == 1 ? one : std::to_string(count) + " " + many);
    }
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return text;
}

} // namespace vxhost
