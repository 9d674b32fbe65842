#include "cli/RenderCommand.h"

#include "cli/OutputFile.h"
#include "cli/Session.h"
#include "devices/raster/RasterDevice.h"

#include <fmt/format.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

namespace
{

// The page that the options and the document's header ask for. False with the finding's error set when there is none.
bool FindPage(const RenderOptions &options, Finding *finding, Page *page)
{
    page->title = finding->header.title;
    page->creator = finding->header.creator;
    page->created = finding->header.creationDate;
    page->box = options.box.value_or(finding->outcome.box).Upright();
    if (page->box.Width() <= 0 || page->box.Height() <= 0) {
        finding->inputError = "its bounding box is empty, nothing written: name one with --box L,B,R,T";
        return false;
    }
    finding->limitError = FindPictureSize(page->box, options.raster).error;
    return finding->limitError.empty();
}

void Render(const RenderOptions &options, const Plugin &plugin, const Document &document,
            const ParseOptions &parse, int descriptor, Finding *finding)
{
    finding->outcome = plugin.ReadInfo(document, parse);
    Page page;
    if (finding->outcome.result != kVXOk || !FindPage(options, finding, &page))
        return;

    const ByteSink sink = [descriptor, finding](std::span<const std::byte> bytes) -> std::string {
        if (WriteAll(descriptor, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            return "";
        finding->writeError = errno;
        return SystemText(errno);
    };
    const std::unique_ptr<Device> device = MakePngDevice(options.raster, sink, &finding->inputError);
    if (device == nullptr)
        return;
    finding->outcome = plugin.Draw(document, parse, page, *device);
    // What a device cannot do, other than write, is for want of memory.
    if (finding->writeError == 0)
        finding->limitError = finding->outcome.deviceError;
}

// One document; every failure has been told when this returns.
Status RenderOne(const RenderOptions &options, const std::string &input, const std::string &output,
                 Session *session, Messages *messages)
{
    const std::string outputName = output == "-" ? "standard output" : output;
    std::unique_ptr<OutputFile> file;
    const auto openOutput = [&] {
        std::string error;
        file = OutputFile::Create(output, &error);
        if (file == nullptr)
            messages->Error(outputName, error);
        return file == nullptr ? Status::OutputFailed : Status::Done;
    };
    const Work work = [&](const Plugin &plugin, const Document &document, const ParseOptions &parse,
                          Finding *finding) {
        Render(options, plugin, document, parse, file->Descriptor(), finding);
    };
    const Verdict verdict = session->Interpret(input, {", nothing written", outputName}, work, openOutput);
    if (verdict.status != Status::Done && verdict.status != Status::Warned)
        return verdict.status;

    std::string error;
    if (!file->Commit(&error)) {
        if (!error.empty())
            messages->Error(outputName, error);
        return Status::OutputFailed;
    }
    const Outcome &outcome = verdict.finding.outcome;
    messages->Detail(outputName, fmt::format("written, {} fills, {} strokes, {} clips, {} path segments",
                                             outcome.counts.fills, outcome.counts.strokes,
                                             outcome.counts.clips, outcome.counts.segments));
    return verdict.status;
}

} // namespace

Status RenderCommand::Run(Messages *messages) const
{
    RenderOptions options = reader_.Read();
    const int64_t memory = options.common.limits.memory;
    options.raster.memoryLimit =
        memory > 0 ? static_cast<uint64_t>(memory) : std::numeric_limits<uint64_t>::max();
    Session session(options.common, messages);
    Status worst = Status::Done;
    for (size_t i = 0; i < options.outputs.size(); ++i)
        worst = Worst(worst,
                      RenderOne(options, options.common.inputs[i], options.outputs[i], &session, messages));
    return worst;
}

} // namespace vxhost
