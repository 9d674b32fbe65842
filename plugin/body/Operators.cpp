#include "plugin/body/Operators.h"

#include "plugin/body/PathOperators.h"
#include "plugin/body/Problems.h"
#include "plugin/body/StateOperators.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace vx
{

namespace
{

using OperatorProc = Result (*)(ParseContext *context);

constexpr int8_t kAnyCount = -1;

struct OperatorRow {
    char text[3];    // as documents write it
    int8_t operands; // exact count, or kAnyCount
    OperatorProc run;
};

// Operators that are known and do nothing here.
Result Ignore(ParseContext * /*context*/)
{
    return kOk;
}

template <char Letter>
constexpr char kLetterText[] = {Letter, 0};

template <char Letter>
Result HandToText(ParseContext *context)
{
    return ParseText(kLetterText<Letter>, context, &context->text.object);
}

template <char Letter>
Result HandToLegacyText(ParseContext *context)
{
    return Parse_88_and_1_1_Text(kLetterText<Letter>, context, &context->text.object);
}

template <char Letter>
Result HandToGradients(ParseContext *context)
{
    return context->gradientSetup != nullptr ? ParseGradientData(kLetterText<Letter>, context)
                                             : kParserBadFormat;
}

// In character order. The text and gradient operators are handed on; their own tables check their operands.
// clang-format off
constexpr OperatorRow kOperators[] = {
    {"*", kAnyCount, Operator_asterisk},
    {"*U", 0, Operator_asterisk_U},
    {"*W", 0, Ignore},
    {"*u", 0, Operator_asterisk_u},
    {"*w", 0, Ignore},
    {"A", 1, Ignore},
    {"Ap", kAnyCount, Ignore},
    {"Ar", kAnyCount, Ignore},
    {"B", 0, Operator_B},
    {"BB", kAnyCount, HandToGradients<'B'>},
    {"BD", kAnyCount, HandToGradients<'D'>},
    {"Bb", kAnyCount, HandToGradients<'b'>},
    {"Bc", kAnyCount, HandToGradients<'c'>},
    {"Bd", kAnyCount, HandToGradients<'d'>},
    {"Bg", kAnyCount, HandToGradients<'g'>},
    {"Bh", kAnyCount, HandToGradients<'h'>},
    {"Bm", kAnyCount, HandToGradients<'m'>},
    {"Bn", kAnyCount, Ignore},
    {"Br", kAnyCount, Ignore},
    {"Bs", kAnyCount, HandToGradients<'s'>},
    {"C", 6, Operator_c},
    {"D", 1, Ignore},
    {"E", kAnyCount, Ignore},
    {"F", 0, Operator_F},
    {"G", 1, Operator_G},
    {"H", 0, Ignore},
    {"J", 1, Operator_J},
    {"K", 4, Operator_K},
    {"L", 2, Operator_l},
    {"LB", kAnyCount, Operator_LB},
    {"Lb", kAnyCount, Operator_Lb},  // at least 7, checked there
    {"Ln", kAnyCount, Ignore},
    {"M", 1, Operator_M},
    {"MB", kAnyCount, Operator_MB},
    {"Mb", kAnyCount, Operator_Mb},
    {"Md", kAnyCount, Ignore},
    {"N", 0, Operator_n},
    {"Np", kAnyCount, Ignore},
    {"O", 1, Operator_O},
    {"P", kAnyCount, Operator_P},
    {"PB", kAnyCount, Ignore},
    {"Pb", kAnyCount, Ignore},
    {"Pc", kAnyCount, Ignore},
    {"Pn", kAnyCount, Ignore},
    {"Q", 0, Operator_Q},
    {"R", 1, Operator_R},
    {"S", 0, Operator_S},
    {"T", kAnyCount, HandToLegacyText<'T'>},
    {"T*", kAnyCount, HandToText<'*'>},
    {"T+", kAnyCount, Ignore},
    {"T-", kAnyCount, HandToText<'-'>},
    {"TA", kAnyCount, HandToText<'A'>},
    {"TC", kAnyCount, Ignore},
    {"TE", kAnyCount, Ignore},
    {"TG", kAnyCount, Ignore},
    {"TK", kAnyCount, Ignore},
    {"TM", kAnyCount, HandToText<'M'>},
    {"TO", kAnyCount, HandToText<'O'>},
    {"TP", kAnyCount, HandToText<'P'>},
    {"TR", kAnyCount, HandToText<'R'>},
    {"TS", kAnyCount, HandToText<'S'>},
    {"TV", kAnyCount, HandToText<'V'>},
    {"TW", kAnyCount, Ignore},
    {"TX", kAnyCount, Ignore},
    {"TY", kAnyCount, Ignore},
    {"TZ", kAnyCount, HandToText<'Z'>},
    {"Ta", kAnyCount, HandToText<'a'>},
    {"Tc", kAnyCount, HandToText<'c'>},
    {"Td", kAnyCount, HandToText<'d'>},
    {"Te", kAnyCount, HandToText<'e'>},
    {"Tf", kAnyCount, HandToText<'f'>},
    {"Tg", kAnyCount, Ignore},
    {"Th", kAnyCount, Ignore},
    {"Ti", kAnyCount, Ignore},
    {"Tj", kAnyCount, HandToText<'j'>},
    {"Tk", kAnyCount, HandToText<'k'>},
    {"Tl", kAnyCount, HandToText<'l'>},
    {"Tm", kAnyCount, HandToText<'m'>},
    {"To", kAnyCount, HandToText<'o'>},
    {"Tp", kAnyCount, HandToText<'p'>},
    {"Tq", kAnyCount, Ignore},
    {"Tr", kAnyCount, HandToText<'r'>},
    {"Ts", kAnyCount, HandToText<'s'>},
    {"Tt", kAnyCount, HandToText<'t'>},
    {"Tv", kAnyCount, HandToText<'v'>},
    {"Tw", kAnyCount, HandToText<'w'>},
    {"Tx", kAnyCount, HandToText<'x'>},
    {"Ty", kAnyCount, HandToText<'y'>},
    {"Tz", kAnyCount, HandToText<'z'>},
    {"T~", kAnyCount, HandToText<'~'>},
    {"U", 0, Ignore},
    {"V", 4, Operator_v},
    {"W", 0, Operator_W},
    {"X", 6, Operator_X},
    {"XB", kAnyCount, Ignore},
    {"Xb", kAnyCount, Ignore},
    {"Xe", kAnyCount, Ignore},
    {"Y", 4, Operator_y},
    {"Z", kAnyCount, HandToLegacyText<'Z'>},
    {"_E", kAnyCount, Ignore},
    {"`", kAnyCount, Operator_grave},
    {"a", kAnyCount, HandToLegacyText<'a'>},
    {"b", 0, Operator_b},
    {"c", 6, Operator_c},
    {"d", kAnyCount, Operator_d},  // checked with its array
    {"e", kAnyCount, HandToLegacyText<'e'>},
    {"f", kAnyCount, Operator_f},  // checked outside gradient instances only
    {"g", 1, Operator_g},
    {"h", 0, Operator_h},
    {"i", 1, Ignore},
    {"j", 1, Operator_j},
    {"k", 4, Operator_k},
    {"l", 2, Operator_l},
    {"m", 2, Operator_m},
    {"n", 0, Operator_n},
    {"o", kAnyCount, HandToLegacyText<'o'>},
    {"p", kAnyCount, Operator_p},
    {"q", 0, Operator_q},
    {"r", kAnyCount, HandToLegacyText<'r'>},
    {"s", 0, Operator_s},
    {"t", kAnyCount, HandToLegacyText<'t'>},
    {"u", 0, Ignore},
    {"v", 4, Operator_v},
    {"w", kAnyCount, Operator_w},  // a wrong count is ignored, not refused
    {"x", 6, Operator_x},
    {"y", 4, Operator_y},
    {"z", kAnyCount, HandToLegacyText<'z'>},
    {"~", kAnyCount, Operator_tilde},
};
// clang-format on

constexpr uint16_t OperatorKey(uint8_t first, uint8_t second)
{
    return static_cast<uint16_t>(first << 8 | second);
}

constexpr uint16_t RowKey(const OperatorRow &row)
{
    return OperatorKey(static_cast<uint8_t>(row.text[0]), static_cast<uint8_t>(row.text[1]));
}

constexpr bool IsInOrder()
{
    for (size_t i = 1; i < std::size(kOperators); ++i)
        if (RowKey(kOperators[i - 1]) >= RowKey(kOperators[i]))
            return false;
    return true;
}
static_assert(IsInOrder());

constexpr bool HasEachTextOperator()
{
    size_t count = 0;
    for (const OperatorRow &row : kOperators) {
        if (row.text[0] != 'T' || row.text[1] == 0 || row.run == Ignore)
            continue;
        if (count == kTextOperatorNames.size() || row.text[1] != kTextOperatorNames[count])
            return false;
        ++count;
    }
    return count == kTextOperatorNames.size();
}
static_assert(HasEachTextOperator());

// One-character operators by their character: 1 + the row's index, or 0.
constexpr auto kRowOfCharacter = [] {
    static_assert(std::size(kOperators) < UINT8_MAX);
    std::array<uint8_t, 256> rows = {};
    for (size_t i = 0; i < std::size(kOperators); ++i)
        if (kOperators[i].text[1] == 0)
            rows[static_cast<uint8_t>(kOperators[i].text[0])] = static_cast<uint8_t>(i + 1);
    return rows;
}();

const OperatorRow *FindOperator(const uint8_t *text, int32_t length)
{
    if (length == 1) {
        const uint8_t row = kRowOfCharacter[text[0]];
        return row != 0 ? &kOperators[row - 1] : nullptr;
    }
    // A second character of 0 would be taken for the end of a one-character operator.
    if (text[1] == 0)
        return nullptr;
    const uint16_t key = OperatorKey(text[0], text[1]);
    const OperatorRow *row = std::lower_bound(
        std::begin(kOperators), std::end(kOperators), key,
        [](const OperatorRow &candidate, uint16_t wanted) { return RowKey(candidate) < wanted; });
    return row != std::end(kOperators) && RowKey(*row) == key ? row : nullptr;
}

} // namespace

Result RunOperator(const uint8_t *text, int32_t length, ParseContext *context)
{
    // Longer words are passed over in silence, even where two characters of them would be an operator.
    if (length != 1 && length != 2)
        return kOk;
    const OperatorRow *row = FindOperator(text, length);
    if (row == nullptr) {
        ReportProblemOnce(context, kProblemOperator, &context->warnedOperator);
        return kOk;
    }
    if (row->operands != kAnyCount && GetPostScriptObjectListLength(context->operandStack) != row->operands)
        return kParserBadFormat;
    return row->run(context);
}

} // namespace vx
