// Reads a drawing's lines beside the plug-in, and says what it says beyond its shapes at the place where it stands.
//
// The plug-in takes a document line by line, and calls before each: so what an operator does is told when its line has been
// carried out. Where a line has several, the blank behind an operator is handed over as a line end, which means the same.
#pragma once

#include "host/StreamCompanion.h"
#include "host/drawing/StructureSink.h"
#include "host/reading/BlendDefinitions.h"
#include "host/reading/SpotInks.h"
#include "host/reading/Structure.h"
#include "host/reading/StructureScan.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// Bytes of the drawing that are handed over instead of those that it has.
struct ByteEdit {
    size_t offset = 0; // in the drawing
    std::string bytes;
};

class StructureCompanion final : public StreamCompanion
{
  public:
    // The drawing starts there in the document. Layers are painted as the structure says. All must outlive this object.
    StructureCompanion(std::string_view drawing, size_t start, int version, const Structure &structure,
                       SpotInks::DecodeName decodeName);

    // Texts are told of too, which takes longer. Call it first.
    void TellTexts() { scan_.FindTexts(); }

    // Passes over what is blanked. Call it first.
    void LeaveOut(const Blanks &blanks) { scan_.LeaveOut(blanks, start_); }

    // Says who is told; null: nobody, but the layers are painted as chosen all the same.
    void SendTo(StructureSink *sink) { sink_ = sink; }

    // Makes everything that is painted in a spot ink be painted in process colours.
    void LeaveSpots() { leavesSpots_ = true; }

    void Deliver(std::span<std::byte> bytes, size_t offset) override;
    void BeginLine() override
    {
        if (++line_ == nextLine_)
            SendEvents();
    }

  private:
    struct Event {
        StructureOperator what = StructureOperator::BeginLayer;
        size_t at = 0;     // in the drawing: what has to be carried out before goes up to this byte
        uint64_t line = 0; // that begins then, counted since the piece was delivered in which that byte is
        size_t layer = 0;
        SpotColour spot = {}; // no ink: process colours
        const SpotBlend *blend = nullptr;
        TextKind text = TextKind::Point;
    };

    void Take(const FoundOperator &found);
    TextKind FindTextKind(const FoundOperator &found) const;
    void PaintLayer(const FoundOperator &found, const Layer &layer);
    void ChangeBytes(std::span<std::byte> bytes);
    void CountLines(std::span<const std::byte> bytes);
    void SendEvents();
    void Send(const Event &event);

    std::string_view drawing_;
    size_t start_; // of the drawing in the document
    const Structure &structure_;
    StructureScan scan_;
    StructureSink *sink_ = nullptr;
    bool leavesSpots_ = false;

    size_t piece_ = 0;                 // in the drawing, where the piece begins that is delivered
    uint64_t line_ = 0, nextLine_ = 0; // since then; 0: nothing waits for a line of this piece
    std::deque<Event> events_;
    std::deque<ByteEdit> edits_;
    size_t layersBegun_ = 0;
    SpotInks inks_;
    BlendDefinitions blends_;
};

} // namespace vxhost
