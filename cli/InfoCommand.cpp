#include "cli/InfoCommand.h"

#include "cli/InfoText.h"
#include "cli/Session.h"
#include "cli/StandardStreams.h"

#include <CLI/CLI.hpp>

namespace vxhost
{

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
        const Verdict verdict = session.Interpret(input, {}, Look);
        worst = Worst(worst, verdict.status);
        if (!PrintResult(json_ ? InfoJson(input, verdict) : InfoText(input, verdict), messages))
            return Worst(worst, Status::OutputFailed);
    }
    return worst;
}

} // namespace vxhost
