// The call of vx.h that renders a drawing in a process of its own.
#include "host/Document.h"
#include "host/SystemText.h"
#include "host/reading/Utf8.h"
#include "library/Warnings.h"
#include "library/interface/Calls.h"
#include "library/interface/DocumentOptions.h"
#include "library/interface/Helper.h"
#include "library/interface/Pass.h"
#include "library/interface/Telling.h"

using namespace vxhost;

namespace
{

void CheckRequest(const vx_isolated &request)
{
    CheckSize(request.size, sizeof request, "vx_isolated");
    if (request.path != nullptr) {
        (void)CheckText(request.path, "path");
        if (request.bytes != nullptr)
            throw CallError(VX_WRONG_ARGUMENT, "path and bytes are both given: leave one of them null");
        if (*request.path == '\0')
            throw CallError(VX_WRONG_ARGUMENT, "path is empty: give one, or null and bytes");
    } else {
        CheckThere(request.bytes, "bytes");
    }
    if (request.byte_count > kMostDocumentBytes)
        throw CallError(VX_WRONG_ARGUMENT, std::string(kDocumentTooLong));
    if (request.option_count > 0)
        CheckThere(request.options, "options");
    if (request.helper != nullptr && CheckText(request.helper, "helper").empty())
        throw CallError(VX_WRONG_ARGUMENT, "helper is empty: give a path, or null");
}

OptionTexts OptionsOf(const vx_isolated &request)
{
    OptionTexts options;
    for (size_t i = 0; i < request.option_count; ++i)
        SetOption(request.options[2 * i], request.options[2 * i + 1], &options);
    return options;
}

IsolatedRequest RequestOf(const vx_isolated &given, vx_library *library, const OptionTexts &options,
                          const Choices &choices)
{
    const FontSources sources = library->GetFontSources();
    if (!sources.memory.empty())
        throw CallError(VX_WRONG_ARGUMENT,
                        "the library has fonts from memory, which no other process has: put "
                        "them in a folder, and name it in font-dir");
    IsolatedRequest request;
    request.mustBeConfined = given.must_be_confined != 0;
    request.format = given.format;
    request.temporaryFolder = choices.temporaryFolder;
    request.useSystemFonts = sources.useSystemFonts;
    request.fontFolders = sources.directories;
    request.served.assign(choices.served.begin(), choices.served.end());
    for (const Option &option : Options()) {
        if (const std::string &text = options.Of(option.name); !text.empty())
            request.options.emplace_back(option.name, text);
    }
    if (const auto profile = choices.profiles.find(options.Of("profile"));
        profile != choices.profiles.end()) {
        const std::vector<std::byte> &bytes = *profile->second;
        request.profiles.emplace_back(
            profile->first, std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
    }
    return request;
}

void CheckFontListing(const Fault &fault, const Settings &settings)
{
    switch (fault.kind) {
    case FaultKind::OutOfTime:
        return ThrowOutOfTime(settings);
    case FaultKind::Crashed:
    case FaultKind::BadAnswer:
        throw CallError(VX_FAILED, "the process that lists the fonts of this machine crashed: leave out the "
                                   "folder with the damaged font, or set system-fonts to no");
    default:
        return;
    }
}

// Throws CallError for any fault.
void CheckResult(const Result &result, const Settings &settings, const std::string &path)
{
    const Fault &fault = result.fault;
    if (fault.isOfFontListing)
        CheckFontListing(fault, settings);
    switch (fault.kind) {
    case FaultKind::None:
        return;
    case FaultKind::Changed:
        ThrowChanged();
    case FaultKind::OutOfTime:
    case FaultKind::PipeTooSlow:
        ThrowOutOfTime(settings);
    case FaultKind::OutOfMemory:
    case FaultKind::PipeTooLong:
        if (!fault.text.empty())
            throw CallError(VX_OUT_OF_MEMORY, "needs more memory than " + fault.text +
                                                  " allows: allow more where the program is started");
        ThrowOutOfMemory(settings, true);
    case FaultKind::OutOfProcessorTime:
        throw CallError(VX_LIMIT, "needs more processor time than ulimit -t allows: allow more where the "
                                  "program is started");
    case FaultKind::OutputTooLong:
        ThrowOutputTooLong(MostOutput(settings.output, result.size));
    case FaultKind::FileTooLong:
        throw CallError(VX_CANNOT_WRITE, "the output is longer than ulimit -f allows: allow more where the "
                                         "program is started");
    case FaultKind::Killed:
        throw CallError(VX_LIMIT, "the worker process was killed, as the system does when memory runs out: "
                                  "free some, or allow it less with max-memory");
    case FaultKind::Crashed:
        throw CallError(VX_FAILED,
                        "the worker process crashed, " + fault.text + ": keep the document and report it");
    case FaultKind::BadAnswer:
        throw CallError(VX_FAILED, "the worker process answered nonsense: keep the document and report it");
    case FaultKind::NoWorker:
        throw CallError(VX_NOT_ISOLATED,
                        "no worker process, " + SystemText(fault.error) + ": try again later");
    case FaultKind::NotConfined:
        throw CallError(VX_NOT_ISOLATED, "not read, there is " + UnconfinedText(result.confinement) +
                                             ": take a kernel that has it, or set must_be_confined to 0");
    case FaultKind::CannotOpen:
        throw CallError(VX_CANNOT_READ, Printable(path) + ": " + fault.text);
    case FaultKind::Unfit:
        if (result.outcome.headerAccepted &&
            !settings.page.isPainted) { // an empty page has words of a command line
            Page page;
            LayOut(settings.page, settings.page.box.value_or(result.outcome.box), &page);
            CheckShown(page.box);
        }
        [[fallthrough]];
    case FaultKind::NotADrawing:
    case FaultKind::Malformed:
    case FaultKind::LacksFont:
    case FaultKind::PluginFailed:
    case FaultKind::TooLarge:
        CheckOutcome(result.outcome, result.header, result.size, settings);
        throw CallError(VX_FAILED, "the worker process answered nonsense: keep the document and report it");
    default: // all others are of the file that the output is kept in
        CheckFailure({FailureKind::CannotWrite, fault.text, fault.error});
    }
}

void Warn(const Result &result, const vx_isolated &request, void *context)
{
    if (request.warning == nullptr)
        return;
    std::vector<std::string> warnings = ListTold(result.outcome, result.omitted);
    if (result.isRead && !result.confinement.IsWhole() && result.fault.kind != FaultKind::NotConfined)
        warnings.push_back(UnconfinedText(result.confinement) +
                           ": the drawing is read all the same, must_be_confined refuses");
    for (const std::string &warning : warnings) {
        if (request.warning(context, warning.c_str()) != 0)
            throw CallError(VX_STOPPED, "stopped by its warning procedure");
    }
}

} // namespace

extern "C" {

vx_status vx_render_isolated(vx_library *library, const vx_isolated *request, vx_write write, void *context,
                             vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        CheckThere(request, "request");
        CheckRequest(*request);
        (void)CheckFormat(request->format);
        CheckThere(reinterpret_cast<const void *>(write), "write");
        const OptionTexts options = OptionsOf(*request);
        const Choices choices = library->GetChoices();
        const Settings settings = ReadSettings(options, choices);

        HelperTask task;
        task.program = request->helper == nullptr ? "" : request->helper;
        task.path = request->path == nullptr ? "" : request->path;
        task.bytes = {static_cast<const std::byte *>(request->bytes), request->byte_count};
        task.request = RequestOf(*request, library, options, choices);
        task.seconds = settings.seconds;
        // The helper, which knows how long the drawing of a path is, has the closer bound.
        const size_t most = request->path == nullptr ? request->byte_count : kMostDocumentBytes;
        WrittenBytes written(write, context, MostOutput(settings.output, most));
        const ByteSink sink = written.Sinks(true).add;
        task.onOutput = [&](std::span<const std::byte> bytes) {
            if (sink(bytes))
                written.Check();
        };
        if (request->progress != nullptr)
            task.onProgress = [&](int percent) {
                if (request->progress(context, percent, 100) != 0)
                    throw CallError(VX_STOPPED, "stopped by its progress procedure");
            };
        const std::optional<Result> result = RunHelper(task);
        if (!result)
            ThrowOutOfTime(settings);
        Warn(*result, *request, context);
        CheckResult(*result, settings, task.path);
    });
}
}
