#include "plugin/gradients/Fills.h"

#include "plugin/body/HostTable.h"

namespace vx
{

namespace
{

// How far the control points of a quarter circle of radius 1 lie from its ends: 4/3 (a Fixed) times the square root
// of 2 less 1 (a Fract), rounded once here and once more when it is multiplied by the radius.
constexpr Fixed kFourThirds = 87381;
constexpr Fract kRootOfTwoLessOne = 444758426;
constexpr Fixed kCircleControl = 36194;
static_assert(kCircleControl == (int64_t{kFourThirds} * kRootOfTwoLessOne + (1 << 29)) >> 30);

void RectFill(const ParseContext *context, Fixed x0, Fixed y0, Fixed x1, Fixed y1)
{
    const FixedPoint corners[] = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
    CallNewPath(context);
    CallMoveTo(context, &corners[0]);
    CallLineTo(context, &corners[1]);
    CallLineTo(context, &corners[2]);
    CallLineTo(context, &corners[3]);
    CallClosePath(context);
    CallFill(context);
}

} // namespace

void StripFill(const ParseContext *context, Fixed x0, Fixed x1)
{
    RectFill(context, x0, 0, x1, kFixedOne);
}

void RadialFill(const ParseContext *context, Fixed radius)
{
    const Fixed r = radius;
    const Fixed k = FixedMul(kCircleControl, r);
    const Fixed minusR = NegateFixed(r);
    const Fixed minusK = NegateFixed(k);
    const FixedPoint start = {r, 0};
    // Counter-clockwise from the right; nothing closes the path.
    const FixedPoint quarters[][3] = {
        {{r, k}, {k, r}, {0, r}},
        {{minusK, r}, {minusR, k}, {minusR, 0}},
        {{minusR, minusK}, {minusK, minusR}, {0, minusR}},
        {{k, minusR}, {r, minusK}, {r, 0}},
    };
    CallNewPath(context);
    CallMoveTo(context, &start);
    for (const auto &quarter : quarters)
        CallCurveTo(context, &quarter[0], &quarter[1], &quarter[2]);
    CallFill(context);
}

} // namespace vx
