#include "plugin/gradients/gradient.h"

#include "plugin/body/ParseContext.h"
#include "plugin/gradients/Definitions.h"
#include "plugin/gradients/Instances.h"

#include <span>

namespace vx
{

namespace
{

struct GradientOperatorRow {
    char letter; // the one after the "B"; whatever follows it is not looked at
    Result (*run)(ParseContext *context);
};

constexpr GradientOperatorRow kDefinitionOperators[] = {
    {'D', Operator_BD_Define_End},
    {'d', Operator_Bd_Define_Begin},
    {'s', Operator_Bs_Define_Stop},
};

constexpr GradientOperatorRow kInstanceOperators[] = {
    {'B', Operator_BB_Instance_End},  {'b', Operator_Bb_Instance_Begin}, {'c', Operator_Bc_Clip_Matrix},
    {'g', Operator_Bg_Instance_Bind}, {'h', Operator_Bh_Highlight},      {'m', Operator_Bm_Segment_Matrix},
};

} // namespace

Result ParseGradientData(const char *operatorText, ParseContext *context)
{
    std::span<const GradientOperatorRow> rows = kDefinitionOperators;
    if (context->setupEnded != 0)
        rows = kInstanceOperators;
    for (const GradientOperatorRow &row : rows)
        if (row.letter == *operatorText)
            return row.run(context);
    return kOk;
}

} // namespace vx
