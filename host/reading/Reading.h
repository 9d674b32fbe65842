// One document with all that drawing it rightly needs: what its header says, the fonts that serve it, the character set and
// the script of its text.
//
// Whoever reads a document reads it through this. A reading is for one thread at a time; an Installation is for any number.
#pragma once

#include "host/Plugin.h"
#include "host/fonts/DocumentFonts.h"
#include "host/fonts/OpenFonts.h"
#include "host/reading/Blanks.h"
#include "host/reading/FaultFinder.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/LayerChoice.h"
#include "host/reading/StructureCompanion.h"
#include "host/reading/Unpacking.h"
#include "host/reading/Wrapping.h"
#include "host/trace/TraceTable.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace vxhost
{

// All documents are read with this. It does not change once it is made.
struct Installation {
    std::unique_ptr<Plugin> plugin;
    std::shared_ptr<const FontList> fonts; // the machine's
};

class Deadline
{
  public:
    explicit Deadline(double seconds = 0) : seconds_(seconds) {} // 0: there is none
    bool IsOver() const
    {
        return seconds_ > 0 && std::chrono::duration<double>(Clock::now() - start_).count() > seconds_;
    }

  private:
    using Clock = std::chrono::steady_clock;

    double seconds_;
    Clock::time_point start_ = Clock::now();
};

struct ReadingOptions {
    std::map<std::string, std::string> served; // by the user's own choice: name asked for, PostScript name
    bool substitute = true;       // false: a document that needs a font that is not there is given up
    std::optional<Script> script; // for text whose font does not say it; none: as the fonts suggest
    DateOrder dateOrder = DateOrder::Unsaid;
    // Salvage leaves out what is malformed, and draws the rest. Faults are looked for so many seconds at most.
    bool salvage = false;
    double salvageSeconds = 0;              // 0: as long as it takes
    int64_t maxMemory = int64_t{256} << 20; // bytes that the plug-in may hold at once, and that a drawing may
    std::function<bool(const Report &)> onReport; // true gives the document up; null: it goes on
    std::function<void(int64_t read, int64_t total)> onProgress; // null: none
    StreamCompanion *companion = nullptr;                        // goes along with each pass that draws
    LayerChoice layers;
    bool keepsSpots = true;     // false: what is painted in a spot ink is painted in process colours
    bool readsStructure = true; // false: layers, groups and spot inks are painted like all else
    bool readsTexts = false;    // where texts begin and end is told too, which takes longer
};

class Reading
{
  public:
    // Both must outlive this object. Making it unpacks the document, unless an earlier reading of it did, and looks at the
    // header's comments and for names of fonts; it interprets nothing.
    Reading(const Installation &installation, const Document &document, ReadingOptions options,
            std::shared_ptr<const Unpacked> unpacked = nullptr);
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    const HeaderFacts &Header() const { return header_; } // what the comments say
    const std::vector<Layer> &Layers() const { return structure_.layers; }
    const DocumentFonts &Fonts() const { return fonts_; }
    const std::shared_ptr<const Unpacked> &WhatWasUnpacked() const
    {
        return unpacked_;
    } // for another reading

    // Whether its header or its text names a font.
    bool AsksForFonts() const { return !fontOptions_.asked.empty(); }

    // Asks the plug-in for the header: whether the document is one of ours, its box, and whether it is monochrome.
    Outcome ReadInfo();
    // The page that shows that box, or the document's own, turned upright. It may be empty, and then cannot be drawn.
    Page PageFor(const std::optional<Box> &box = std::nullopt);
    // Finds the box of what the document paints, without drawing it. Nothing: it paints nothing.
    Outcome Measure(std::optional<Box> *painted);

    Outcome Draw(const Page &page, Device &device);
    // Says what the document uses and what serves it, without drawing. Where ReadInfo fails, only what that says.
    Outcome Look();
    // Writes every call that the plug-in makes, every report and the result; and, if asked, layers, groups and spot inks
    // where they stand among them.
    Outcome Trace(TraceWriter &writer, bool withStructure = false);

  private:
    ParseOptions OptionsOfParse();
    template <typename Parse>
    Outcome Interpret(const Parse &parse, StructureSink *sink = nullptr);
    Outcome ReadSilently(StreamCompanion *companion);
    std::optional<FoundFault> FindNextFault(const Deadline &deadline);
    void FindFaults();
    void CollectFaults();
    void FindStructure();
    void TellFault(Outcome *outcome);
    void TellLackedFont(Outcome *outcome);
    void TellEnd(Outcome *outcome);
    void TellUnshown(Outcome *outcome);
    void TellRest(Outcome *outcome);
    int64_t MemoryLeft() const;
    bool HasRoom() const; // for what was unpacked
    Outcome RefuseChoice();
    Outcome LimitOutcome() const;

    const Installation &installation_;
    const Document &file_;
    ReadingOptions options_;
    std::shared_ptr<const Unpacked> unpacked_;
    const Document &whole_; // what was unpacked, or the file
    Wrapping wrapping_;
    std::unique_ptr<Document> part_; // the drawing in the whole; null: it is the whole
    const Document &document_;       // the drawing
    HeaderFacts header_;
    std::string_view drawing_; // the document without an EPS wrapper
    Structure structure_;
    std::string wrongChoice_; // of layers; empty: it can be met
    DocumentFontOptions fontOptions_;
    DocumentFonts fonts_;
    TextEncoding textEncoding_; // of what no font shows
    OpenFonts openFonts_;
    bool looksForOpenThings_ = false;    // where the document ends
    std::optional<DocumentEnd> end_;     // once it is known
    std::optional<DocumentFault> fault_; // as well
    std::optional<Unshown> unshown_;     // as well
    size_t faultOffset_ = SIZE_MAX;      // in the document, if it is known
    bool areFaultsKnown_ = false;        // those that a salvage leaves out
    Salvage salvage_;
    Blanks blanks_; // where they stand
};

} // namespace vxhost
