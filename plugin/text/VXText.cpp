#include "plugin/text/VXText.h"

#include "plugin/body/ParseContext.h"
#include "plugin/text/FontEncoding.h"
#include "plugin/text/TextObjectOperators.h"
#include "plugin/text/TextOperators.h"

#include <array>
#include <iterator>

namespace vx
{

namespace
{

using TextOperatorProc = Result (*)(ParseContext *context, TextObject *text);

constexpr int8_t kAnyCount = -1;

struct TextOperatorRow {
    char character;  // after the "T"
    int8_t operands; // exact count, or kAnyCount
    TextOperatorProc run;
};

// In the order of kTextOperatorNames.
// clang-format off
constexpr TextOperatorRow kTextOperators[] = {
    {'*', kAnyCount, Operator_Tasteric},
    {'-', kAnyCount, Operator_T_hyphen},
    {'A', 1, Operator_TA},
    {'M', kAnyCount, Operator_TM},
    {'O', kAnyCount, Operator_TO_End},
    {'P', kAnyCount, Operator_TP_End},
    {'R', 6, Operator_TR_define},
    {'S', kAnyCount, Operator_Tx},
    {'V', 1, Operator_TV},
    {'Z', kAnyCount, Operator_TZ},      // pops what it needs
    {'a', 1, Operator_Ta_define},
    {'c', 1, Operator_Tc},
    {'d', 2, Operator_Td},
    {'e', kAnyCount, Operator_Te},
    {'f', kAnyCount, Operator_Tf},      // 2 or 4, checked there
    {'j', kAnyCount, Operator_Tx},
    {'k', 2, Operator_Tk},
    {'l', 2, Operator_Tl},
    {'m', 6, Operator_Tm},
    {'o', kAnyCount, Operator_To_Begin}, // 1, checked after the reset
    {'p', 7, Operator_Tp_Begin},
    {'r', 1, Operator_Tr},
    {'s', 1, Operator_Ts},
    {'t', kAnyCount, Operator_Tt},      // pops one, whatever lies below it
    {'v', 1, Operator_Tv},
    {'w', 1, Operator_Tw},
    {'x', kAnyCount, Operator_Tx},      // 1 or 2, checked there
    {'y', 1, Operator_Ty},
    {'z', kAnyCount, Operator_Tz},      // 1 or 2, checked there
    {'~', kAnyCount, Operator_Tx},
};
// clang-format on

constexpr bool HasEachTextOperator()
{
    for (size_t i = 0; i < std::size(kTextOperators); ++i)
        if (i == kTextOperatorNames.size() || kTextOperators[i].character != kTextOperatorNames[i])
            return false;
    return std::size(kTextOperators) == kTextOperatorNames.size();
}
static_assert(HasEachTextOperator());

// By character: 1 + the row's index, or 0.
constexpr auto kRowOfCharacter = [] {
    std::array<uint8_t, 256> rows = {};
    for (size_t i = 0; i < std::size(kTextOperators); ++i)
        rows[static_cast<uint8_t>(kTextOperators[i].character)] = static_cast<uint8_t>(i + 1);
    return rows;
}();

} // namespace

Result ParseText(const char *operatorText, ParseContext *context, TextObject *text)
{
    const uint8_t number = kRowOfCharacter[static_cast<uint8_t>(*operatorText)];
    if (number == 0)
        return kOk;
    const TextOperatorRow &row = kTextOperators[number - 1];
    if (row.operands != kAnyCount && GetPostScriptObjectListLength(context->operandStack) != row.operands)
        return kParserBadFormat;
    return row.run(context, text);
}

} // namespace vx
