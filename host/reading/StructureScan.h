// Finds the operators that say what the procedure table cannot: layers, groups, spot inks, texts. They stand far apart, so
// the bytes between them are searched many at a time, and only lines that may have one are cut into tokens.
#pragma once

#include "host/reading/Blanks.h"
#include "host/reading/BodySections.h"
#include "host/reading/LineTokens.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace vxhost
{

enum class StructureOperator : uint8_t {
    BeginLayer,    // Lb
    NameLayer,     // Ln
    EndLayer,      // LB
    BeginGroup,    // u
    EndGroup,      // U
    FillInk,       // x
    StrokeInk,     // X
    FillProcess,   // g k p, which put out the ink
    StrokeProcess, // G K P
    DefineBlend,   // Bd, of the setup section
    AddStop,       // Bs, likewise
    BindBlend,     // Bg, once a stop is a spot ink
    EndBlend,      // BB, likewise
    BeginText,     // To; e a o r in the oldest documents
    BeginTextPath, // Tp
    EndText,       // TO; T
};

// A token at a place of the drawing.
struct PlacedToken {
    TokenKind kind = TokenKind::End;
    size_t begin = 0, end = 0;
};

struct FoundOperator {
    StructureOperator what = StructureOperator::BeginLayer;
    size_t begin = 0, end = 0; // of its name
    // A blank that may become a line end, so that the interpreter stands between this operator and the next; 0: none is
    // needed, or there is none.
    size_t split = 0;
    static constexpr size_t kMostOperands = 12;
    std::array<PlacedToken, kMostOperands> room;
    size_t count = 0;

    // The last ones before it, the topmost last.
    std::span<const PlacedToken> Operands() const { return {room.data(), count}; }
};

// The third operand of a stop from the top says which kind of colour it has.
inline constexpr int32_t kStopOfGray = 0, kStopOfProcess = 1, kStopOfSpot = 3, kStopOfNothing = 4;
inline constexpr size_t kStopOperandsBehindKind = 2;

class StructureScan
{
  public:
    static constexpr size_t kMaxReach = 16384; // bytes from an operator back to its operands

    // The drawing is the text without what is around it, and must outlive the scan.
    StructureScan(std::string_view drawing, int version);

    // From now on only layers are found.
    void FindLayersAlone() { findsLayersAlone_ = true; }

    // A search finds all operators that matter while no spot ink is painted with; those that put an ink out, too; those of layers
    // alone; or the words of the first and of the third, without regard to sections and strings.
    enum class Search : uint8_t { Operators, Colours, Layers, Words, LayerWords };

    struct Place {
        size_t next; // what is to be looked at
        size_t line; // the start of the line that it is in
    };
    Place Here() const { return {next_, nextLine_}; } // everything before it has been looked at

    // Returns whether there may be such an operator between the place and the limit, to which it goes; false: there is certainly none.
    bool MayFind(Search search, Place *from, size_t limit) const;

    // From now on texts are found too: each line is read, since any letter may begin one.
    void FindTexts() { findsTexts_ = true; }

    // Reads blanks where these say so, which must outlive the scan. The drawing starts there in the document. Call it first.
    void LeaveOut(const Blanks &blanks, size_t start)
    {
        blanks_ = &blanks;
        start_ = start;
    }

    // Goes to the next line that begins before limit and has such operators; false when there is none. A later call with a
    // larger limit goes on.
    bool NextLine(size_t limit);

    std::span<const FoundOperator> Operators() const { return {found_.data(), foundCount_}; }
    size_t LineEnd() const { return lineEnd_; } // of the line: where its line end stands, or where it is cut

    std::string_view Text(const PlacedToken &token) const
    {
        return drawing_.substr(token.begin, token.end - token.begin);
    }
    bool HasSpotStop() const { return hasSpotStop_; } // among the stops of blends so far

  private:
    // Hex strings go over lines, and words go over cuts; a text may begin on any line.
    bool ReadsEachLine() const { return findsTexts_ || isInHex_ || isInCutLine_; }
    bool IsCandidate(size_t at) const;
    bool IsHeardAlone(char name) const;
    template <Search kSearch>
    size_t FindCandidate(size_t from, size_t limit) const;
    bool FindCutLine(size_t *start, size_t before) const;
    void GoTo(size_t position);
    void ReadLine();
    void TakeTokens(std::string_view line);
    void TakeOperator(std::string_view name, const PlacedToken &token);
    bool IsHeard(StructureOperator what);
    void AddOperator(StructureOperator what, const PlacedToken &token, size_t wanted);
    using LineBytes = std::array<char, kLineRoom>;
    std::string_view LineOf(size_t begin, size_t end, LineBytes *room) const;
    void FindSplits();
    size_t FindSplit(size_t from, size_t to) const;
    void LookBack(size_t wanted);
    bool PrependOperands(size_t start, size_t end);

    std::string_view drawing_;
    const Blanks *blanks_ = nullptr; // null: none
    size_t start_ = 0;               // of the drawing in the document, where there are blanks
    BodySections sections_;
    size_t body_;      // where the interpreter begins
    size_t next_;      // everything before it has been looked at
    size_t nextLine_;  // the start of the line that next_ is in, whatever its length is
    size_t lineStart_; // of the line at hand, as the interpreter takes it
    size_t lineEnd_ = 0;
    LineBytes lineBytes_;                  // that of the line at hand, where it has blanks
    std::string_view line_;                // as it is read
    size_t passedFrom_ = 0, passedTo_ = 0; // the section that was passed over last
    bool findsLayersAlone_ = false;
    bool findsTexts_ = false;
    bool isInHex_ = false;
    bool isInCutLine_ = false;
    bool isOver_ = false;
    bool hasFillInk_ = false, hasStrokeInk_ = false, hasSpotStop_ = false;

    std::vector<PlacedToken> tokens_;   // of the line at hand
    std::vector<PlacedToken> operands_; // since the last operator
    size_t operandsFrom_;               // the start of the first line that they are on, as far as is known
    size_t takenTo_;                    // the end of the last one
    bool areOperandsKnown_ = true;      // there are none before
    std::vector<FoundOperator> found_;  // keeps its storage
    size_t foundCount_ = 0;
};

} // namespace vxhost
