#include "host/Plugin.h"

#include "host/CappedHeap.h"
#include "host/DocumentReader.h"
#include "host/drawing/BlendFilter.h"
#include "host/drawing/CropMarks.h"
#include "host/drawing/DrawingTable.h"
#include "host/resources/StringLists.h"
#include "host/toolbox/HostContext.h"

#include <exception>
#include <new>
#include <utility>

namespace vxhost
{

namespace
{

HostContext MakeContext(const ParseOptions &options, Outcome *outcome)
{
    HostContext host;
    host.fonts = options.fonts;
    host.widths = options.widths;
    host.systemScript = options.systemScript;
    host.onReport = [&options, outcome](const std::string &title, const std::string &message) {
        outcome->reports.push_back({FindProblem(title), title, message});
        return options.onReport && options.onReport(outcome->reports.back());
    };
    host.structure = options.structure;
    if (options.companion != nullptr || options.onProgress)
        host.onProgress = [&options](int32_t read, int32_t total) {
            if (options.companion != nullptr)
                options.companion->BeginLine();
            if (options.onProgress)
                options.onProgress(read, total);
        };
    return host;
}

// Lack of memory, ours or allowed, is an outcome of the document. Anything else that a caller's procedure threw
// is the caller's, and goes on where the plug-in's frames end.
void JudgeFailure(const CappedHeap &heap, const std::exception_ptr &failure, Outcome *outcome)
{
    outcome->memoryLimitHit = heap.WasLimitHit();
    // A plug-in may take a line that it has no memory for as malformed, or go on without what it wanted.
    if (heap.HasRefused())
        outcome->result = kVXOutOfMemory;
    if (failure == nullptr)
        return;
    outcome->result = kVXOutOfMemory;
    try {
        std::rethrow_exception(failure);
    } catch (const BudgetSpent &) {
        outcome->memoryLimitHit = true;
    } catch (const std::bad_alloc &) { // NOLINT(bugprone-empty-catch): the result says it
    }
}

// One call of the plug-in, with everything that it needs around it.
Outcome CallPlugin(VXMainProc entry, int32_t selector, const Document &document, const ParseOptions &options,
                   ZRKProcs *procs, void *drawing)
{
    Outcome outcome;
    HostContext host = MakeContext(options, &outcome);
    const bool isParse = selector == kVXParse;
    DocumentReader reader(document,
                          {isParse ? options.companion : nullptr, isParse ? options.structure : nullptr});
    CappedHeap heap(options.maxHeap);

    HostCallRecord record = {};
    const bool isFollowed = options.companion != nullptr || options.structure != nullptr;
    record.progress = options.onProgress || isFollowed ? ProgressToHost : nullptr;
    record.reader = reader.Stream();
    record.streamLength = static_cast<int32_t>(document.Bytes().size());
    record.warningsOff = options.report ? 0 : 1;
    record.drawing = drawing;
    record.procs = procs;
    record.memory = heap.Procs();
    record.report = ReportToHost;
    {
        const HostScope scope(&host);
        entry(selector, &record, nullptr, &outcome.result);
    }

    const Fixed *box = record.boundingBox;
    outcome.box = {Fix2X(box[0]), Fix2X(box[1]), Fix2X(box[2]), Fix2X(box[3])};
    outcome.monochrome = record.monochrome != 0;
    outcome.bytesRead = static_cast<int64_t>(reader.Furthest());
    outcome.bytesTotal = record.streamLength;
    outcome.peakHeap = heap.PeakBytes();
    JudgeFailure(heap, host.failure, &outcome);
    return outcome;
}

} // namespace

std::unique_ptr<Plugin> Plugin::FromEntry(VXMainProc entry)
{
    std::unique_ptr<Plugin> plugin(new Plugin);
    plugin->entry_ = entry;
    return plugin;
}

Outcome Plugin::ReadInfo(const Document &document, const ParseOptions &options) const
{
    Outcome outcome = CallPlugin(entry_, kVXStreamInfo, document, options, nullptr, nullptr);
    outcome.headerAccepted = outcome.result == kVXOk;
    return outcome;
}

// A parse leaves the record's box as it was, so the header is asked for it first.
Outcome Plugin::Parse(const Document &document, const ParseOptions &options, ZRKProcs *procs,
                      void *drawing) const
{
    const Outcome header = ReadInfo(document, options);
    Outcome outcome = CallPlugin(entry_, kVXParse, document, options, procs, drawing);
    outcome.headerAccepted = header.headerAccepted;
    outcome.box = header.box;
    outcome.monochrome = header.monochrome;
    return outcome;
}

Outcome Plugin::Draw(const Document &document, const ParseOptions &options, const Page &page,
                     Device &device) const
{
    BlendFilter filter(&device);
    Drawing drawing(&filter, options.maxDrawing);
    DrawingTable table(&drawing, options.glyphs);
    Outcome outcome;
    try {
        if (options.structure != nullptr)
            options.structure->SendTo(&drawing);
        filter.BeginPage(page);
        BeginMarkedPage(page, &filter);
        outcome = Parse(document, options, table.Procs(), table.Reference());
        // After lack of memory the device is in the middle of something.
        if (outcome.result != kVXOutOfMemory) {
            drawing.EndAll();
            EndMarkedPage(page, &filter);
            outcome.failure = filter.EndPage();
        }
        outcome.counts = drawing.GetCounts();
        outcome.spots = drawing.SpotsUsed();
        if (options.glyphs != nullptr)
            outcome.fonts = options.glyphs->FontsUsed();
        else
            outcome.undrawnTexts = outcome.counts.shows;
    } catch (const std::bad_alloc &) {
        outcome.failure = {FailureKind::OutOfMemory};
    }
    return outcome;
}

} // namespace vxhost
