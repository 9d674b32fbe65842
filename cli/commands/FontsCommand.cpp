#include "cli/commands/FontsCommand.h"

#include "cli/commands/Session.h"
#include "cli/report/FontsReport.h"
#include "cli/report/StandardStreams.h"

#include <CLI/CLI.hpp>

namespace vxhost
{

FontsCommand::FontsCommand(CLI::App *command)
{
    command->add_flag("--list", list_, "list the fonts that there are, instead of those of documents");
    command->add_flag("--json", json_, "one JSON object a document, or a font, each on a line of its own");
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx fonts map.vx\n"
                    "  vx fonts --list --font-dir fonts\n"
                    "  vx fonts --json *.vx | jq -r '.fonts[] | select(.match == \"substitute\") | .asked'");
}

Status FontsCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read(!list_);
    if (list_ && !options.inputs.empty())
        throw UsageError("--list and FILE: give one of them");
    Session session(options, CommandKind::Fonts, messages);
    if (list_)
        return PrintResult(json_ ? FontListJson(session.Fonts()) : FontListText(session.Fonts()), messages)
                   ? Status::Done
                   : Status::OutputFailed;
    return session.PrintEach(options.inputs, json_ ? FontsJson : FontsText);
}

} // namespace vxhost
