#include "host/reading/StructureCompanion.h"

#include "host/drawing/FromFixed.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kLayerNumbersAfterPrinting = 6;
constexpr size_t kSpotOperands = 6; // four inks, a name, a tint
constexpr Fixed kFixedOne = 0x10000;
constexpr size_t kMostNameBytes = 255;

double Amount(Fixed value)
{
    return std::clamp(FromFixed(value), 0.0, 1.0);
}

} // namespace

StructureCompanion::StructureCompanion(std::string_view drawing, size_t start, int version,
                                       const Structure &structure, DecodeName decodeName)
    : drawing_(drawing), start_(start), structure_(structure), decodeName_(std::move(decodeName)),
      scan_(drawing, version)
{
}

void StructureCompanion::Deliver(std::span<std::byte> bytes, size_t offset)
{
    line_ = nextLine_ = 0;
    if (offset < start_) // the header around the drawing
        return;
    piece_ = offset - start_;
    while (scan_.NextLine(piece_ + bytes.size())) {
        for (const FoundOperator &found : scan_.Operators())
            Take(found);
    }
    if (!edits_.empty())
        ChangeBytes(bytes);
    if (!events_.empty())
        CountLines(bytes);
}

void StructureCompanion::Take(const FoundOperator &found)
{
    Event event;
    event.what = found.what;
    event.at = found.split > 0 ? found.split : scan_.LineEnd();
    // A line that is cut, or that the data end in, has no line end: it is carried out when its last byte is there.
    if (event.at == drawing_.size() || (found.split == 0 && !IsLineEnd(drawing_[event.at])))
        --event.at;
    if (!events_.empty())
        event.at = std::max(event.at, events_.back().at);
    if (found.split > 0)
        edits_.push_back({found.split, "\r"});
    switch (found.what) {
    case StructureOperator::BeginLayer:
        event.layer = std::min(layersBegun_++, Structure::kMostLayers - 1);
        if (event.layer >= structure_.layers.size())
            return;
        PaintLayer(found, structure_.layers[event.layer]);
        break;
    case StructureOperator::FillInk:
    case StructureOperator::StrokeInk:
        event.spot = FindSpot(found);
        break;
    default:
        break;
    }
    events_.push_back(std::move(event));
}

// Changes the flag that says whether the layer is painted, digit by digit.
void StructureCompanion::PaintLayer(const FoundOperator &found, const Layer &layer)
{
    if (layer.isPainted == layer.isPrinting || found.operands.size() <= kLayerNumbersAfterPrinting)
        return;
    const PlacedToken &flag = found.operands[found.operands.size() - 1 - kLayerNumbersAfterPrinting];
    std::string digits(flag.end - flag.begin, '0');
    digits.back() = layer.isPainted ? '1' : '0';
    edits_.push_back({flag.begin, std::move(digits)});
}

SpotColour StructureCompanion::FindSpot(const FoundOperator &found)
{
    if (found.operands.size() < kSpotOperands)
        return {};
    const PlacedToken *operands = &found.operands[found.operands.size() - kSpotOperands];
    const std::optional<Fixed> tint = FixedOfToken(scan_.Text(operands[5]));
    if (!tint)
        return {};
    SpotInk ink;
    SpotColour spot;
    spot.amount = Amount(kFixedOne - *tint);
    std::string key;
    for (size_t i = 0; i < std::size(ink.alternate); ++i) {
        const std::optional<Fixed> part = FixedOfToken(scan_.Text(operands[i]));
        if (!part)
            return {};
        ink.alternate[i] = Amount(*part);
        // The plug-in's own product, so that its colour can be told from one that is nearly the same.
        spot.process[i] =
            Amount(FixMul(static_cast<Fixed>(uint32_t{kFixedOne} - static_cast<uint32_t>(*tint)), *part));
        key.append(reinterpret_cast<const char *>(&*part), sizeof *part);
    }
    const std::string_view name = scan_.Text(operands[4]);
    if (operands[4].kind != TokenKind::String && operands[4].kind != TokenKind::HexData)
        return {};
    std::string bytes = operands[4].kind == TokenKind::String ? StringBytes(name) : HexBytes(name);
    bytes.resize(std::min(bytes.size(), kMostNameBytes));
    key += bytes;
    auto known = inks_.find(key);
    if (known == inks_.end()) {
        if (inks_.size() == kMostInks)
            return {};
        ink.name = decodeName_(bytes);
        known = inks_.emplace(std::move(key), std::move(ink)).first;
    }
    spot.ink = &known->second;
    return spot;
}

void StructureCompanion::ChangeBytes(std::span<std::byte> bytes)
{
    const size_t end = piece_ + bytes.size();
    for (const ByteEdit &edit : edits_) {
        const size_t from = std::max(edit.offset, piece_);
        const size_t to = std::min(edit.offset + edit.bytes.size(), end);
        for (size_t at = from; at < to; ++at)
            bytes[at - piece_] = static_cast<std::byte>(edit.bytes[at - edit.offset]);
    }
    std::erase_if(edits_, [&](const ByteEdit &edit) { return edit.offset + edit.bytes.size() <= end; });
}

// The plug-in has taken all lines that ended before this piece, so its lines are counted from here.
void StructureCompanion::CountLines(std::span<const std::byte> bytes)
{
    size_t counted = 0;
    uint64_t lineEnds = 0;
    for (Event &event : events_) {
        if (event.at >= piece_ + bytes.size())
            break;
        for (; counted + piece_ < event.at; ++counted)
            lineEnds += IsLineEnd(static_cast<char>(bytes[counted])) ? 1 : 0;
        event.line = lineEnds + 1;
    }
    nextLine_ = events_.front().at < piece_ + bytes.size() ? events_.front().line : 0;
}

void StructureCompanion::SendEvents()
{
    while (!events_.empty() && events_.front().line == line_) {
        if (sink_ != nullptr)
            Send(events_.front());
        events_.pop_front();
    }
    nextLine_ = events_.empty() ? 0 : events_.front().line;
}

void StructureCompanion::Send(const Event &event)
{
    switch (event.what) {
    case StructureOperator::BeginLayer:
        return sink_->BeginLayer(structure_.layers[event.layer]);
    case StructureOperator::EndLayer:
        return sink_->EndLayer();
    case StructureOperator::BeginGroup:
        return sink_->BeginGroup();
    case StructureOperator::EndGroup:
        return sink_->EndGroup();
    case StructureOperator::FillInk:
    case StructureOperator::FillProcess:
        return sink_->SetFillSpot(event.spot);
    case StructureOperator::StrokeInk:
    case StructureOperator::StrokeProcess:
        return sink_->SetStrokeSpot(event.spot);
    default:
        return;
    }
}

} // namespace vxhost
