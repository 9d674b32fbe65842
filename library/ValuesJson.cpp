#include "library/ValuesJson.h"

#include <cmath>
#include <numbers>

namespace vxhost
{

double Rounded(double value)
{
    constexpr double kSteps = 1000;
    return std::round(value * kSteps) / kSteps + 0.0; // never -0
}

nlohmann::ordered_json PointJson(Point point)
{
    return {Rounded(point.x), Rounded(point.y)};
}

nlohmann::ordered_json BoxJson(const Box &box)
{
    return {Rounded(box.left), Rounded(box.bottom), Rounded(box.right), Rounded(box.top)};
}

double AngleOf(Point along)
{
    constexpr double kHalfTurn = 180;
    const double angle = Rounded(std::atan2(along.y, along.x) * kHalfTurn / std::numbers::pi);
    return angle == -kHalfTurn ? kHalfTurn : angle;
}

nlohmann::ordered_json ColourJson(const Colour &colour)
{
    nlohmann::ordered_json json;
    if (colour.space == ColourSpace::Gray)
        json["gray"] = colour.ink[0];
    else
        json["cmyk"] = colour.ink;
    const auto &[first, second] = colour.spots;
    if (first.ink != nullptr) {
        json["spot"] = first.ink->name;
        json["amount"] = first.amount;
    }
    if (second.ink != nullptr) {
        json["spot2"] = second.ink->name;
        json["amount2"] = second.amount;
    }
    return json;
}

} // namespace vxhost
