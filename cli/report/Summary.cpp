#include "cli/report/Summary.h"

#include "cli/report/Decimal.h"
#include "library/Values.h"
#include "library/Warnings.h"

#include <fmt/format.h>

#include <cerrno>
#include <utility>

namespace vxhost
{

namespace
{

// What an error costs.
std::string_view LostText(Audience audience)
{
    return audience == Audience::Render || audience == Audience::Batch ? ", nothing written" : "";
}

std::string MemoryText(const Telling &telling, std::string_view lost)
{
    const WorkerLimits &limits = telling.limits;
    if (const std::string_view callers = CallersMemoryLimit(limits); !callers.empty())
        return fmt::format("needs more memory than {} allows{}: allow more where vx is started", callers,
                           lost);
    if (limits.memory == 0)
        return fmt::format("needs more memory than there is{}: close other programs", lost);
    return fmt::format("needs more than {} of memory{}: allow more with --max-memory",
                       SizeText(limits.memory), lost);
}

// What is told of nonsense from a worker, which nobody but us can mend.
std::string CrashText(std::string_view what, Audience audience, std::string_view lost)
{
    return fmt::format("the worker process {}{}: {} and report it", what, lost,
                       audience == Audience::Profile ? "give another profile" : "keep the document");
}

std::string NoDrawingText(const Result &result, Audience audience)
{
    const bool isBatch = audience == Audience::Batch;
    std::string text = WhyRefused(result.header, result.size, !isBatch);
    if (isBatch && result.size > 0 && !result.header.hasPrefix && !result.header.epsWrapper)
        text += ", manifests come with --manifest";
    return text;
}

std::string MalformedText(const std::string &input, const Result &result, const Telling &telling)
{
    return fmt::format("malformed near byte {} of {}{}: {}", result.outcome.bytesRead, result.size,
                       LostText(telling.audience),
                       telling.audience == Audience::Trace
                           ? std::string("the last calls above come just before it")
                           : fmt::format("vx trace {} shows how far it got", input));
}

std::string OutputText(const Result &result, const Telling &telling)
{
    const Fault &fault = result.fault;
    switch (fault.kind) {
    case FaultKind::OutputTooLong:
        return fmt::format("takes more than {}{}: allow more with --max-output",
                           SizeText(telling.limits.For(result.size).output.value_or(0)),
                           LostText(telling.audience));
    case FaultKind::FileTooLong:
        return fmt::format("cannot be written, {}: allow more with ulimit -f where vx is started",
                           SystemText(fault.error));
    case FaultKind::OutputIsFolder:
        return "is a directory: name a file in it";
    case FaultKind::OutputIsSpecial:
        return fmt::format("is {}, not a file: name a file", fault.text);
    case FaultKind::NobodyReads:
        return "is a pipe that nobody reads: start its reader first";
    case FaultKind::NoFolder:
        return "no such folder: make it first";
    case FaultKind::NoTemporaryFile:
        return fmt::format("no temporary file in \"{}\", {}: name another folder in TMPDIR", fault.text,
                           SystemText(fault.error));
    case FaultKind::SpoolFailed:
        return fmt::format("cannot be kept in a temporary file, {}: name another folder in TMPDIR",
                           SystemText(fault.error));
    case FaultKind::ReaderLeft:
        return "";
    default:
        return fmt::format("cannot be written, {}: choose another place{}", SystemText(fault.error),
                           telling.audience == Audience::Trace ? "" : " with -o");
    }
}

// What kept the fonts of the machine from being known.
std::string FontListingText(const Fault &fault, const Telling &telling)
{
    const std::string_view lost = LostText(telling.audience);
    switch (fault.kind) {
    case FaultKind::OutOfTime:
        return fmt::format(
            "the fonts of this machine are not listed after {} s{}: look for a pipe or a circle of "
            "links in their folders, or allow more with --max-time",
            Decimal(LimitsOfListing(telling.limits).seconds), lost);
    case FaultKind::Crashed:
    case FaultKind::BadAnswer:
        return fmt::format("the process that lists the fonts of this machine crashed{}{}: leave out the "
                           "folder with the damaged font, or all with --no-system-fonts",
                           fault.text.empty() ? "" : ", " + fault.text, lost);
    default:
        return "";
    }
}

// Of any fault but those of outputs.
std::string DocumentText(const std::string &input, const Result &result, const Telling &telling)
{
    const Fault &fault = result.fault;
    const std::string_view lost = LostText(telling.audience);
    const WorkerLimits &limits = telling.limits;
    if (fault.isOfFontListing) {
        if (std::string text = FontListingText(fault, telling); !text.empty())
            return text;
    }
    switch (fault.kind) {
    case FaultKind::PipeTooSlow:
        return fmt::format(
            "not read to its end after {} s: allow more with --max-time, or see what writes it",
            Decimal(limits.seconds));
    case FaultKind::PipeTooLong:
        return fmt::format("is longer than the {} of memory that it may take: allow more with --max-memory, "
                           "or name a file",
                           SizeText(limits.memory));
    case FaultKind::Changed:
        return fmt::format("changed while it was read{}: try again when nothing writes to it", lost);
    case FaultKind::NotADrawing:
        return NoDrawingText(result, telling.audience);
    case FaultKind::Malformed:
        return MalformedText(input, result, telling);
    case FaultKind::LacksFont:
        return fmt::format("no font \"{}\"{}: install it, or go without --missing-fonts fail",
                           result.outcome.lackedFont, lost);
    case FaultKind::PluginFailed:
        return fmt::format("the plug-in gave result {}{}: see whether --plugin names the right one",
                           result.outcome.result, lost);
    case FaultKind::OutOfTime:
        return fmt::format("not done after {} s{}: allow more with --max-time", Decimal(limits.seconds),
                           lost);
    case FaultKind::OutOfMemory:
        return MemoryText(telling, lost);
    case FaultKind::OutOfProcessorTime:
        return fmt::format(
            "needs more processor time than ulimit -t allows{}: allow more where vx is started", lost);
    case FaultKind::NoWorker:
        return fmt::format("no worker process, {}: {}", SystemText(fault.error),
                           fault.error == ENOSYS ? "mount /proc where vx is started" : "try again later");
    case FaultKind::Killed:
        return fmt::format("the worker process was killed, as the system does when memory runs out{}: close "
                           "other programs, or allow it less with --max-memory",
                           lost);
    case FaultKind::Crashed:
        return CrashText("crashed, " + fault.text, telling.audience, lost);
    case FaultKind::BadAnswer:
        return CrashText("answered nonsense", telling.audience, lost);
    case FaultKind::NotConfined:
        return fmt::format(
            "not read, there is {}: take a kernel that has it, or go without --require-sandbox",
            UnconfinedText(result.confinement));
    default:
        return fault.text;
    }
}

bool IsOfOutput(FaultKind kind)
{
    switch (kind) {
    case FaultKind::OutputTooLong:
    case FaultKind::FileTooLong:
    case FaultKind::OutputIsFolder:
    case FaultKind::OutputIsSpecial:
    case FaultKind::NobodyReads:
    case FaultKind::NoFolder:
    case FaultKind::CannotWrite:
    case FaultKind::NoTemporaryFile:
    case FaultKind::SpoolFailed:
    case FaultKind::ReaderLeft:
        return true;
    default:
        return false;
    }
}

Status StatusOf(FaultKind kind)
{
    switch (kind) {
    case FaultKind::None:
        return Status::Done;
    case FaultKind::PipeTooSlow:
    case FaultKind::PipeTooLong:
    case FaultKind::OutOfTime:
    case FaultKind::OutOfMemory:
    case FaultKind::OutOfProcessorTime:
    case FaultKind::OutputTooLong:
    case FaultKind::PictureTooLarge:
    case FaultKind::Killed:
        return Status::LimitHit;
    case FaultKind::Crashed:
    case FaultKind::BadAnswer:
        return Status::WorkerCrashed;
    default:
        return IsOfOutput(kind) ? Status::OutputFailed : Status::InputFailed;
    }
}

std::string FontHelp(const std::string &input, Audience audience)
{
    return "install it, or " +
           (audience == Audience::Fonts ? "choose another with --font-map" : "see vx fonts " + input);
}

} // namespace

std::string UnconfinedText(const Confinement &confinement)
{
    std::string text;
    if (!confinement.byLandlock)
        text = fmt::format("no sandbox for files, no Landlock in this kernel ({})",
                           SystemText(confinement.landlockError));
    if (!confinement.bySeccomp)
        text +=
            fmt::format("{} calls, no seccomp in this kernel ({})",
                        text.empty() ? "no sandbox for" : "; nor for", SystemText(confinement.seccompError));
    return text;
}

Summary Summarise(const std::string &input, const Result &result, const Telling &telling)
{
    Summary summary;
    summary.status = StatusOf(result.fault.kind);
    const bool isOfOutput = IsOfOutput(result.fault.kind);
    if (isOfOutput)
        summary.subject = OutputName(result.output.empty() ? "-" : result.output);
    if (result.fault)
        summary.error = isOfOutput ? OutputText(result, telling) : DocumentText(input, result, telling);
    summary.warnings = ListWarnings(result.outcome, FontHelp(input, telling.audience));
    const auto warnOmitted = [&summary](uint32_t count, const char *what) {
        if (count > 0)
            summary.warnings.push_back(fmt::format("{} more {} are not told of", count, what));
    };
    warnOmitted(result.omitted.reports, "problems");
    warnOmitted(result.omitted.fonts, "fonts");
    if (summary.status == Status::Done && telling.isStrict && !summary.warnings.empty())
        summary.status = Status::Warned;
    return summary;
}

void Tell(const std::string &input, const Result &result, const Summary &summary, Messages *messages)
{
    messages->EraseProgress();
    if (result.isRead && !result.confinement.IsWhole() && result.fault.kind != FaultKind::NotConfined)
        messages->Note(UnconfinedText(result.confinement) +
                       ": documents are read all the same, --require-sandbox refuses");
    for (const std::string &warning : summary.warnings)
        messages->Warning(InputName(input), warning);
    if (!summary.error.empty())
        messages->Error(summary.subject.empty() ? InputName(input) : summary.subject, summary.error);
    const Counts &counts = result.outcome.counts;
    for (const std::string &output : result.written)
        messages->Detail(OutputName(output),
                         fmt::format("written, {} fills, {} strokes, {} clips, {} path segments",
                                     counts.fills, counts.strokes, counts.clips, counts.segments));
}

std::string InputName(const std::string &input)
{
    return input == "-" ? "standard input" : input;
}

std::string OutputName(const std::string &output)
{
    return output == "-" ? "standard output" : output;
}

} // namespace vxhost
