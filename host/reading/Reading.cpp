#include "host/reading/Reading.h"

#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontNameScan.h"
#include "host/reading/FaultFinder.h"

#include <algorithm>
#include <exception>
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

// Returns the encoding of what no font shows: the document's title, names of colours.
TextEncoding TextEncodingOf(const HeaderFacts &header, const DocumentFonts &fonts)
{
    return header.version == kWindowsVersion ? TextEncoding::CodePage1252 : MacEncoding(fonts.SystemScript());
}

} // namespace

Reading::Reading(const Installation &installation, const Document &document, ReadingOptions options)
    : installation_(installation), whole_(document), wrapping_(FindDrawing(document.Bytes())),
      part_(wrapping_.names.empty() ? nullptr : Document::PartOf(document, wrapping_.offset, wrapping_.size)),
      document_(part_ == nullptr ? whole_ : *part_), options_(std::move(options)),
      header_(ScanHeader(document_.Bytes())), fontOptions_(FontOptionsFor(document_, header_, options_)),
      fonts_(*installation.fonts, fontOptions_), openFonts_(fonts_)
{
    DecodeTexts(TextEncodingOf(header_, fonts_), &header_);
    const HeaderDate date = ReadHeaderDate(header_.creationDate, options_.dateOrder);
    header_.wrapping = wrapping_.names;
    header_.created = date.date;
    header_.isDateOrderOpen = date.isOrderOpen;
}

// Every pass over the document has these.
ParseOptions Reading::OptionsOfParse()
{
    ParseOptions options;
    options.fonts = &fonts_;
    options.widths = &openFonts_;
    options.systemScript = static_cast<int32_t>(fonts_.SystemScript());
    options.maxHeap = options.maxDrawing = options_.maxMemory;
    options.onProgress = options_.onProgress;
    return options;
}

template <typename Parse>
Outcome Reading::Interpret(const Parse &parse)
{
    ParseOptions parseOptions = OptionsOfParse();
    Blanker blanker(blanks_, options_.companion);
    parseOptions.companion = blanks_.IsEmpty() ? options_.companion : &blanker;
    bool lacksFont = false;
    parseOptions.onReport = [&](const Report &report) {
        lacksFont = lacksFont || (!options_.substitute && report.number == kVXProblemFont);
        const bool isGivenUp = options_.onReport && options_.onReport(report);
        return isGivenUp || lacksFont;
    };
    DocumentGlyphs glyphs(&openFonts_);
    parseOptions.glyphs = &glyphs;
    Outcome outcome = parse(parseOptions);
    outcome.bytesRead += static_cast<int64_t>(wrapping_.offset); // places are those of the file
    outcome.bytesTotal = static_cast<int64_t>(whole_.Bytes().size());
    const bool isBoxed = std::ranges::any_of(
        outcome.fonts, [](const FontUse &use) { return use.match == FontMatch::Missing; });
    // If nothing may be substituted, text that would be drawn as boxes ends the document as well.
    if (!options_.substitute && isBoxed && outcome.result == kVXOk)
        outcome.result = kVXStoppedByUser;
    if (outcome.result == kVXStoppedByUser && (lacksFont || isBoxed))
        TellLackedFont(&outcome);
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

// Looks, once, for all that has to be left out.
void Reading::FindFaults()
{
    if (!options_.salvage || areFaultsKnown_)
        return;
    areFaultsKnown_ = true;
    const Deadline deadline(options_.salvageSeconds);
    try {
        while (const std::optional<FoundFault> found = FindNextFault(deadline)) {
            if (found->places.empty() || salvage_.faults == kMostSalvaged) {
                fault_ = found->told;
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

// A document that is malformed is looked at too: it may be cut.
void Reading::TellEnd(Outcome *outcome)
{
    if (outcome->result != kVXOk && !(outcome->result == kVXBadFormat && outcome->headerAccepted))
        return;
    if (!end_)
        end_ = FindEnd(document_, false);
    outcome->end = *end_;
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
    page.box = (box ? *box : ReadInfo().box).Upright();
    return page;
}

Outcome Reading::Draw(const Page &page, Device &device)
{
    FindFaults();
    Outcome outcome = Interpret([&](const ParseOptions &options) {
        return installation_.plugin->Draw(document_, options, page, device);
    });
    TellEnd(&outcome);
    TellFault(&outcome);
    return outcome;
}

Outcome Reading::Look()
{
    Outcome info = ReadInfo();
    if (info.result != kVXOk)
        return info;
    NoDevice device;
    end_ = FindEnd(document_, true);
    return Draw(NoPage(), device);
}

Outcome Reading::Trace(TraceWriter &writer)
{
    FindFaults();
    TraceTable table(&writer);
    Outcome outcome = Interpret([&](const ParseOptions &options) {
        ParseOptions traced = options;
        traced.onReport = [&](const Report &report) {
            table.Report(report.number);
            return options.onReport(report);
        };
        return installation_.plugin->Parse(document_, traced, table.Procs(), table.Drawing());
    });
    table.Finish(outcome.result);
    TellEnd(&outcome);
    TellFault(&outcome);
    return outcome;
}

} // namespace vxhost
