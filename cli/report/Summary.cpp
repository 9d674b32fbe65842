#include "cli/report/Summary.h"

#include "library/Decimal.h"
#include "library/OptionValues.h"
#include "library/Warnings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace vxhost
{

namespace
{

// Says what an error cost.
std::string_view LostText(CommandKind command)
{
    if (command == CommandKind::Merge)
        return ", its page is left out";
    return command == CommandKind::Render || command == CommandKind::Batch ? ", nothing written" : "";
}

std::string MemoryText(const SummaryOptions &options, std::string_view lost)
{
    const WorkerLimits &limits = options.limits;
    if (const std::string_view callers = CallersMemoryLimit(limits); !callers.empty())
        return fmt::format("needs more memory than {} allows{}: allow more where vx is started", callers,
                           lost);
    if (limits.memory == 0)
        return fmt::format("needs more memory than there is{}: close other programs", lost);
    return fmt::format("needs more than {} of memory{}: allow more with --max-memory",
                       SizeText(limits.memory), lost);
}

// Words a crash or nonsense from a worker, which is a fault of ours.
std::string CrashText(std::string_view what, CommandKind command, std::string_view lost)
{
    return fmt::format("the worker process {}{}: {} and report it", what, lost,
                       command == CommandKind::Profile ? "give another profile" : "keep the document");
}

std::string NoDrawingText(const Result &result, CommandKind command)
{
    const bool isBatch = command == CommandKind::Batch;
    std::string text = WhyRefused(result.header, result.size, !isBatch);
    if (isBatch && result.size > 0 && result.header.refusal.empty() && !result.header.hasPrefix &&
        !result.header.epsWrapper)
        text += ", manifests come with --manifest";
    return text;
}

std::string MalformedText(const std::string &input, const Result &result, const SummaryOptions &options)
{
    const Outcome &outcome = result.outcome;
    const std::string_view lost = LostText(options.command);
    const std::string_view salvage = !CanSalvage(outcome)                    ? ""
                                     : !lost.empty()                         ? ", --salvage draws the rest"
                                     : options.command == CommandKind::Text  ? ", --salvage reads the rest"
                                     : options.command == CommandKind::Check ? ", --salvage checks the rest"
                                                                             : "";
    return fmt::format("malformed{}{}: {}{}{}", MalformedPlace(outcome), lost,
                       outcome.end.isSaid ? "" : "the file may be cut short, ",
                       options.command == CommandKind::Trace
                           ? std::string("the last calls above come just before it")
                           : fmt::format("vx trace {} shows how far it got", input),
                       salvage);
}

std::string OutputText(const Result &result, const SummaryOptions &options)
{
    const Fault &fault = result.fault;
    switch (fault.kind) {
    case FaultKind::OutputTooLong:
        return fmt::format("takes more than {}{}: allow more with --max-output",
                           SizeText(options.limits.For(result.size).output.value_or(0)),
                           LostText(options.command));
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
    case FaultKind::OutputTaken:
        return "another document of this run was written to it: name each after its input, as "
               "'{dir}/{stem}.{ext}'";
    case FaultKind::NoTemporaryFile:
        return fmt::format("no temporary file in \"{}\", {}: name another folder in TMPDIR", fault.text,
                           SystemText(fault.error));
    case FaultKind::ReaderLeft:
        return "";
    default:
        return fmt::format(
            "cannot be written, {}: choose another place{}", SystemText(fault.error),
            options.command == CommandKind::Trace || options.command == CommandKind::Text ? "" : " with -o");
    }
}

// Says why the fonts of the machine are not known; empty where that is as for a document.
std::string FontListingText(const Fault &fault, const SummaryOptions &options)
{
    const std::string_view lost = LostText(options.command);
    switch (fault.kind) {
    case FaultKind::OutOfTime:
        return fmt::format(
            "the fonts of this machine are not listed after {} s{}: look for a pipe or a circle of "
            "links in their folders, or allow more with --max-time",
            Decimal(LimitsOfListing(options.limits).seconds), lost);
    case FaultKind::Crashed:
    case FaultKind::BadAnswer:
        return fmt::format("the process that lists the fonts of this machine crashed{}{}: leave out the "
                           "folder with the damaged font, or all with --no-system-fonts",
                           fault.text.empty() ? "" : ", " + fault.text, lost);
    default:
        return "";
    }
}

// Says what any fault is about but those of outputs.
std::string DocumentText(const std::string &input, const Result &result, const SummaryOptions &options)
{
    const Fault &fault = result.fault;
    const std::string_view lost = LostText(options.command);
    const WorkerLimits &limits = options.limits;
    if (fault.isOfFontListing) {
        if (std::string text = FontListingText(fault, options); !text.empty())
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
        return NoDrawingText(result, options.command);
    case FaultKind::Malformed:
        return MalformedText(input, result, options);
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
        return MemoryText(options, lost);
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
        return CrashText("crashed, " + fault.text, options.command, lost);
    case FaultKind::BadAnswer:
        return CrashText("answered nonsense", options.command, lost);
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
    case FaultKind::OutputTaken:
    case FaultKind::CannotWrite:
    case FaultKind::NoTemporaryFile:
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
    case FaultKind::TooLarge:
    case FaultKind::Killed:
        return Status::LimitHit;
    case FaultKind::Crashed:
    case FaultKind::BadAnswer:
        return Status::WorkerCrashed;
    default:
        return IsOfOutput(kind) ? Status::OutputFailed : Status::InputFailed;
    }
}

std::string FontHelp(const std::string &input, CommandKind command)
{
    return "install it, or " +
           (command == CommandKind::Fonts ? "choose another with --font-map" : "see vx fonts " + input);
}

} // namespace

Summary Summarise(const std::string &input, const Result &result, const SummaryOptions &options)
{
    Summary summary;
    summary.status = StatusOf(result.fault.kind);
    const bool isOfOutput = IsOfOutput(result.fault.kind);
    if (isOfOutput)
        summary.subject = OutputName(result.output.empty() ? "-" : result.output);
    if (result.fault)
        summary.error = isOfOutput ? OutputText(result, options) : DocumentText(input, result, options);
    if (options.command != CommandKind::Check || result.fault) {
        summary.warnings = ListWarnings(result.outcome, FontHelp(input, options.command));
        std::ranges::move(ListOmitted(result.omitted), std::back_inserter(summary.warnings));
    }
    const bool mustWarn = result.outcome.salvage.IsAny() || (options.isStrict && !summary.warnings.empty());
    if (summary.status == Status::Done && mustWarn)
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
    if (!result.header.wrapping.empty())
        messages->Detail(InputName(input), "around the drawing: " + result.header.wrapping);
    const DateOrigin date = result.outcome.date;
    if (!result.written.empty() && (date == DateOrigin::File || date == DateOrigin::Clock))
        messages->Note(fmt::format(
            "{}: the PDF's date of creation is {}: choose another with --date{}", InputName(input),
            date == DateOrigin::File ? "the file's" : "now",
            result.header.isDateOrderOpen ? ", or say with --date-order how to read the drawing's own" : ""));
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
