#include "cli/commands/InfoCommand.h"

#include "cli/commands/Session.h"
#include "cli/report/InfoText.h"
#include "cli/report/StandardStreams.h"

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
    Session session(options, Audience::Info, messages);
    Status worst = Status::Done;
    for (const std::string &input : options.inputs) {
        const auto [result, summary] = session.Read(input, LookThrough);
        worst = Worst(worst, summary.status);
        if (!PrintResult(json_ ? InfoJson(input, result, summary.error)
                               : InfoText(input, result, summary.error),
                         messages))
            return Worst(worst, Status::OutputFailed);
    }
    return worst;
}

} // namespace vxhost
