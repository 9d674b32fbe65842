#include "cli/commands/TraceCommand.h"

#include "cli/commands/Session.h"
#include "host/trace/TraceJson.h"
#include "host/trace/TraceLines.h"
#include "jobs/OutputFile.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <memory>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kWriteSize = size_t{1} << 16;

// Writes lines to standard output in large pieces. After a failure it drops the rest.
class LineWriter
{
  public:
    LineSink Sink() { return {AddLine, this}; }

    // Returns the first failure.
    Failure Finish()
    {
        Flush();
        return failure_;
    }

  private:
    static void AddLine(void *to, std::string_view text)
    {
        auto *writer = static_cast<LineWriter *>(to);
        writer->buffer_ += text;
        writer->buffer_ += '\n';
        if (writer->buffer_.size() >= kWriteSize)
            writer->Flush();
    }

    void Flush()
    {
        if (!failure_ && !WriteAll(STDOUT_FILENO, buffer_))
            failure_ = {FailureKind::CannotWrite, SystemText(errno), errno};
        buffer_.clear();
    }

    std::string buffer_;
    Failure failure_;
};

} // namespace

// There is no time limit unless somebody asks for one: a person with a pager may be reading.
TraceCommand::TraceCommand(CLI::App *command) : common_("0")
{
    command->add_flag("--json", json_, "one JSON object a line: {\"call\":\"moveto\",\"args\":[1,2.5]}");
    command->add_flag("--structure", structure_,
                      "layers, groups and spot inks too, where they stand among the calls");
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
    Session session(options, CommandKind::Trace, messages);
    const bool json = json_;
    const Pass trace = [json, structure = structure_](Reading &reading) {
        LineWriter lines;
        std::unique_ptr<TraceWriter> writer;
        if (json)
            writer = std::make_unique<TraceJson>(lines.Sink());
        else
            writer = std::make_unique<TraceLines>(lines.Sink());
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
