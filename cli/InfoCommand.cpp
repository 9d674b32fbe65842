#include "cli/InfoCommand.h"

#include "cli/InfoText.h"
#include "cli/OutputFile.h"
#include "cli/Session.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <unistd.h>

namespace vxhost
{

namespace
{

// Draws nothing: what is counted is counted on the way to it.
class NoDevice final : public Device
{
  public:
    void BeginPage(const Page &) override {}
    void Save() override {}
    void Restore() override {}
    void ClipPath(const Path &) override {}
    void FillPath(const Path &, const Paint &) override {}
    void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
    std::string EndPage() override { return ""; }
};

void Inspect(const Plugin &plugin, const Document &document, const ParseOptions &parse, Finding *finding)
{
    finding->outcome = plugin.ReadInfo(document, parse);
    if (finding->outcome.result != kVXOk)
        return;
    Page page;
    page.box = {0, 0, 1, 1}; // of no interest to a device that draws nothing; the document's may be empty
    NoDevice device;
    finding->outcome = plugin.Draw(document, parse, page, device);
}

} // namespace

InfoCommand::InfoCommand(CLI::App *command) : common_("60")
{
    command->add_flag("--json", json_, "one JSON object a document, each on a line of its own");
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx info harp.vx\n"
                    "  vx info --json *.vx | jq -r 'select(.vx) | .file'");
}

Status InfoCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    Session session(options, messages);
    Status worst = Status::Done;
    for (const std::string &input : options.inputs) {
        const Verdict verdict = session.Interpret(input, {}, Inspect);
        worst = Worst(worst, verdict.status);
        if (!WriteAll(STDOUT_FILENO, json_ ? InfoJson(input, verdict) : InfoText(input, verdict))) {
            if (errno != EPIPE)
                messages->Error("standard output", "cannot be written, " + SystemText(errno));
            return Worst(worst, Status::OutputFailed);
        }
    }
    return worst;
}

} // namespace vxhost
