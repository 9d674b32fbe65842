#include "cli/commands/TraceCommand.h"

#include "cli/commands/Session.h"
#include "cli/report/LineWriter.h"
#include "host/trace/TraceJson.h"
#include "host/trace/TraceLines.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <unistd.h>

namespace vxhost
{

// There is no time limit unless somebody asks for one: a person with a pager may be reading.
TraceCommand::TraceCommand(CLI::App *command) : common_("0")
{
    command->add_flag("--json", json_, "one JSON object a line: {\"call\":\"moveto\",\"args\":[1,2.5]}");
    command->add_flag("--structure", structure_,
                      "layers, groups, spot inks and texts too, where they stand among the calls");
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx trace harp.vx | less\n"
                    "  vx trace --json harp.vx | jq -r .call | sort | uniq -c");
}

Status TraceCommand::Run(Messages *messages) const
{
    CommonOptions options = common_.Read();
    if (isatty(STDOUT_FILENO) == 1)
        options.showProgress = false; // it would stand among the lines
    if (options.inputs.size() > 1)
        throw UsageError("more than one FILE: trace one at a time");
    options.reading.readsTexts = structure_;
    Session session(options, CommandKind::Trace, messages);
    const bool json = json_;
    const Pass trace = [json, structure = structure_](Reading &reading) {
        LineWriter lines;
        const LineSink sink = {[](void *to, std::string_view line) {
                                   static_cast<LineWriter *>(to)->Add(line);
                                   static_cast<LineWriter *>(to)->Add("\n");
                               },
                               &lines};
        std::unique_ptr<TraceWriter> writer;
        if (json)
            writer = std::make_unique<TraceJson>(sink);
        else
            writer = std::make_unique<TraceLines>(sink);
        Outcome outcome = reading.Trace(*writer, structure);
        if (const Failure failure = lines.Finish(); !outcome.failure)
            outcome.failure = failure;
        return outcome;
    };
    JobTask task;
    task.input = options.inputs[0];
    task.needsFonts = true; // without them the document might be read twice, and its calls printed twice
    task.makePasses = [&trace](Failure *) { return std::vector{trace}; };
    return session.Run(std::move(task), {STDOUT_FILENO});
}

} // namespace vxhost
