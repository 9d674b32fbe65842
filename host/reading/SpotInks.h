// The spot inks of a drawing, by what is written where one is chosen.
#pragma once

#include "host/drawing/Paint.h"
#include "host/reading/StructureScan.h"

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vxhost
{

inline constexpr size_t kSpotOperands = 6; // four inks, a name, a tint

// Returns the number as colours take it, from 0 to 1.
double InkAmount(Fixed value);

class SpotInks
{
  public:
    static constexpr size_t kMostInks = 1000; // further ones are process colours

    using DecodeName = std::function<std::string(std::string_view)>;

    // The drawing must outlive this object.
    SpotInks(std::string_view drawing, DecodeName decodeName)
        : drawing_(drawing), decodeName_(std::move(decodeName))
    {
    }

    // The operands are those of the operators that choose an ink. Operands that are none give no ink. What is returned points
    // into this object.
    SpotColour Find(std::span<const PlacedToken> operands);

  private:
    // Four numbers and a name, as they are written somewhere in the drawing.
    struct WrittenInk {
        const SpotInk *ink = nullptr;
        Fixed parts[4] = {0, 0, 0, 0};
    };

    std::string_view Text(const PlacedToken &token) const
    {
        return drawing_.substr(token.begin, token.end - token.begin);
    }
    const WrittenInk *FindWritten(std::span<const PlacedToken> operands);

    std::string_view drawing_;
    DecodeName decodeName_;
    std::map<std::string, SpotInk> inks_; // by what tells them apart: name and inks
    std::unordered_map<std::string_view, WrittenInk> written_;
};

} // namespace vxhost
