#include "cli/commands/FontsCommand.h"

#include "cli/commands/Session.h"
#include "cli/report/FontsText.h"
#include "cli/report/StandardStreams.h"

#include <CLI/CLI.hpp>

namespace vxhost
{

FontsCommand::FontsCommand(CLI::App *command) : common_("60")
{
    command->add_flag("--list", list_, "the fonts that there are, instead of those of documents");
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
    Session session(options, Audience::Fonts, messages);
    if (list_)
        return PrintResult(json_ ? FontListJson(session.Fonts()) : FontListText(session.Fonts()), messages)
                   ? Status::Done
                   : Status::OutputFailed;
    Status worst = Status::Done;
    for (const std::string &input : options.inputs) {
        const auto [result, summary] = session.Read(input, LookThrough);
        worst = Worst(worst, summary.status);
        if (!PrintResult(json_ ? FontsJson(input, result, summary.error) : FontsText(input, result),
                         messages))
            return Worst(worst, Status::OutputFailed);
    }
    return worst;
}

} // namespace vxhost
