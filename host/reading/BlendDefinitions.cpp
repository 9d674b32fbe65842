#include "host/reading/BlendDefinitions.h"

#include "host/reading/LineTokens.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

namespace
{

constexpr int32_t kLinear = 0, kRadial = 1;
constexpr size_t kDefinitionOperands = 3; // name, kind, stops
constexpr size_t kBindingOperands = 12;
constexpr Fixed kFixedOne = 0x10000, kFixedHalf = 0x8000;

// The brackets around stops leave nothing on the stack.
std::vector<PlacedToken> OperandsOf(const FoundOperator &found)
{
    std::vector<PlacedToken> operands;
    std::ranges::remove_copy_if(found.Operands(), std::back_inserter(operands), [](const PlacedToken &token) {
        return token.kind == TokenKind::ArrayBegin || token.kind == TokenKind::ArrayEnd;
    });
    return operands;
}

std::string NameOf(const StructureScan &scan, const PlacedToken &token)
{
    const std::string_view text = scan.Text(token);
    return token.kind == TokenKind::HexData  ? HexBytes(text)
           : token.kind == TokenKind::String ? StringBytes(text)
                                             : std::string();
}

} // namespace

void BlendDefinitions::Define(const StructureScan &scan, const FoundOperator &found)
{
    last_ = nullptr;
    const std::vector<PlacedToken> operands = OperandsOf(found);
    if (operands.size() != kDefinitionOperands || definitions_.size() == kMostDefinitions)
        return;
    const auto [place, isNew] = definitions_.try_emplace(NameOf(scan, operands[0]));
    if (!isNew)
        return;
    last_ = &place->second;
    last_->kind = IntegerOfToken(scan.Text(operands[1])).value_or(0);
    last_->count = IntegerOfToken(scan.Text(operands[2])).value_or(0);
}

void BlendDefinitions::AddStop(const StructureScan &scan, const FoundOperator &found, SpotInks *inks)
{
    if (last_ == nullptr || stopCount_ == kMostAllStops)
        return;
    ++stopCount_;
    last_->stops.push_back(ReadStop(scan, found, inks));
}

// Reads the colour of a stop. Operands that are missing count as 0.
BlendDefinitions::Stop BlendDefinitions::ReadStop(const StructureScan &scan, const FoundOperator &found,
                                                  SpotInks *inks)
{
    const std::vector<PlacedToken> operands = OperandsOf(found);
    Stop stop;
    if (operands.size() <= kStopOperandsBehindKind)
        return stop;
    const size_t kindAt = operands.size() - 1 - kStopOperandsBehindKind;
    const auto colour = std::span(operands).first(kindAt);
    const auto number = [&](size_t i) {
        return i < colour.size() ? FixedOfToken(scan.Text(colour[i])).value_or(0) : 0;
    };
    switch (IntegerOfToken(scan.Text(operands[kindAt])).value_or(-1)) {
    case kStopOfGray:
        stop.colour.process[3] =
            InkAmount(static_cast<Fixed>(uint32_t{kFixedOne} - static_cast<uint32_t>(number(0))));
        break;
    case kStopOfProcess:
        stop.isGray = false;
        for (size_t i = 0; i < std::size(stop.colour.process); ++i)
            stop.colour.process[i] = InkAmount(number(i));
        break;
    case kStopOfSpot:
        stop.isGray = false;
        stop.colour = inks->Find(colour);
        break;
    case kStopOfNothing:
        break;
    default:
        stop.colour.process[3] = InkAmount(kFixedHalf); // on purpose: half black stands for what nobody knows
    }
    return stop;
}

// Puts the stops in the order in which they are painted: the last that is written is painted first.
SpotBlend BlendDefinitions::MakeBlend(const Definition &definition)
{
    std::vector<Stop> stops = definition.stops;
    const auto keepMost = [&] {
        stops.resize(
            std::min({stops.size(), kMostStops, static_cast<size_t>(std::max(definition.count, 0))}));
    };
    // The interpreter takes as many as the definition says from its own list, whose order depends on the kind.
    if (definition.kind == kRadial) {
        keepMost();
        std::ranges::reverse(stops);
    } else {
        std::ranges::reverse(stops);
        keepMost();
        if (definition.kind != kLinear)
            std::ranges::reverse(stops);
    }
    SpotBlend blend;
    const auto isSpot = [](const Stop &stop) { return stop.colour.share.ink != nullptr; };
    if (std::ranges::none_of(stops, isSpot))
        return blend;
    if (stops.size() == 1)
        blend.parts.push_back({stops[0].colour, stops[0].colour});
    for (size_t i = 1; i < stops.size(); ++i) {
        if (!stops[i - 1].isGray || !stops[i].isGray)
            blend.parts.push_back({stops[i - 1].colour, stops[i].colour});
    }
    return blend;
}

const SpotBlend *BlendDefinitions::Find(const StructureScan &scan, const FoundOperator &found)
{
    if (found.count < kBindingOperands)
        return nullptr;
    const auto known = definitions_.find(NameOf(scan, found.Operands().last(kBindingOperands)[1]));
    if (known == definitions_.end())
        return nullptr;
    Definition &definition = known->second;
    if (!definition.blend)
        definition.blend = MakeBlend(definition);
    return definition.blend->parts.empty() ? nullptr : &*definition.blend;
}

} // namespace vxhost
