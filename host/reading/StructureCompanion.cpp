#include "host/reading/StructureCompanion.h"

#include "host/reading/ByteBlocks.h"
#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kLayerNumbersAfterPrinting = 6;

uint64_t CountLineEnds(std::span<const std::byte> bytes)
{
    constexpr size_t kStep = sizeof(ByteBlock), kMostAtOnce = 255; // more do not fit in a byte
    const auto *from = reinterpret_cast<const uint8_t *>(bytes.data());
    uint64_t count = 0;
    size_t left = bytes.size();
    while (left >= kStep) {
        ByteBlock counts = {};
        for (size_t blocks = std::min(left / kStep, kMostAtOnce); blocks > 0;
             --blocks, from += kStep, left -= kStep)
            counts -= IsLineEnd(LoadBlock(from)); // a mark is -1
        count += SumOf(counts);
    }
    for (; left > 0; ++from, --left)
        count += IsLineEnd(static_cast<char>(*from)) ? 1 : 0;
    return count;
}

} // namespace

StructureCompanion::StructureCompanion(std::string_view drawing, size_t start, int version,
                                       const Structure &structure, SpotInks::DecodeName decodeName)
    : drawing_(drawing), start_(start), structure_(structure), scan_(drawing, version),
      inks_(drawing, std::move(decodeName))
{
}

void StructureCompanion::Deliver(std::span<std::byte> bytes, size_t offset)
{
    line_ = nextLine_ = 0;
    if (offset < start_) // the header around the drawing
        return;
    piece_ = offset - start_;
    // Bytes that change may stand in this piece, and the operator that says so in a later one. Pieces are small, so the scan goes on
    // for several at a time.
    constexpr size_t kAtOnce = 4096;
    const size_t needed = piece_ + bytes.size() + StructureScan::kMaxReach;
    while (scan_.NextLine((needed + kAtOnce - 1) / kAtOnce * kAtOnce)) {
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
        if (!leavesSpots_ && found.count >= kSpotOperands)
            event.spot = inks_.Find(found.Operands().last(kSpotOperands));
        break;
    case StructureOperator::DefineBlend:
        blends_.Define(scan_, found);
        return;
    case StructureOperator::AddStop:
        blends_.AddStop(scan_, found, &inks_);
        return;
    case StructureOperator::BindBlend:
        if (!leavesSpots_)
            event.blend = blends_.Find(scan_, found);
        break;
    case StructureOperator::BeginText:
        event.text = FindTextKind(found);
        break;
    default:
        break;
    }
    events_.push_back(event);
}

// A text without a kind, as the oldest documents have it, begins at a point.
TextKind StructureCompanion::FindTextKind(const FoundOperator &found) const
{
    if (found.count == 0)
        return TextKind::Point;
    switch (IntegerOfToken(scan_.Text(found.Operands().back())).value_or(0)) {
    case 1:
        return TextKind::Path;
    case 2:
        return TextKind::Area;
    default:
        return TextKind::Point;
    }
}

// Changes the flag that says whether the layer is painted, digit by digit.
void StructureCompanion::PaintLayer(const FoundOperator &found, const Layer &layer)
{
    if (layer.isPainted == layer.isPrinting || found.count <= kLayerNumbersAfterPrinting)
        return;
    const PlacedToken &flag = found.room[found.count - 1 - kLayerNumbersAfterPrinting];
    std::string digits(flag.end - flag.begin, '0');
    digits.back() = layer.isPainted ? '1' : '0';
    edits_.push_back({flag.begin, std::move(digits)});
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
        lineEnds += CountLineEnds(bytes.subspan(counted, event.at - piece_ - counted));
        counted = event.at - piece_;
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
    case StructureOperator::BindBlend:
    case StructureOperator::EndBlend:
        return sink_->SetFillBlend(event.blend);
    case StructureOperator::BeginText:
        return sink_->BeginText(event.text);
    case StructureOperator::BeginTextPath:
        return sink_->BeginTextPath();
    case StructureOperator::EndText:
        return sink_->EndText();
    default:
        return;
    }
}

} // namespace vxhost
