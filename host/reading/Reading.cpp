#include "host/reading/Reading.h"

#include "host/drawing/PaintedExtent.h"
#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontNameScan.h"
#include "host/reading/FaultFinder.h"
#include "host/trace/TraceStructure.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

namespace vxhost
{

namespace
{

constexpr int kWindowsVersion = 4; // the version whose text is in a code page

// A document may have so many faults that are left out.
constexpr uint32_t kMostSalvaged = 100;

struct TimeIsUp : std::exception {
};

// Goes beside the plug-in for another companion, and throws TimeIsUp.
class TimedCompanion final : public StreamCompanion
{
  public:
    TimedCompanion(const Deadline &deadline, StreamCompanion *next) : deadline_(deadline), next_(next) {}

    void Deliver(std::span<std::byte> bytes, size_t offset) override { next_->Deliver(bytes, offset); }
    void BeginLine() override
    {
        constexpr uint64_t kLinesATime = 1024; // a look at the clock takes longer than a line
        if (lines_++ % kLinesATime == 0 && deadline_.IsOver())
            throw TimeIsUp();
        next_->BeginLine();
    }

  private:
    const Deadline &deadline_;
    StreamCompanion *next_;
    uint64_t lines_ = 0;
};

// A device that shows nothing: what is counted is counted on the way to it.
class NoDevice final : public Device
{
  public:
    void BeginPage(const Page &) override {}
    void Save() override {}
    void Restore() override {}
    void ClipPath(const Path &) override {}
    void FillPath(const Path &, const Paint &) override {}
    void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
    bool CanShow(const TextFont &) override { return true; } // nobody needs the outlines of its glyphs
    Failure EndPage() override { return {}; }
};

// Any will do for a device that draws nothing; the document's may be empty.
Page NoPage()
{
    Page page;
    page.box = {0, 0, 1, 1};
    return page;
}

// Gathers what the document's text and its header ask for.
DocumentFontOptions FontOptionsFor(const Document &document, const HeaderFacts &header,
                                   const ReadingOptions &options)
{
    DocumentFontOptions fonts;
    fonts.asked = ScanFontNames(document);
    for (const std::string &name : header.fonts)
        (void)AddAskedFont(name, &fonts.asked); // a full list takes no more
    fonts.served = options.served;
    fonts.substitute = options.substitute;
    fonts.systemScript = options.script;
    fonts.isCodePage1252 = header.version == kWindowsVersion;
    return fonts;
}

// Unpacked bytes are held in memory, and count.
std::unique_ptr<const Unpacked> UnpackFor(const Document &document, const ReadingOptions &options)
{
    UnpackLimits limits;
    limits.memory = static_cast<size_t>(
        std::min<uint64_t>(static_cast<uint64_t>(options.maxMemory), std::numeric_limits<size_t>::max()));
    const auto size = static_cast<int64_t>(document.Bytes().size());
    const auto tellProgress = [&] { options.onProgress(0, size); }; // it may end the reading
    return Unpack(document, limits, options.onProgress ? tellProgress : std::function<void()>());
}

// Returns the encoding of what no font shows: the document's title, names of colours.
TextEncoding TextEncodingOf(const HeaderFacts &header, const DocumentFonts &fonts)
{
    return header.version == kWindowsVersion ? TextEncoding::CodePage1252 : MacEncoding(fonts.SystemScript());
}

// A document that is malformed is looked at too.
bool IsReadFarEnough(const Outcome &outcome)
{
    return outcome.result == kVXOk || (outcome.result == kVXBadFormat && outcome.headerAccepted);
}

// Returns the document without an EPS wrapper, as the plug-in reads it.
std::string_view DrawingOf(const Document &document)
{
    bool isWrapped = false;
    const std::span<const std::byte> bytes = document.Bytes();
    return DrawingSection({reinterpret_cast<const char *>(bytes.data()), bytes.size()}, &isWrapped);
}

} // namespace

Reading::Reading(const Installation &installation, const Document &document, ReadingOptions options,
                 std::shared_ptr<const Unpacked> unpacked)
    : installation_(installation), file_(document), options_(std::move(options)),
      unpacked_(unpacked != nullptr ? std::move(unpacked) : UnpackFor(document, options_)),
      whole_(unpacked_->document != nullptr ? *unpacked_->document : file_),
      wrapping_(FindDrawing(whole_.Bytes())),
      part_(wrapping_.names.empty() ? nullptr : Document::PartOf(whole_, wrapping_.offset, wrapping_.size)),
      document_(part_ == nullptr ? whole_ : *part_), header_(ScanHeader(document_.Bytes())),
      drawing_(DrawingOf(document_)), fontOptions_(FontOptionsFor(document_, header_, options_)),
      fonts_(*installation.fonts, fontOptions_), textEncoding_(TextEncodingOf(header_, fonts_)),
      openFonts_(fonts_)
{
    DecodeTexts(textEncoding_, &header_);
    FindStructure();
    const HeaderDate date = ReadHeaderDate(header_.creationDate, options_.dateOrder);
    header_.wrapping = unpacked_->names;
    AddWrapping(wrapping_.names, &header_.wrapping);
    header_.refusal = unpacked_->refusal;
    header_.created = date.date;
    header_.isDateOrderOpen = date.isOrderOpen;
}

// Looks for layers and what else there is, and which are painted.
void Reading::FindStructure()
{
    if (options_.readsStructure)
        structure_ = ScanStructure(document_, drawing_, header_.version, blanks_);
    for (Layer &layer : structure_.layers)
        layer.name = DecodeText(layer.name, textEncoding_);
    wrongChoice_ = ChooseLayers(options_.layers, &structure_.layers);
}

// Every pass over the document has these.
ParseOptions Reading::OptionsOfParse()
{
    ParseOptions options;
    options.fonts = &fonts_;
    options.widths = &openFonts_;
    options.systemScript = static_cast<int32_t>(fonts_.SystemScript());
    options.maxHeap = options.maxDrawing = MemoryLeft();
    options.onProgress = options_.onProgress;
    return options;
}

template <typename Parse>
Outcome Reading::Interpret(const Parse &parse, StructureSink *sink)
{
    if (!HasRoom())
        return LimitOutcome();
    ParseOptions parseOptions = OptionsOfParse();
    Blanker blanker(blanks_, options_.companion);
    parseOptions.companion = blanks_.IsEmpty() ? options_.companion : &blanker;
    std::optional<StructureCompanion> structure;
    if (structure_.isThere || options_.readsTexts) {
        structure.emplace(
            drawing_,
            static_cast<size_t>(drawing_.data() - reinterpret_cast<const char *>(document_.Bytes().data())),
            header_.version, structure_,
            [this](std::string_view name) { return DecodeText(name, textEncoding_); });
        structure->LeaveOut(blanks_);
        if (!options_.keepsSpots)
            structure->LeaveSpots();
        structure->SendTo(sink);
        if (options_.readsTexts)
            structure->TellTexts();
        parseOptions.structure = &*structure;
    }
    bool lacksFont = false;
    parseOptions.onReport = [&](const Report &report) {
        lacksFont = lacksFont || (!options_.substitute && report.number == kVXProblemFont);
        const bool isGivenUp = options_.onReport && options_.onReport(report);
        return isGivenUp || lacksFont;
    };
    DocumentGlyphs glyphs(&openFonts_);
    parseOptions.glyphs = &glyphs;
    Outcome outcome = parse(parseOptions);
    outcome.bytesRead += static_cast<int64_t>(wrapping_.offset); // places are those of the file, unpacked
    outcome.bytesTotal = static_cast<int64_t>(file_.Bytes().size());
    outcome.bytesUnpacked = static_cast<int64_t>(whole_.Bytes().size());
    outcome.damage = unpacked_->damage;
    const bool isBoxed = std::ranges::any_of(
        outcome.fonts, [](const FontUse &use) { return use.match == FontMatch::Missing; });
    // If nothing may be substituted, text that would be drawn as boxes ends the document as well.
    if (!options_.substitute && isBoxed && outcome.result == kVXOk)
        outcome.result = kVXStoppedByUser;
    if (outcome.result == kVXStoppedByUser && (lacksFont || isBoxed))
        TellLackedFont(&outcome);
    return outcome;
}

int64_t Reading::MemoryLeft() const
{
    return unpacked_->document == nullptr ? options_.maxMemory
                                          : options_.maxMemory - static_cast<int64_t>(whole_.Bytes().size());
}

bool Reading::HasRoom() const
{
    return unpacked_->limit == UnpackLimit::None && MemoryLeft() >= 0;
}

Outcome Reading::LimitOutcome() const
{
    Outcome outcome;
    outcome.result = kVXOutOfMemory;
    outcome.memoryLimitHit = true;
    if (unpacked_->limit == UnpackLimit::Length)
        outcome.failure = {FailureKind::TooLarge, std::string("unpacked ").append(kDocumentTooLong)};
    return outcome;
}

Outcome Reading::ReadSilently(StreamCompanion *companion)
{
    ParseOptions options = OptionsOfParse();
    Blanker blanker(blanks_, companion);
    options.companion = &blanker;
    NoDevice device;
    return installation_.plugin->Draw(document_, options, NoPage(), device);
}

std::optional<FoundFault> Reading::FindNextFault(const Deadline &deadline)
{
    std::optional<FoundFault> found =
        FindFault(document_, header_.version, blanks_, [&](StreamCompanion *companion) {
            TimedCompanion timed(deadline, companion);
            return ReadSilently(&timed);
        });
    if (found) {
        PlaceFault(whole_, wrapping_.offset + found->offset, &found->told);
        if (found->places.empty())
            found->told.column = 0;
    }
    return found;
}

// Looks, once, for all that has to be left out, which may be what began a layer.
void Reading::FindFaults()
{
    if (!options_.salvage || areFaultsKnown_)
        return;
    areFaultsKnown_ = true;
    CollectFaults();
    if (!blanks_.IsEmpty())
        FindStructure();
}

void Reading::CollectFaults()
{
    const Deadline deadline(options_.salvageSeconds);
    try {
        while (const std::optional<FoundFault> found = FindNextFault(deadline)) {
            if (found->places.empty() || salvage_.faults == kMostSalvaged) {
                fault_ = found->told;
                faultOffset_ = found->offset;
                salvage_.isCut = found->isInBody;
                return;
            }
            blanks_.Add(found->places);
            if (salvage_.faults++ < Salvage::kMostTold)
                salvage_.first.push_back(found->told);
        }
    } catch (const TimeIsUp &) {
        fault_.emplace(); // nobody knows where the drawing ends
        salvage_.isCut = true;
    }
}

// A salvaged document that still fails ends there, and is what was drawn.
void Reading::TellFault(Outcome *outcome)
{
    outcome->salvage = salvage_;
    outcome->salvage.isCut = false;
    if (outcome->result != kVXBadFormat || !outcome->headerAccepted)
        return;
    if (!fault_) {
        const std::optional<FoundFault> found = FindNextFault(Deadline());
        fault_ = found ? found->told : DocumentFault();
        faultOffset_ = found ? found->offset : faultOffset_;
    }
    outcome->fault = *fault_;
    if (salvage_.isCut) {
        outcome->salvage.isCut = true;
        outcome->result = kVXOk;
    }
}

// What a document used is not known once it was given up: the fonts that it asks for are told instead.
void Reading::TellLackedFont(Outcome *outcome)
{
    outcome->fonts.clear();
    for (const AskedFont &asked : fontOptions_.asked) {
        const int32_t index = fonts_.FindFor(asked.name);
        FontUse use;
        if (index >= 0)
            use = openFonts_.Describe(index);
        use.asked = asked.name;
        if (use.match == FontMatch::Missing && outcome->lackedFont.empty())
            outcome->lackedFont = asked.name;
        outcome->fonts.push_back(use);
    }
    if (outcome->lackedFont.empty())
        outcome->lackedFont = "its name is unknown";
}

void Reading::TellEnd(Outcome *outcome)
{
    if (!IsReadFarEnough(*outcome))
        return;
    if (!end_)
        end_ = FindEnd(document_, looksForOpenThings_, blanks_);
    outcome->end = *end_;
    outcome->layers = structure_.layers;
    Undrawn &undrawn = outcome->end.undrawn;
    if (outcome->result != kVXOk) // it was given up elsewhere
        undrawn = {};
    if (undrawn.line != 0) // in the file, not in the drawing
        undrawn.line += CountLineEnds(whole_.Bytes(), wrapping_.offset);
}

// Looks only where something is: in a walk through all words.
void Reading::TellUnshown(Outcome *outcome)
{
    if (!IsReadFarEnough(*outcome))
        return;
    if (!unshown_) {
        std::string_view read = drawing_;
        if (outcome->result != kVXOk || outcome->salvage.isCut) {
            const auto start = static_cast<size_t>(drawing_.data() -
                                                   reinterpret_cast<const char *>(document_.Bytes().data()));
            const size_t end =
                std::min(faultOffset_, static_cast<size_t>(outcome->bytesRead) - wrapping_.offset);
            read = read.substr(0, end - std::min(start, end));
        }
        const bool isReported = std::ranges::any_of(outcome->reports, [](const Report &report) {
            return report.number == kVXProblemPattern || report.number == kVXProblemPostScript ||
                   report.number == kVXProblemBinary;
        });
        unshown_ = isReported || MayHoldPlacedPicture(document_, read)
                       ? CountUnshown(document_, read, header_.version, blanks_)
                       : Unshown();
        unshown_->betweenLayers =
            structure_.betweenLayers == 0 || read.size() == drawing_.size()
                ? structure_.betweenLayers
                : ScanStructure(document_, read, header_.version, blanks_).betweenLayers;
    }
    outcome->unshown = *unshown_;
}

// Says what became of the document beside what the plug-in says.
void Reading::TellRest(Outcome *outcome)
{
    TellEnd(outcome);
    TellFault(outcome);
    TellUnshown(outcome);
}

Outcome Reading::ReadInfo()
{
    return Interpret(
        [this](const ParseOptions &options) { return installation_.plugin->ReadInfo(document_, options); });
}

Page Reading::PageFor(const std::optional<Box> &box)
{
    Page page;
    page.title = header_.title;
    page.creator = header_.creator;
    page.created = header_.creationDate;
    page.date = header_.created;
    page.isDateOrderOpen = header_.isDateOrderOpen;
    page.fileDate = whole_.ModifiedAt();
    page.hasLayers = !structure_.layers.empty();
    page.box = (box ? *box : ReadInfo().box).Upright();
    return page;
}

Outcome Reading::RefuseChoice()
{
    Outcome outcome = ReadInfo();
    if (outcome.result == kVXOk)
        outcome.failure = {FailureKind::BadInput, wrongChoice_};
    return outcome;
}

Outcome Reading::Draw(const Page &page, Device &device)
{
    FindFaults();
    if (!wrongChoice_.empty())
        return RefuseChoice();
    Outcome outcome;
    do {
        outcome = Interpret([&](const ParseOptions &options) {
            return installation_.plugin->Draw(document_, options, page, device);
        });
    } while (outcome.result == kVXOk && !outcome.failure && device.WantsPageAgain());
    outcome.placedTexts = device.PlacedTexts();
    outcome.page = {page.box, page.tooWide, page.tooHigh};
    TellRest(&outcome);
    return outcome;
}

Outcome Reading::Look()
{
    Outcome info = ReadInfo();
    if (info.result != kVXOk)
        return info;
    NoDevice device;
    looksForOpenThings_ = true;
    return Draw(NoPage(), device);
}

Outcome Reading::Measure(std::optional<Box> *painted)
{
    PaintedExtent extent;
    Outcome outcome = Draw(NoPage(), extent);
    *painted = extent.Found();
    return outcome;
}

Outcome Reading::Trace(TraceWriter &writer, bool withStructure)
{
    // Nothing is printed of a document that is not read.
    if (!HasRoom())
        return LimitOutcome();
    FindFaults();
    if (!wrongChoice_.empty())
        return RefuseChoice();
    TraceTable table(&writer);
    TraceStructure structure(&writer);
    Outcome outcome = Interpret(
        [&](const ParseOptions &options) {
            ParseOptions traced = options;
            traced.onReport = [&](const Report &report) {
                table.Report(report.number);
                return options.onReport(report);
            };
            return installation_.plugin->Parse(document_, traced, table.Procs(), table.Drawing());
        },
        withStructure ? &structure : nullptr);
    table.Finish(outcome.result);
    TellRest(&outcome);
    return outcome;
}

} // namespace vxhost
