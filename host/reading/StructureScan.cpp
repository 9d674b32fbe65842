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

constexpr OperatorRow kOperators[] = {
    {"Lb", StructureOperator::BeginLayer, 10},   {"Ln", StructureOperator::NameLayer, 1},
    {"LB", StructureOperator::EndLayer, 0},      {"u", StructureOperator::BeginGroup, 0},
    {"U", StructureOperator::EndGroup, 0},       {"x", StructureOperator::FillInk, 6},
    {"X", StructureOperator::StrokeInk, 6},      {"g", StructureOperator::FillProcess, 0},
    {"k", StructureOperator::FillProcess, 0},    {"p", StructureOperator::FillProcess, 0},
    {"G", StructureOperator::StrokeProcess, 0},  {"K", StructureOperator::StrokeProcess, 0},
    {"P", StructureOperator::StrokeProcess, 0},  {"To", StructureOperator::BeginText, 1},
    {"Tp", StructureOperator::BeginTextPath, 0}, {"TO", StructureOperator::EndText, 0},
    {"e", StructureOperator::BeginText, 0},      {"a", StructureOperator::BeginText, 0},
    {"o", StructureOperator::BeginText, 0},      {"r", StructureOperator::BeginText, 0},
    {"T", StructureOperator::EndText, 0},        {"Bd", StructureOperator::DefineBlend, 3},
    {"Bs", StructureOperator::AddStop, 9},       {"Bg", StructureOperator::BindBlend, 12},
    {"BB", StructureOperator::EndBlend, 0},
};

template <char... kLetters>
ByteBlock IsLetter(ByteBlock bytes) // in either case
{
    const ByteBlock lower = bytes | kCaseBit;
    return (Is(lower, kLetters) | ...);
}

ByteBlock IsNoLetter(ByteBlock bytes)
{
    const ByteBlock fromA = (bytes | kCaseBit) - static_cast<uint8_t>('a');
    return reinterpret_cast<ByteBlock>(fromA > static_cast<uint8_t>('z' - 'a'));
}

// Marks the first letter of longer words: operators of layers and of blends.
ByteBlock BeginsLongWord(ByteBlock bytes, ByteBlock after)
{
    constexpr uint8_t kLetterBit = 0x40;
    return (Is(bytes, 'L') | Is(bytes, 'B')) & reinterpret_cast<ByteBlock>((after & kLetterBit) != 0);
}

// Asks cheaply whether a block may hold a candidate: the answer is yes far more often than need be.
template <bool kLayersAlone, bool kColours>
bool MayHold(const uint8_t *block)
{
    ByteBlock any = {};
    for (size_t i = 0; i < kBlock; i += sizeof any) {
        const ByteBlock bytes = LoadBlock(block + i), after = LoadBlock(block + i + 1);
        any |= Is(bytes, '%') | Is(bytes, '<') | BeginsLongWord(bytes, after);
        if constexpr (!kLayersAlone)
            any |= IsLetter<'u', 'x'>(bytes);
        if constexpr (kColours)
            any |= IsLetter<'g', 'k', 'p'>(bytes);
    }
    return IsAny(any);
}

// Returns a bit for each byte of the block where something that matters may begin.
uint64_t CandidatesIn(const uint8_t *block)
{
    uint64_t bits = 0;
    for (size_t i = 0; i < kBlock; i += sizeof(ByteBlock)) {
        const ByteBlock bytes = LoadBlock(block + i), before = LoadBlock(block + i - 1),
                        after = LoadBlock(block + i + 1);
        // A word of one letter has no letter beside it.
        const ByteBlock isWord =
            IsLetter<'u', 'x', 'g', 'k', 'p'>(bytes) & IsNoLetter(before) & IsNoLetter(after);
        bits |= BitsOf(isWord | Is(bytes, '%') | Is(bytes, '<') | BeginsLongWord(bytes, after)) << i;
    }
    return bits;
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

bool StructureScan::MayHoldCandidate(const uint8_t *block) const
{
    if (findsLayersAlone_)
        return MayHold<true, false>(block);
    return hasFillInk_ || hasStrokeInk_ ? MayHold<false, true>(block) : MayHold<false, false>(block);
}

// Returns whether the operator that may begin there matters, as things stand.
bool StructureScan::IsWanted(char first) const
{
    switch (first) {
    case 'L':
    case '%':
    case '<':
        return true;
    case 'g':
    case 'k':
    case 'p':
        return hasFillInk_ && !findsLayersAlone_;
    case 'G':
    case 'K':
    case 'P':
        return hasStrokeInk_ && !findsLayersAlone_;
    case 'B':
        return (hasSpotStop_ || sections_.IsInSetup()) && !findsLayersAlone_;
    default:
        return !findsLayersAlone_;
    }
}

// Returns limit where there is none before it.
size_t StructureScan::FindCandidate(size_t from, size_t limit)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(drawing_.data());
    while (from < limit) {
        if (from < block_ || from >= block_ + kBlock) {
            block_ = from;
            // The first byte and the last ones have no neighbours: a copy has blanks there.
            std::array<uint8_t, kBlock + 2> copy;
            const uint8_t *block = bytes + from;
            if (from == 0 || from + kBlock >= drawing_.size()) {
                copy.fill(' ');
                if (from > 0)
                    copy[0] = bytes[from - 1];
                std::copy_n(block, std::min(kBlock + 1, drawing_.size() - from), copy.begin() + 1);
                block = copy.data() + 1;
            }
            // An ink may begin within the block, and its end may be in it too, so all candidates are found at once.
            candidates_ = MayHoldCandidate(block) ? CandidatesIn(block) : 0;
        }
        uint64_t left = candidates_ >> (from - block_);
        while (left != 0) {
            from += static_cast<size_t>(std::countr_zero(left));
            if (from >= limit)
                return limit;
            if (IsWanted(drawing_[from]))
                return from;
            ++from;
            left = candidates_ >> 1 >> (from - 1 - block_);
        }
        from = block_ + kBlock;
    }
    return limit;
}

// Everything before that place has been looked at.
void StructureScan::GoTo(size_t position)
{
    size_t end = position;
    while (end > next_ && !IsLineEnd(drawing_[end - 1]))
        --end;
    if (end > next_)
        nextLine_ = end;
    next_ = position;
}

// A cut may fall within a word and make an operator of its rest, so a line that is cut is read in all of its pieces. Returns the
// start of the first such line before that place, or the place.
size_t StructureScan::FindCutLine(size_t before) const
{
    size_t start = nextLine_;
    while (start + kLineRoom <= before) {
        // Lines are short, so the last line end within reach is soon found.
        size_t end = kLineRoom;
        while (end > sizeof(ByteBlock)) {
            const ByteBlock bytes =
                LoadBlock(reinterpret_cast<const uint8_t *>(drawing_.data()) + start + end - sizeof bytes);
            if (IsAny(Is(bytes, '\r') | Is(bytes, '\n')))
                break;
            end -= sizeof bytes;
        }
        while (end > 0 && !IsLineEnd(drawing_[start + end - 1]))
            --end;
        if (end == 0)
            return start;
        start += end;
    }
    return before;
}

bool StructureScan::NextLine(size_t limit)
{
    limit = std::min(limit, drawing_.size());
    foundCount_ = 0;
    while (!isOver_ && foundCount_ == 0 && next_ < limit) {
        if (!ReadsEachLine()) {
            const size_t candidate = FindCandidate(next_, limit);
            const size_t cutLine = FindCutLine(candidate);
            if (cutLine < candidate) {
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
    if (name.size() <= 2) {
        for (const OperatorRow &row : kOperators) {
            if (row.name[0] == name[0] && row.name == name)
                AddOperator(row.what, token, row.operands);
        }
    }
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
    // A process colour matters only where it puts an ink out.
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
