#include "host/reading/Structure.h"

#include "host/reading/BetweenLayers.h"
#include "host/reading/StructureScan.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

namespace vxhost
{

namespace
{

constexpr size_t kMostNameBytes = 255;

// The operands of a layer, the topmost first.
enum LayerOperand : size_t {
    kBlue,
    kGreen,
    kRed,
    kColour,
    kKept, // as it is: nobody here knows what it means
    kDimmed,
    kPrinting,
    kEnabled,
    kPreviewed,
    kVisible
};

class LayerOperands
{
  public:
    LayerOperands(const StructureScan &scan, const FoundOperator &found)
        : scan_(scan), operands_(found.Operands())
    {
    }

    int64_t Number(LayerOperand which, int64_t otherwise) const
    {
        if (which >= operands_.size())
            return otherwise;
        const PlacedToken &token = operands_[operands_.size() - 1 - which];
        const std::string_view text = scan_.Text(token);
        if (const std::optional<int32_t> integer = IntegerOfToken(text))
            return *integer;
        const std::optional<Fixed> fixed = FixedOfToken(text);
        return fixed ? std::lround(*fixed / 65536.0) : otherwise;
    }
    bool Flag(LayerOperand which, bool otherwise) const { return Number(which, otherwise ? 1 : 0) != 0; }
    uint8_t Byte(LayerOperand which) const
    {
        return static_cast<uint8_t>(std::clamp<int64_t>(Number(which, 0), 0, UINT8_MAX));
    }

  private:
    const StructureScan &scan_;
    std::span<const PlacedToken> operands_;
};

Layer LayerOf(const StructureScan &scan, const FoundOperator &found)
{
    const LayerOperands operands(scan, found);
    Layer layer;
    layer.isVisible = operands.Flag(kVisible, true);
    layer.isPreviewed = operands.Flag(kPreviewed, true);
    layer.isEnabled = operands.Flag(kEnabled, true);
    layer.isPrinting = layer.isPainted = operands.Flag(kPrinting, false);
    layer.isDimmed = operands.Flag(kDimmed, false);
    layer.colour = static_cast<int32_t>(operands.Number(kColour, 0));
    layer.rgb[0] = operands.Byte(kRed);
    layer.rgb[1] = operands.Byte(kGreen);
    layer.rgb[2] = operands.Byte(kBlue);
    return layer;
}

// The name as it is written.
std::string NameOf(const StructureScan &scan, const FoundOperator &found)
{
    if (found.Operands().empty())
        return {};
    const PlacedToken &token = found.Operands().back();
    const std::string_view text = scan.Text(token);
    const std::string name = token.kind == TokenKind::String    ? StringBytes(text)
                             : token.kind == TokenKind::HexData ? HexBytes(text)
                                                                : std::string();
    return name.substr(0, kMostNameBytes);
}

// Keeps the layers, and knows which are open.
class LayerList
{
  public:
    explicit LayerList(std::vector<Layer> *layers) : layers_(layers) {}

    void Begin(Layer layer)
    {
        layer.parent = open_.empty() ? -1 : open_.back();
        if (layers_->size() < Structure::kMostLayers)
            layers_->push_back(std::move(layer));
        open_.push_back(static_cast<int>(layers_->size()) - 1);
        // One that nobody ends holds no more than those that are known.
        if (open_.size() > Structure::kMostLayers)
            open_.pop_back();
    }
    void Name(std::string name)
    {
        if (!open_.empty() && (*layers_)[static_cast<size_t>(open_.back())].name.empty())
            (*layers_)[static_cast<size_t>(open_.back())].name = std::move(name);
    }
    void End()
    {
        if (!open_.empty())
            open_.pop_back();
    }

  private:
    std::vector<Layer> *layers_;
    std::vector<int> open_;
};

// Returns whether the operator alone, without others, changes what is told of a drawing: blends in process colours do not.
bool Matters(const StructureScan &scan, StructureOperator what)
{
    const bool isOfBlend = what == StructureOperator::DefineBlend || what == StructureOperator::AddStop;
    return !isOfBlend || scan.HasSpotStop();
}

} // namespace

Structure ScanStructure(const Document &document, std::string_view drawing, int version, const Blanks &blanks)
{
    Structure structure;
    LayerList layers(&structure.layers);
    StructureScan scan(drawing, version);
    const auto start =
        static_cast<size_t>(drawing.data() - reinterpret_cast<const char *>(document.Bytes().data()));
    scan.LeaveOut(blanks, start);
    const auto mayFind = [&](StructureScan::Search search) {
        bool may = false;
        for (StructureScan::Place place = scan.Here(); place.next < drawing.size() && !may;) {
            const size_t from = place.next;
            may = scan.MayFind(search, &place, std::min(from + Document::kReadAtOnce, drawing.size()));
            document.Leave(start + from, start + place.next);
        }
        return may;
    };
    // Most drawings without any have no such words at all, and those with other operators no words of layers.
    if (!mayFind(StructureScan::Search::Words))
        return structure;
    std::optional<BodyPart> between; // the layers
    const auto endBetween = [&](size_t end) {
        if (!between)
            return;
        between->end = end;
        structure.betweenLayers += CountPainted(document, drawing, *between, version, blanks);
        between.reset();
    };
    for (size_t from = 0; from < drawing.size(); from += Document::kReadAtOnce) {
        const size_t to = std::min(from + Document::kReadAtOnce, drawing.size());
        const bool wasThere = structure.isThere;
        while (scan.NextLine(to)) {
            for (const FoundOperator &found : scan.Operators()) {
                structure.isThere |= Matters(scan, found.what);
                if (found.what == StructureOperator::BeginLayer) {
                    layers.Begin(LayerOf(scan, found));
                    endBetween(found.begin);
                } else if (found.what == StructureOperator::NameLayer) {
                    layers.Name(NameOf(scan, found));
                } else if (found.what == StructureOperator::EndLayer) {
                    layers.End();
                    if (!between)
                        between = {found.end, scan.LineEnd(), 0};
                }
            }
            // That there are others is known now; which, is seen when they are painted.
            if (structure.isThere)
                scan.FindLayersAlone();
        }
        document.Leave(start + from, start + to);
        if (!wasThere && structure.isThere && !mayFind(StructureScan::Search::LayerWords))
            break;
    }
    endBetween(drawing.size());
    return structure;
}

} // namespace vxhost
