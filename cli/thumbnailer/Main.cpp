// vx-thumbnailer: makes a small picture of a drawing for a file manager.
//
// It is not for people: it takes what file managers give, and reads documents that nobody has looked at yet. So it has no options,
// gives up soon, and reads no document where its worker cannot be confined.

#include "cli/report/Messages.h"
#include "cli/report/StandardStreams.h"
#include "cli/report/Summary.h"
#include "jobs/Interrupt.h"
#include "jobs/OutputFile.h"
#include "jobs/Rendering.h"
#include "library/LinkedPlugin.h"
#include "library/OptionValues.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr const char *kUsage =
    "usage: vx-thumbnailer IN OUT SIZE\n"
    "Writes a PNG of at most SIZE by SIZE pixels of the drawing IN into the file OUT.\n";
constexpr int32_t kMostPixels = 4096;
constexpr int32_t kSeconds = 1, kMostSeconds = 3600;
constexpr const char *kSecondsVariable = "VX_THUMBNAILER_SECONDS"; // file managers give no options
constexpr int64_t kMostMemory = int64_t{512} << 20;

// Writes into the file that has the name: who asked for the picture may have it open, and would go on to see the old one if another
// took its name.
int CopyInto(const std::string &path, int picture)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666);
    if (file < 0)
        return errno;
    std::array<char, 1 << 16> buffer;
    ssize_t got = 0;
    off_t at = 0;
    while ((got = pread(picture, buffer.data(), buffer.size(), at)) > 0 &&
           WriteAll(file, {buffer.data(), static_cast<size_t>(got)}))
        at += got;
    const int failure = got == 0 ? 0 : errno;
    return close(file) != 0 && failure == 0 ? errno : failure;
}

// Returns how long a drawing may take. Throws OptionError.
int32_t ReadSeconds()
{
    const char *text = std::getenv(kSecondsVariable);
    const std::optional<int32_t> seconds = text == nullptr ? kSeconds : ReadInteger(text);
    if (!seconds || *seconds < 1 || *seconds > kMostSeconds)
        throw OptionError(
            fmt::format("{} {}: not a whole number of seconds from 1 to {}: give one, or unset it",
                        kSecondsVariable, text, kMostSeconds));
    return *seconds;
}

Status MakeThumbnail(const std::string &input, const std::string &output, int32_t size, Messages *messages)
{
    EngineOptions options;
    options.plugin = MakeLinkedPlugin();
    Settings settings;
    settings.png.fit = size;
    settings.png.memoryLimit = kMostMemory;
    settings.seconds = ReadSeconds();
    settings.memory = kMostMemory;
    options.reading = ReadingOptionsOf(settings);
    options.limits = {settings.seconds, settings.memory, settings.output};
    options.mustBeConfined = true;
    const SummaryOptions words = {CommandKind::Render, options.limits};
    Engine engine(std::move(options));

    int failure = 0;
    RenderTask task = {input, {}, settings, FileKinds::Regular};
    task.rules.staysInMemory = true;
    task.outputs.push_back(
        {FindFormat("png"), "", [&](int picture) { failure = CopyInto(output, picture); }});
    Rendering rendering(std::move(task), &engine);
    rendering.Wait();
    const Result result = rendering.Finish();
    const Summary summary = Summarise(input, result, words);
    std::string error = summary.error;
    // The advice is about options, of which there are none here.
    if (summary.status == Status::LimitHit || result.fault.kind == FaultKind::NotConfined)
        error = error.substr(0, error.rfind(": ")) + ": draw it with vx render, which has options for that";
    if (!error.empty())
        messages->Error(summary.subject.empty() ? input : summary.subject, error);
    if (failure == 0)
        return summary.status;
    messages->Error(output, "cannot be written, " + SystemText(failure));
    return Status::OutputFailed;
}

} // namespace

} // namespace vxhost

int main(int argc, char **argv)
{
    using namespace vxhost;
    if (!PrepareStreams())
        return static_cast<int>(Status::OutputFailed);
    Messages messages;
    CatchInterrupts(static_cast<int>(Status::Interrupted));
    if (argc == 2 && std::string_view(argv[1]) == "--help")
        return std::fputs(kUsage, stdout) < 0 ? static_cast<int>(Status::OutputFailed) : 0;
    const std::optional<int32_t> size = argc == 4 ? ReadInteger(argv[3]) : std::nullopt;
    if (!size || *size < 1 || *size > kMostPixels) {
        std::fputs(kUsage, stderr);
        return static_cast<int>(Status::Usage);
    }
    try {
        return static_cast<int>(MakeThumbnail(argv[1], argv[2], *size, &messages));
    } catch (const OptionError &error) {
        messages.Error("", error.what());
        return static_cast<int>(Status::Usage);
    } catch (const std::exception &error) {
        messages.Error(argv[1], error.what());
        return static_cast<int>(Status::InputFailed);
    }
}
