#include "host/reading/SpotInks.h"

#include "host/drawing/FromFixed.h"
#include "host/reading/LineTokens.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace vxhost
{

namespace
{

constexpr Fixed kFixedOne = 0x10000;
constexpr size_t kMostNameBytes = 255;

} // namespace

double InkAmount(Fixed value)
{
    return std::clamp(FromFixed(value), 0.0, 1.0);
}

// Returns null for operands that are none.
const SpotInks::WrittenInk *SpotInks::FindWritten(std::span<const PlacedToken> operands)
{
    const std::string_view text =
        drawing_.substr(operands.front().begin, operands.back().end - operands.front().begin);
    if (const auto known = written_.find(text); known != written_.end())
        return &known->second;
    SpotInk ink;
    WrittenInk written;
    std::string key;
    for (size_t i = 0; i < std::size(ink.alternate); ++i) {
        const std::optional<Fixed> part = FixedOfToken(Text(operands[i]));
        if (!part)
            return nullptr;
        written.parts[i] = *part;
        ink.alternate[i] = InkAmount(*part);
        key.append(reinterpret_cast<const char *>(&*part), sizeof *part);
    }
    const PlacedToken &name = operands.back();
    if (name.kind != TokenKind::String && name.kind != TokenKind::HexData)
        return nullptr;
    std::string bytes = name.kind == TokenKind::String ? StringBytes(Text(name)) : HexBytes(Text(name));
    bytes.resize(std::min(bytes.size(), kMostNameBytes));
    key += bytes;
    auto known = inks_.find(key);
    if (known == inks_.end()) {
        if (inks_.size() == kMostInks)
            return nullptr;
        ink.name = decodeName_(bytes);
        known = inks_.emplace(std::move(key), std::move(ink)).first;
    }
    written.ink = &known->second;
    if (written_.size() == kMostInks)
        written_.clear();
    return &written_.emplace(text, written).first->second;
}

SpotColour SpotInks::Find(std::span<const PlacedToken> operands)
{
    if (operands.size() != kSpotOperands)
        return {};
    const WrittenInk *written = FindWritten(operands.first(kSpotOperands - 1));
    const std::optional<Fixed> tint = FixedOfToken(Text(operands.back()));
    if (written == nullptr || !tint)
        return {};
    // The plug-in's own product, so that its colour can be told from one that is nearly the same.
    const auto strength = static_cast<Fixed>(uint32_t{kFixedOne} - static_cast<uint32_t>(*tint));
    SpotColour spot;
    spot.share = {written->ink, InkAmount(strength)};
    for (size_t i = 0; i < std::size(spot.process); ++i)
        spot.process[i] = InkAmount(FixMul(strength, written->parts[i]));
    return spot;
}

} // namespace vxhost
