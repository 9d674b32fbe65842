#include "cli/report/Messages.h"

#include "host/reading/Utf8.h"
#include "jobs/OutputFile.h"

#include <fmt/format.h>

#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kMaxSubject = 4096; // a path is never cut
constexpr size_t kMaxText = 1000;
constexpr size_t kMaxRemembered = 1000; // lines

// Writes it in one call, so that lines of several processes do not mix. A line that cannot be written is lost: there is
// nowhere else to tell it.
void WriteToStandardError(std::string_view text)
{
    (void)WriteAll(STDERR_FILENO, text);
}

std::string LineOf(std::string_view subject, std::string_view text)
{
    std::string line = "vx: ";
    if (!subject.empty())
        line += Printable(subject, kMaxSubject) + ": ";
    return line + Printable(text, kMaxText) + "\n";
}

} // namespace

void Messages::Error(std::string_view subject, std::string_view text)
{
    Say(LineOf(subject, text));
}

void Messages::Warning(std::string_view subject, std::string_view text)
{
    if (verbosity_ != Verbosity::Quiet)
        SayOnce(LineOf(subject, fmt::format("warning: {}", text)));
}

void Messages::Note(std::string_view text)
{
    if (verbosity_ != Verbosity::Quiet)
        SayOnce(LineOf("", text));
}

void Messages::Detail(std::string_view subject, std::string_view text)
{
    if (verbosity_ == Verbosity::Detailed)
        SayOnce(LineOf(subject, text));
}

void Messages::SayOnce(const std::string &line)
{
    if (said_.size() >= kMaxRemembered)
        said_.clear();
    if (said_.insert(line).second)
        Say(line);
}

void Messages::Say(std::string_view line)
{
    EraseProgress();
    WriteToStandardError(line);
}

void Messages::Progress(std::string_view subject, int percent)
{
    if (showProgress_)
        Progress(fmt::format("{} {} %", Printable(subject, 60), percent));
}

void Messages::Progress(std::string_view text)
{
    if (!showProgress_)
        return;
    WriteToStandardError(fmt::format("\r\x1B[K{}", text));
    progressStands_ = true;
}

void Messages::EraseProgress()
{
    if (progressStands_)
        WriteToStandardError("\r\x1B[K");
    progressStands_ = false;
}

} // namespace vxhost
