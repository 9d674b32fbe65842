#include "cli/commands/InfoCommand.h"

#include "cli/commands/Session.h"
#include "cli/report/InfoReport.h"

#include <CLI/CLI.hpp>

namespace vxhost
{

InfoCommand::InfoCommand(CLI::App *command)
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
    Session session(options, CommandKind::Info, messages);
    return session.PrintEach(options.inputs, json_ ? InfoJson : InfoText);
}

} // namespace vxhost
