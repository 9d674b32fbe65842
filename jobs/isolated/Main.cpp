// vx-isolated: the helper program of libvx. Renders one drawing as vx render does, for vx_render_isolated.
//
// The request says all that there is to know; the drawing is standard input, the output leaves through standard output once it
// is whole, and what became of the drawing through a third descriptor.

#include "host/FileReading.h"
#include "jobs/OutputFile.h"
#include "jobs/Rendering.h"
#include "library/LinkedPlugin.h"
#include "library/pipe/Answer.h"
#include "library/pipe/IsolatedRequest.h"
#include "library/pipe/WorkerFrames.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr int kNoRequest = 2;

std::optional<IsolatedRequest> TakeRequest()
{
    HeldBytes bytes;
    if (bytes.ReadAll(kHelperRequest, {kMaxRequest, 0}) != ReadEnd::Whole)
        return std::nullopt;
    close(kHelperRequest);
    std::optional<IsolatedRequest> request =
        ReadRequest({reinterpret_cast<const char *>(bytes.Get().data()), bytes.Get().size()});
    return request && request->version == VX_VERSION ? std::move(request) : std::nullopt;
}

Settings SettingsOf(const IsolatedRequest &request)
{
    std::map<std::string, ProfileBytes> profiles;
    for (const auto &[name, bytes] : request.profiles) {
        const auto *first = reinterpret_cast<const std::byte *>(bytes.data());
        profiles[name] = std::make_shared<const std::vector<std::byte>>(first, first + bytes.size());
    }
    OptionTexts options;
    for (const auto &[name, value] : request.options)
        options.Set(name, value);
    return options.Read(profiles);
}

void SendProgress(int percent)
{
    const char frame[] = {kProgressFrame, static_cast<char>(percent)};
    (void)WriteAll(kHelperAnswer, {frame, sizeof frame});
}

Result Render(const IsolatedRequest &request)
{
    RenderTask task = {"-", {{FindFormat(request.format), "-"}}, SettingsOf(request)};
    const Settings &settings = task.settings;
    EngineOptions options;
    options.plugin = MakeLinkedPlugin();
    options.fonts = {request.useSystemFonts, request.fontFolders};
    options.reading = ReadingOptionsOf(settings);
    options.reading.served.insert(request.served.begin(), request.served.end());
    options.limits = {settings.seconds, settings.memory, settings.output};
    options.mustBeConfined = request.mustBeConfined;
    options.onProgress = [](const std::string &, int percent) { SendProgress(percent); };
    const WorkerLimits limits = options.limits;
    Engine engine(std::move(options));
    Rendering rendering(std::move(task), &engine);
    rendering.Wait();
    Result result = rendering.Finish();
    if (result.fault.kind == FaultKind::OutOfMemory)
        result.fault.text = CallersMemoryLimit(limits); // which our caller may not have any more
    return result;
}

int Run()
{
    // A reader that leaves and a file that may not grow are errors of write, not ends of the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const std::optional<IsolatedRequest> request = TakeRequest();
    if (!request) {
        (void)std::fputs(
            "vx-isolated: part of libvx, which starts it with a request of its own version: to render "
            "drawings, run vx\n",
            stderr);
        return kNoRequest;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != request->caller)
        return kNoRequest;
    // Outputs are kept there until they are whole, too.
    (void)setenv("TMPDIR", request->temporaryFolder.c_str(), 1);
    const std::string answer = WriteResult(Render(*request));
    const bool isTold =
        WriteAll(kHelperAnswer, AnswerFrameHead(answer.size())) && WriteAll(kHelperAnswer, answer);
    return isTold ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace vxhost

int main()
{
    try {
        return vxhost::Run();
    } catch (const std::exception &) {
        return EXIT_FAILURE; // which libvx tells
    }
}
