// What is told of each result: each kind of fault has its words, its status and a next step.
#include "cli/report/Summary.h"

#include "library/Warnings.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

constexpr CommandKind kCommandKinds[] = {CommandKind::Info,   CommandKind::Fonts, CommandKind::Trace,
                                         CommandKind::Render, CommandKind::Merge, CommandKind::Profile,
                                         CommandKind::Batch,  CommandKind::Check};

struct FaultCase {
    FaultKind kind;
    Status status;
    std::string_view text; // for vx render
    bool isOfOutput = false;
};

// In the order of the kinds: a new one needs its row.
constexpr FaultCase kFaults[] = {
    {FaultKind::CannotOpen, Status::InputFailed, "why: what to do"},
    {FaultKind::PipeTooSlow, Status::LimitHit,
     "not read to its end after 2.5 s: allow more with --max-time, or see what writes it"},
    {FaultKind::PipeTooLong, Status::LimitHit,
     "is longer than the 64 MiB of memory that it may take: allow more with --max-memory, or name a file"},
    {FaultKind::Changed, Status::InputFailed,
     "changed while it was read, nothing written: try again when nothing writes to it"},
    {FaultKind::NotADrawing, Status::InputFailed,
     "not a VX document, first line is \"GIF89a\": drawings start with \"%!PS-Tavro-\""},
    {FaultKind::Malformed, Status::InputFailed,
     "malformed near byte 70 of 100, nothing written: vx trace a.vx shows how far it got"},
    {FaultKind::LacksFont, Status::InputFailed,
     "no font \"Futura\", nothing written: install it, or go without --missing-fonts fail"},
    {FaultKind::PluginFailed, Status::InputFailed,
     "the plug-in gave result -9, nothing written: see whether --plugin names the right one"},
    {FaultKind::Unfit, Status::InputFailed, "why: what to do"},
    {FaultKind::OutOfTime, Status::LimitHit,
     "not done after 2.5 s, nothing written: allow more with --max-time"},
    {FaultKind::OutOfMemory, Status::LimitHit,
     "needs more than 64 MiB of memory, nothing written: allow more with --max-memory"},
    {FaultKind::OutOfProcessorTime, Status::LimitHit,
     "needs more processor time than ulimit -t allows, nothing written: allow more where vx is started"},
    {FaultKind::OutputTooLong, Status::LimitHit,
     "takes more than 256 MiB, nothing written: allow more with --max-output", true},
    {FaultKind::FileTooLong, Status::OutputFailed,
     "cannot be written, file too large: allow more with ulimit -f where vx is started", true},
    {FaultKind::TooLarge, Status::LimitHit, "why: what to do"},
    {FaultKind::OutputIsFolder, Status::OutputFailed, "is a directory: name a file in it", true},
    {FaultKind::OutputIsSpecial, Status::OutputFailed, "is why: what to do, not a file: name a file", true},
    {FaultKind::NobodyReads, Status::OutputFailed, "is a pipe that nobody reads: start its reader first",
     true},
    {FaultKind::NoFolder, Status::OutputFailed, "no such folder: make it first", true},
    {FaultKind::OutputTaken, Status::OutputFailed,
     "another document of this run was written to it: name each after its input, as '{dir}/{stem}.{ext}'",
     true},
    {FaultKind::CannotWrite, Status::OutputFailed,
     "cannot be written, file too large: choose another place with -o", true},
    {FaultKind::NoTemporaryFile, Status::OutputFailed,
     "no temporary file in \"why: what to do\", file too large: name another folder in TMPDIR", true},
    {FaultKind::ReaderLeft, Status::OutputFailed, "", true}, // as head does, which is no news
    {FaultKind::NoWorker, Status::InputFailed, "no worker process, file too large: try again later"},
    {FaultKind::Killed, Status::LimitHit,
     "the worker process was killed, as the system does when memory runs out, nothing written: close other "
     "programs, "
     "or allow it less with --max-memory"},
    {FaultKind::Crashed, Status::WorkerCrashed,
     "the worker process crashed, why: what to do, nothing written: keep the document and report it"},
    {FaultKind::BadAnswer, Status::WorkerCrashed,
     "the worker process answered nonsense, nothing written: keep the document and report it"},
    {FaultKind::NotConfined, Status::InputFailed,
     "not read, there is no sandbox for files, no Landlock in this kernel (function not implemented): take a "
     "kernel "
     "that has it, or go without --require-sandbox"},
};

Result ResultOf(FaultKind kind)
{
    Result result;
    result.fault = {kind, "why: what to do", EFBIG};
    result.size = 100;
    result.header.firstLine = "GIF89a";
    result.outcome.bytesRead = 70;
    result.outcome.bytesTotal = result.outcome.bytesUnpacked = 100;
    result.outcome.result = -9;
    result.outcome.lackedFont = "Futura";
    result.confinement = {false, true, ENOSYS, 0};
    return result;
}

SummaryOptions OptionsFor(CommandKind command)
{
    SummaryOptions options;
    options.command = command;
    options.limits.seconds = 2.5;
    options.limits.memory = int64_t{64} << 20;
    return options;
}

std::string ErrorOf(const Result &result, CommandKind command)
{
    return Summarise("a.vx", result, OptionsFor(command)).error;
}

TEST(Summary, HasWordsAndAStatusForEachKindOfFault)
{
    int next = static_cast<int>(FaultKind::None) + 1;
    for (const FaultCase &fault : kFaults) {
        EXPECT_EQ(static_cast<int>(fault.kind), next++);
        const Summary summary = Summarise("a.vx", ResultOf(fault.kind), OptionsFor(CommandKind::Render));
        EXPECT_EQ(summary.error, fault.text);
        EXPECT_EQ(summary.status, fault.status) << fault.text;
        EXPECT_EQ(summary.subject, fault.isOfOutput ? "standard output" : "") << fault.text;
        EXPECT_FALSE(summary.IsDone());
    }
    EXPECT_EQ(next, static_cast<int>(FaultKind::NotConfined) + 1);
}

// "what is wrong: what to do", in one line without a full stop, to whomever.
TEST(Summary, AlwaysNamesTheNextStep)
{
    for (const FaultCase &fault : kFaults) {
        for (const CommandKind command : kCommandKinds) {
            for (const bool isOfFontListing : {false, true}) {
                Result result = ResultOf(fault.kind);
                result.fault.isOfFontListing = isOfFontListing && !fault.isOfOutput;
                const std::string text = ErrorOf(result, command);
                if (fault.kind == FaultKind::ReaderLeft) {
                    EXPECT_EQ(text, "");
                    continue;
                }
                EXPECT_NE(text.find(": "), std::string::npos) << text;
                EXPECT_EQ(text.find('\n'), std::string::npos) << text;
                EXPECT_FALSE(text.ends_with('.') || text.ends_with(' ')) << text;
                EXPECT_FALSE(text.starts_with(' ') || text.starts_with(',')) << text;
            }
        }
    }
}

TEST(Summary, TellsWhereADocumentIsMalformed)
{
    Result result = ResultOf(FaultKind::Malformed);
    result.outcome.fault = {214, 9, "\"c\" wants 6 numbers, has 5"};
    EXPECT_EQ(ErrorOf(result, CommandKind::Render),
              "malformed, line 214, column 9: \"c\" wants 6 numbers, has 5, nothing written: "
              "vx trace a.vx shows how far it got, --salvage draws the rest");
    EXPECT_EQ(ErrorOf(result, CommandKind::Text),
              "malformed, line 214, column 9: \"c\" wants 6 numbers, has 5: "
              "vx trace a.vx shows how far it got, --salvage reads the rest");
    result.outcome.fault.column = 0;
    EXPECT_EQ(ErrorOf(result, CommandKind::Info),
              "malformed, line 214: \"c\" wants 6 numbers, has 5: vx trace a.vx shows how far it got");
}

TEST(Summary, IsNeverOfAWholeDrawingWhereSomethingIsLeftOut)
{
    Result result;
    result.outcome.headerAccepted = true;
    EXPECT_EQ(Summarise("a.vx", result, OptionsFor(CommandKind::Render)).status, Status::Done);
    result.outcome.salvage.faults = 1;
    EXPECT_EQ(Summarise("a.vx", result, OptionsFor(CommandKind::Render)).status, Status::Warned);
    result.outcome.salvage = {0, {}, true};
    EXPECT_EQ(Summarise("a.vx", result, OptionsFor(CommandKind::Render)).status, Status::Warned);
}

TEST(Summary, SendsNobodyToTheCommandThatHeIsAt)
{
    Result result = ResultOf(FaultKind::Malformed);
    result.outcome.fonts.push_back({"Futura", "Jost", "", FontMatch::Substitute, 1, 4, 0});
    const std::pair<CommandKind, std::string_view> kCommands[] = {{CommandKind::Info, "vx info"},
                                                                  {CommandKind::Fonts, "vx fonts"},
                                                                  {CommandKind::Trace, "vx trace"},
                                                                  {CommandKind::Render, "vx render"},
                                                                  {CommandKind::Batch, "vx batch"}};
    for (const auto &[kind, command] : kCommands) {
        const Summary summary = Summarise("a.vx", result, OptionsFor(kind));
        EXPECT_EQ(summary.error.find(command), std::string::npos) << summary.error;
        ASSERT_EQ(summary.warnings.size(), 1U);
        EXPECT_EQ(summary.warnings[0].find(command), std::string::npos) << summary.warnings[0];
        EXPECT_EQ(summary.warnings[0].find("vx fonts a.vx") == std::string::npos, kind == CommandKind::Fonts);
    }
}

TEST(Summary, SaysThatNothingIsWrittenWhereSomethingWouldBe)
{
    for (const CommandKind command : kCommandKinds) {
        const bool writes = command == CommandKind::Render || command == CommandKind::Batch;
        EXPECT_EQ(ErrorOf(ResultOf(FaultKind::OutOfTime), command).find("nothing written") !=
                      std::string::npos,
                  writes);
    }
    EXPECT_EQ(ErrorOf(ResultOf(FaultKind::OutOfTime), CommandKind::Merge),
              "not done after 2.5 s, its page is left out: allow more with --max-time");
}

TEST(Summary, QuotesNoForeignFileWhoseResultsGoFar)
{
    const Result result = ResultOf(FaultKind::NotADrawing);
    EXPECT_NE(ErrorOf(result, CommandKind::Info).find("GIF89a"), std::string::npos);
    EXPECT_EQ(ErrorOf(result, CommandKind::Batch).find("GIF89a"), std::string::npos);
    EXPECT_NE(ErrorOf(result, CommandKind::Batch).find("--manifest"), std::string::npos);
}

TEST(Summary, TellsWhatKeptFontsFromBeingListed)
{
    Result result = ResultOf(FaultKind::OutOfTime);
    result.fault.isOfFontListing = true;
    EXPECT_EQ(ErrorOf(result, CommandKind::Render), "the fonts of this machine are not listed after 2.5 s, "
                                                    "nothing written: look for a pipe or a circle of "
                                                    "links in their folders, or allow more with --max-time");
    SummaryOptions endless = OptionsFor(CommandKind::Trace);
    endless.limits.seconds = 0;
    EXPECT_EQ(
        Summarise("a.vx", result, endless).error,
        "the fonts of this machine are not listed after 60 s: look for a pipe or a circle of links in their "
        "folders, or allow more with --max-time");
    result.fault.kind = FaultKind::Crashed;
    EXPECT_EQ(ErrorOf(result, CommandKind::Info), "the process that lists the fonts of this machine crashed, "
                                                  "why: what to do: leave out the folder with the "
                                                  "damaged font, or all with --no-system-fonts");
    result.fault = {FaultKind::BadAnswer, "", 0, true};
    EXPECT_EQ(ErrorOf(result, CommandKind::Info), "the process that lists the fonts of this machine crashed: "
                                                  "leave out the folder with the damaged font, or "
                                                  "all with --no-system-fonts");
}

TEST(Summary, TellsHowToGetAWorker)
{
    Result result = ResultOf(FaultKind::NoWorker);
    result.fault.error = ENOSYS;
    EXPECT_EQ(ErrorOf(result, CommandKind::Info),
              "no worker process, function not implemented: mount /proc where vx is started");
}

TEST(Summary, OfAProfileAsksForAnotherOne)
{
    for (const FaultKind kind : {FaultKind::Crashed, FaultKind::BadAnswer}) {
        const std::string text = ErrorOf(ResultOf(kind), CommandKind::Profile);
        EXPECT_TRUE(text.ends_with(": give another profile and report it")) << text;
    }
}

TEST(Summary, NamesTheOutputThatAFaultIsAbout)
{
    Result result = ResultOf(FaultKind::NoFolder);
    result.output = "none/a.png";
    EXPECT_EQ(Summarise("a.vx", result, OptionsFor(CommandKind::Render)).subject, "none/a.png");
    EXPECT_EQ(ErrorOf(ResultOf(FaultKind::CannotWrite), CommandKind::Trace),
              "cannot be written, file too large: choose another place");
}

TEST(Summary, WarnsOfWhatIsLeftOutAndIsStrictAboutIt)
{
    Result result;
    result.omitted = {2, 3, 4, 5, 6};
    const Summary summary = Summarise("a.vx", result, OptionsFor(CommandKind::Info));
    EXPECT_EQ(summary.warnings,
              (std::vector<std::string>{"2 more problems are not told of", "3 more fonts are not told of"}));
    EXPECT_EQ(summary.status, Status::Done);
    SummaryOptions strict = OptionsFor(CommandKind::Info);
    strict.isStrict = true;
    EXPECT_EQ(Summarise("a.vx", result, strict).status, Status::Warned);
    result.omitted = {0, 0, 4, 5, 6}; // names of the header, which nobody is warned of
    EXPECT_EQ(Summarise("a.vx", result, strict).status, Status::Done);
}

TEST(Summary, OfACheckLeavesWarningsToItsFindings)
{
    Result result;
    result.isRead = true;
    result.outcome.headerAccepted = true;
    result.outcome.damage = "the gzip data end early";
    SummaryOptions options;
    options.isStrict = true;
    EXPECT_FALSE(Summarise("a.vx", result, options).warnings.empty());
    options.command = CommandKind::Check;
    EXPECT_TRUE(Summarise("a.vx", result, options).warnings.empty());
    EXPECT_EQ(Summarise("a.vx", result, options).status, Status::Done);
    result.fault = {FaultKind::Malformed}; // there are no findings
    EXPECT_FALSE(Summarise("a.vx", result, options).warnings.empty());
}

TEST(Summary, SaysWhatDoesNotConfine)
{
    EXPECT_EQ(UnconfinedText({true, true, 0, 0}), "");
    EXPECT_EQ(UnconfinedText({false, true, ENOSYS, 0}),
              "no sandbox for files, no Landlock in this kernel (function not implemented)");
    EXPECT_EQ(UnconfinedText({true, false, 0, EINVAL}),
              "no sandbox for calls, no seccomp in this kernel (invalid argument)");
    EXPECT_EQ(UnconfinedText({false, false, ENOSYS, EINVAL}),
              "no sandbox for files, no Landlock in this kernel (function not implemented); nor for calls, "
              "no seccomp in "
              "this kernel (invalid argument)");
}

} // namespace
} // namespace vxhost
