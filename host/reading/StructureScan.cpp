#include "host/reading/StructureScan.h"

#include "host/reading/ByteBlocks.h"
#include "host/reading/LineWalk.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kBlock = 64;
constexpr uint8_t kCaseBit = 0x20;

struct OperatorRow {
    std::string_view name;
    StructureOperator what;
    uint8_t operands; // that it takes at most
};

// Rows of one first letter stand together.
constexpr OperatorRow kOperators[] = {
    {"Lb", StructureOperator::BeginLayer, 10},   {"Ln", StructureOperator::NameLayer, 1},
    {"LB", StructureOperator::EndLayer, 0},      {"u", StructureOperator::BeginGroup, 0},
    {"U", StructureOperator::EndGroup, 0},       {"x", StructureOperator::FillInk, 6},
    {"X", StructureOperator::StrokeInk, 6},      {"g", StructureOperator::FillProcess, 0},
    {"k", StructureOperator::FillProcess, 0},    {"p", StructureOperator::FillProcess, 0},
    {"G", StructureOperator::StrokeProcess, 0},  {"K", StructureOperator::StrokeProcess, 0},
    {"P", StructureOperator::StrokeProcess, 0},  {"Bd", StructureOperator::DefineBlend, 3},
    {"Bs", StructureOperator::AddStop, 9},       {"Bg", StructureOperator::BindBlend, 12},
    {"BB", StructureOperator::EndBlend, 0},      {"To", StructureOperator::BeginText, 1},
    {"Tp", StructureOperator::BeginTextPath, 0}, {"TO", StructureOperator::EndText, 0},
    {"T", StructureOperator::EndText, 0},        {"e", StructureOperator::BeginText, 0},
    {"a", StructureOperator::BeginText, 0},      {"o", StructureOperator::BeginText, 0},
    {"r", StructureOperator::BeginText, 0},
};

// By their first letters: where their rows begin, less 1; 0: there are none.
constexpr auto kRowsOf = [] {
    std::array<uint8_t, 256> rows = {};
    for (size_t i = std::size(kOperators); i-- > 0;)
        rows[static_cast<uint8_t>(kOperators[i].name[0])] = static_cast<uint8_t>(i + 1);
    return rows;
}();

const OperatorRow *FindOperator(std::string_view name)
{
    const size_t first = kRowsOf[static_cast<uint8_t>(name[0])];
    for (size_t i = first; i > 0 && i <= std::size(kOperators) && kOperators[i - 1].name[0] == name[0]; ++i) {
        if (kOperators[i - 1].name == name)
            return &kOperators[i - 1];
    }
    return nullptr;
}

template <char... kLetters>
ByteBlock IsLetter(ByteBlock bytes) // in either case
{
    const ByteBlock lower = bytes | kCaseBit;
    return (Is(lower, kLetters) | ...);
}

// Marks the first letter of longer words: operators of layers and of blends.
ByteBlock BeginsLongWord(ByteBlock bytes, ByteBlock after)
{
    constexpr uint8_t kLetterBit = 0x40;
    return (Is(bytes, 'L') | Is(bytes, 'B')) & reinterpret_cast<ByteBlock>((after & kLetterBit) != 0);
}

bool IsLetter(char character)
{
    const auto lower = static_cast<uint8_t>(character | kCaseBit);
    return lower >= 'a' && lower <= 'z';
}

// Marks where something that matters may begin, far more often than need be.
template <StructureScan::Search kSearch>
ByteBlock MarksIn(const uint8_t *bytes)
{
    using Search = StructureScan::Search;
    const ByteBlock block = LoadBlock(bytes);
    ByteBlock marks = BeginsLongWord(block, LoadBlock(bytes + 1));
    if constexpr (kSearch != Search::Words && kSearch != Search::LayerWords)
        marks |= Is(block, '%') | Is(block, '<');
    if constexpr (kSearch != Search::Layers && kSearch != Search::LayerWords)
        marks |= IsLetter<'u', 'x'>(block);
    if constexpr (kSearch == Search::Colours)
        marks |= IsLetter<'g', 'k', 'p'>(block);
    return marks;
}

// Finds the first block at or behind that place which has marks; the limit or more, where there is none before it.
template <StructureScan::Search kSearch>
size_t FindMarks(std::string_view text, size_t from, size_t limit, uint64_t *marks)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
    constexpr size_t kStep = sizeof(ByteBlock);
    std::array<uint8_t, kBlock + 1> copy;
    for (; from < limit; from += kBlock) {
        const uint8_t *block = bytes + from;
        // The last bytes have none behind them: a copy has blanks there.
        if (from + kBlock >= text.size()) {
            copy.fill(' ');
            std::copy_n(block, text.size() - from, copy.begin());
            block = copy.data();
        }
        const ByteBlock parts[] = {MarksIn<kSearch>(block), MarksIn<kSearch>(block + kStep),
                                   MarksIn<kSearch>(block + 2 * kStep), MarksIn<kSearch>(block + 3 * kStep)};
        if (!IsAny(parts[0] | parts[1] | parts[2] | parts[3]))
            continue;
        *marks = BitsOf(parts[0]) | BitsOf(parts[1]) << kStep | BitsOf(parts[2]) << 2 * kStep |
                 BitsOf(parts[3]) << 3 * kStep;
        return from;
    }
    return from;
}

bool IsOfText(StructureOperator what)
{
    return what == StructureOperator::BeginText || what == StructureOperator::BeginTextPath ||
           what == StructureOperator::EndText;
}

bool IsOperand(TokenKind kind)
{
    return kind != TokenKind::Operator && kind != TokenKind::Brace && kind != TokenKind::Comment &&
           kind != TokenKind::Malformed && kind != TokenKind::HexBegin && kind != TokenKind::HexEnd;
}

} // namespace

StructureScan::StructureScan(std::string_view drawing, int version)
    : drawing_(drawing), sections_(version), body_(FindBody(drawing, version)), next_(body_),
      nextLine_(body_), lineStart_(body_), operandsFrom_(body_), takenTo_(body_)
{
}

// Returns whether what matters may begin there, as things stand: a word of one letter has no letter beside it.
bool StructureScan::IsCandidate(size_t at) const
{
    const char first = drawing_[at], next = at + 1 < drawing_.size() ? drawing_[at + 1] : ' ';
    switch (first) {
    case '%':
    case '<':
        return true;
    case 'L':
        return next == 'b' || next == 'n' || next == 'B';
    case 'B':
        return (hasSpotStop_ || sections_.IsInSetup()) && !findsLayersAlone_ && IsLetter(next);
    default:
        return IsHeardAlone(first) && !IsLetter(next) && (at == 0 || !IsLetter(drawing_[at - 1]));
    }
}

// A process colour matters only where it puts an ink out.
bool StructureScan::IsHeardAlone(char name) const
{
    switch (name) {
    case 'g':
    case 'k':
    case 'p':
        return hasFillInk_;
    case 'G':
    case 'K':
    case 'P':
        return hasStrokeInk_;
    default:
        return true;
    }
}

// Returns limit where there is none before it.
template <StructureScan::Search kSearch>
size_t StructureScan::FindCandidate(size_t from, size_t limit) const
{
    while (from < limit) {
        uint64_t marks = 0;
        from = FindMarks<kSearch>(drawing_, from, limit, &marks);
        for (; marks != 0; marks &= marks - 1) {
            const size_t at = from + static_cast<size_t>(std::countr_zero(marks));
            if (at >= limit)
                return limit;
            if (IsCandidate(at))
                return at;
        }
        from += kBlock;
    }
    return limit;
}

bool StructureScan::MayFind(Search search, Place *from, size_t limit) const
{
    constexpr size_t kAtOnce = 16384; // is still at hand when its lines are looked at
    while (from->next < limit) {
        const size_t to = std::min(from->next + kAtOnce, limit);
        const size_t found = search == Search::Words ? FindCandidate<Search::Words>(from->next, to)
                                                     : FindCandidate<Search::LayerWords>(from->next, to);
        from->next = to;
        if (found < to || FindCutLine(&from->line, to))
            return true;
    }
    return false;
}

// Everything before that place has been looked at.
void StructureScan::GoTo(size_t position)
{
    const size_t start = FindLineStart(drawing_, next_, position);
    if (start > next_)
        nextLine_ = start;
    next_ = position;
}

// A cut may fall within a word and make an operator of its rest, so a line that is cut is read in all of its pieces. Goes from the
// start of a line to that of the first such line before that place; false: there is none.
bool StructureScan::FindCutLine(size_t *start, size_t before) const
{
    while (*start + kLineRoom <= before) {
        // Lines are short, so the last line end within reach is soon found.
        const size_t next = FindLineStart(drawing_, *start, *start + kLineRoom);
        if (next == *start)
            return true;
        *start = next;
    }
    return false;
}

bool StructureScan::NextLine(size_t limit)
{
    limit = std::min(limit, drawing_.size());
    foundCount_ = 0;
    while (!isOver_ && foundCount_ == 0 && next_ < limit) {
        if (!ReadsEachLine()) {
            const size_t candidate = findsLayersAlone_ ? FindCandidate<Search::Layers>(next_, limit)
                                     : hasFillInk_ || hasStrokeInk_
                                         ? FindCandidate<Search::Colours>(next_, limit)
                                         : FindCandidate<Search::Operators>(next_, limit);
            size_t cutLine = nextLine_;
            if (FindCutLine(&cutLine, candidate)) {
                next_ = nextLine_ = cutLine;
            } else {
                GoTo(candidate);
                if (candidate == limit)
                    return false;
            }
        }
        ReadLine();
    }
    return foundCount_ > 0;
}

std::string_view StructureScan::LineOf(size_t begin, size_t end, LineBytes *room) const
{
    const std::string_view line = drawing_.substr(begin, end - begin);
    return blanks_ == nullptr ? line : BlankedLine(line, start_ + begin, *blanks_, room);
}

// Reads the line that next_ is in, and goes to the one behind it.
void StructureScan::ReadLine()
{
    lineStart_ = nextLine_ + (next_ - nextLine_) / kLineRoom * kLineRoom;
    lineEnd_ = FindLineEnd(drawing_, lineStart_);
    line_ = LineOf(lineStart_, lineEnd_, &lineBytes_);
    const size_t behind = FindNextLine(drawing_, lineEnd_);
    const bool wasPassedOver = sections_.PassesOver();
    const BodySections::Fate fate = sections_.Follow(line_);
    if (!wasPassedOver && sections_.PassesOver())
        passedFrom_ = lineStart_;
    if (wasPassedOver && !sections_.PassesOver())
        passedTo_ = behind;
    if (fate == BodySections::Fate::Interpret)
        TakeTokens(line_);
    isOver_ = fate == BodySections::Fate::End;
    // A line that is cut goes on: the start of all of it decides where it is cut next.
    isInCutLine_ = behind == lineEnd_;
    if (!isInCutLine_)
        nextLine_ = behind;
    next_ = behind;
}

void StructureScan::TakeTokens(std::string_view line)
{
    // Lines that were not looked at hold other operands, or the operator that took them.
    if (lineStart_ != takenTo_) {
        operands_.clear();
        operandsFrom_ = lineStart_;
        areOperandsKnown_ = lineStart_ == body_;
    }
    const size_t from = lineStart_;
    tokens_.clear();
    LineTokens tokens(line, isInHex_, sections_.ShowsHidden());
    for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
        const PlacedToken placed = {token.kind, from + token.begin, from + token.end};
        tokens_.push_back(placed);
        if (token.kind == TokenKind::Operator)
            TakeOperator(line.substr(token.begin, token.end - token.begin), placed);
        else if (IsOperand(token.kind))
            operands_.push_back(placed);
        // No more operands than the last ones are ever asked for.
        if (operands_.size() > 4 * FoundOperator::kMostOperands)
            operands_.erase(operands_.begin(), operands_.end() - FoundOperator::kMostOperands);
    }
    isInHex_ = tokens.IsInHex();
    takenTo_ = FindNextLine(drawing_, lineEnd_);
    FindSplits();
}

void StructureScan::TakeOperator(std::string_view name, const PlacedToken &token)
{
    if (const OperatorRow *row = FindOperator(name))
        AddOperator(row->what, token, row->operands);
    operands_.clear();
    areOperandsKnown_ = true;
}

// Returns whether the operator says something, as things stand. Its operands are known.
bool StructureScan::IsHeard(StructureOperator what)
{
    switch (what) {
    case StructureOperator::FillInk:
        return hasFillInk_ = true;
    case StructureOperator::StrokeInk:
        return hasStrokeInk_ = true;
    case StructureOperator::FillProcess:
        return std::exchange(hasFillInk_, false);
    case StructureOperator::StrokeProcess:
        return std::exchange(hasStrokeInk_, false);
    case StructureOperator::DefineBlend:
        return sections_.IsInSetup();
    case StructureOperator::AddStop:
        if (operands_.size() > kStopOperandsBehindKind)
            hasSpotStop_ |= IntegerOfToken(Text(operands_[operands_.size() - 1 - kStopOperandsBehindKind])) ==
                            kStopOfSpot;
        return sections_.IsInSetup();
    case StructureOperator::BindBlend:
    case StructureOperator::EndBlend:
        return hasSpotStop_ && !sections_.IsInSetup();
    default:
        return true;
    }
}

void StructureScan::AddOperator(StructureOperator what, const PlacedToken &token, size_t wanted)
{
    if (IsOfText(what) && !findsTexts_)
        return;
    if (operands_.size() < wanted && !areOperandsKnown_)
        LookBack(wanted);
    if (!IsHeard(what))
        return;
    if (foundCount_ == found_.size())
        found_.emplace_back();
    FoundOperator &found = found_[foundCount_++];
    found.what = what;
    found.begin = token.begin;
    found.end = token.end;
    found.split = 0;
    found.count = std::min(operands_.size(), FoundOperator::kMostOperands);
    std::copy_n(operands_.end() - static_cast<ptrdiff_t>(found.count), found.count, found.room.begin());
}

// The interpreter has to stand between an operator that matters and the next of any kind: it does so between two lines.
void StructureScan::FindSplits()
{
    // A line end within a line that is cut would move the cuts behind it.
    const bool isCut = lineEnd_ < drawing_.size() && !IsLineEnd(drawing_[lineEnd_]);
    if (isCut)
        return;
    size_t next = tokens_.size(); // the operator behind
    size_t at = tokens_.size();
    for (size_t i = foundCount_; i-- > 0;) {
        while (tokens_[--at].begin != found_[i].begin) {
            if (tokens_[at].kind == TokenKind::Operator)
                next = at;
        }
        found_[i].split = next < tokens_.size() ? FindSplit(at, next) : 0;
        // Neither operator paints, so they need not be kept apart: both are told where the second is.
        if (found_[i].split == 0 && i + 1 < foundCount_ && tokens_[next].begin == found_[i + 1].begin)
            found_[i].split = found_[i + 1].split;
        next = at;
    }
}

// Returns a blank between two tokens of the line; 0: there is none that may become a line end.
size_t StructureScan::FindSplit(size_t from, size_t to) const
{
    for (size_t i = from; i < to; ++i) {
        const size_t gap = tokens_[i].end;
        const TokenKind behind = tokens_[i + 1].kind;
        if (tokens_[i + 1].begin == gap || !IsTokenSpace(line_[gap - lineStart_]) ||
            behind == TokenKind::HexData || behind == TokenKind::HexEnd)
            continue;
        size_t first = gap;
        while (IsTokenSpace(line_[first - lineStart_]))
            ++first;
        // A comment means more at the start of a line than within it.
        if (line_[first - lineStart_] != '%')
            return gap;
    }
    return 0;
}

// Fetches the operands on lines before those that were looked at.
void StructureScan::LookBack(size_t wanted)
{
    size_t position = operandsFrom_;
    const size_t least = std::max(body_, position - std::min(position, kMaxReach));
    while (position > least && operands_.size() < wanted) {
        if (position == passedTo_) {
            position = std::max(passedFrom_, body_);
            continue;
        }
        const bool isCut = !IsLineEnd(drawing_[position - 1]);
        const size_t end = isCut ? position : position - 1;
        const size_t before = drawing_.substr(least, end - least).find_last_of("\r\n");
        size_t start = before == std::string_view::npos ? least : least + before + 1;
        // Nobody knows where a line is cut whose start is out of reach.
        if (start == least && least > body_)
            return;
        start += (end - start - (isCut ? 1 : 0)) / kLineRoom * kLineRoom;
        if (!PrependOperands(start, end))
            break;
        position = start;
    }
    areOperandsKnown_ = true;
}

// False: an operator stands in that line, or something that cannot be told without the lines before it.
bool StructureScan::PrependOperands(size_t start, size_t end)
{
    LineBytes room;
    const std::string_view line = LineOf(start, end, &room);
    std::vector<PlacedToken> before;
    bool goesOn = true;
    LineTokens tokens(line, false, sections_.ShowsHidden());
    for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
        if (token.kind == TokenKind::Operator || token.kind == TokenKind::Malformed) {
            before.clear();
            goesOn = false;
        } else if (IsOperand(token.kind)) {
            before.push_back({token.kind, start + token.begin, start + token.end});
        }
    }
    operands_.insert(operands_.begin(), before.begin(), before.end());
    return goesOn;
}

} // namespace vxhost
