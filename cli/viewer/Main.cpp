// vx-viewer: the program behind vx view, which becomes it. Serves the viewer and the drawings that are named to the user's browser.
//
// It is a program of its own for what it links: the command begins without that.

#include "cli/options/CommonOptions.h"
#include "cli/report/StandardStreams.h"
#include "cli/viewer/Server.h"
#include "jobs/Interrupt.h"
#include "jobs/Sandbox.h"
#include "library/OptionValues.h"

#include <fmt/format.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr std::string_view kOpens = "open", kOpensNot = "none";

// The words are the viewer's folder, the port, whether to open a browser, and the inputs.
Status View(int argc, char **argv, Messages *messages)
{
    const std::optional<int32_t> port = argc < 4 ? std::nullopt : ReadInteger(argv[2]);
    const std::string_view browsers = argc < 4 ? "" : argv[3];
    if (!port || *port < 0 || *port > std::numeric_limits<uint16_t>::max() ||
        (browsers != kOpens && browsers != kOpensNot))
        throw UsageError("vx-viewer is part of vx, which starts it: to see drawings, run vx view");
    Site site;
    site.AddViewer(argv[1]);
    Status worst = Status::Done;
    for (int i = 4; i < argc; ++i)
        worst = Worst(worst, site.AddDrawings(argv[i], messages));
    if (argc > 4 && !site.HasDrawings())
        return worst;
    site.ListDrawings();

    Server server(site, static_cast<uint16_t>(*port));
    CatchInterrupts(static_cast<int>(worst)); // which is how people end it
    if (!PrintResult(server.Address() + "\n", messages))
        return Status::OutputFailed;
    std::optional<Browser> browser;
    if (browsers == kOpens)
        browser.emplace(server.Address());
    // A kernel that cannot do this serves pages all the same: no drawing is interpreted here.
    (void)EnterSandbox(FileRules(), CallRules(SystemCalls::OfServing));
    if (server.Serve(browser ? &*browser : nullptr, messages))
        return worst;
    messages->Error(
        "", "no browser has opened the page: run it with --no-browser, and open the address that it prints");
    return Worst(worst, Status::OutputFailed);
}

} // namespace

} // namespace vxhost

int main(int argc, char **argv)
{
    using namespace vxhost;
    Messages messages;
    Status status = Status::OutputFailed;
    try {
        if (PrepareStreams()) {
            CatchInterrupts(static_cast<int>(Status::Interrupted));
            status = View(argc, argv, &messages);
        }
    } catch (const EarlyEnd &error) {
        messages.Error("", error.what());
        status = error.status;
    } catch (const UsageError &error) {
        messages.Error("", error.what());
        status = Status::Usage;
    } catch (const std::bad_alloc &) {
        messages.Error("", "not enough memory to begin: close other programs");
        status = Status::LimitHit;
    } catch (const std::exception &error) {
        messages.Error("", error.what());
        status = Status::InputFailed;
    }
    // A confined process may not do what sanitizers do behind main.
    _exit(static_cast<int>(status));
}
