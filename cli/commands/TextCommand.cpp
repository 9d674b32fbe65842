#include "cli/commands/TextCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/LineWriter.h"
#include "host/reading/Utf8.h"
#include "library/FactsJson.h"
#include "library/Words.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

namespace vxhost
{

namespace
{

// Returns one line.
std::string TextJson(const FoundText &text, const std::string &input)
{
    nlohmann::ordered_json json;
    json["file"] = input;
    AddText(text, &json);
    return JsonLine(json);
}

// Prints the texts of a document as they come. Each line has the prefix before it.
Outcome PrintTexts(Reading &reading, const std::string &input, const std::string &prefix, bool json)
{
    LineWriter writer;
    bool isFirst = true;
    Outcome outcome = ReadWords(reading, [&](const FoundText &text) {
        if (json)
            return writer.Add(TextJson(text, input));
        if (!isFirst)
            writer.Add(prefix + "\n");
        isFirst = false;
        writer.Add(TextLines(text, prefix));
    });
    if (const Failure failure = writer.Finish(); !outcome.failure)
        outcome.failure = failure;
    return outcome;
}

} // namespace

TextCommand::TextCommand(CLI::App *command)
{
    command->add_flag("--json", json_, "one JSON object a text, each on a line of its own");
    for (const char *name : {"layers", "hide"})
        AddOption(*FindOption(name), FindOption(name)->help, &texts_, command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx text map.vx\n"
                    "  vx text *.vx | grep -i harbour\n"
                    "  vx text --json *.vx | jq -r '.lines[].runs[].font' | sort | uniq -c");
}

Status TextCommand::Run(Messages *messages) const
{
    CommonOptions options = common_.Read();
    if (isatty(STDOUT_FILENO) == 1)
        options.showProgress = false; // it would stand among the lines
    options.reading.readsTexts = true;
    const LayerChoice layers = texts_.Read().layers;
    Session session(options, CommandKind::Text, messages);
    Status worst = Status::Done;
    for (const std::string &input : options.inputs) {
        const std::string prefix =
            options.inputs.size() == 1 ? "" : Printable(InputName(input), 4096).append(":");
        JobTask task;
        task.input = input;
        task.layers = layers;
        task.needsFonts = true; // without them the document might be read twice, and its words printed twice
        task.makePasses = [&, json = json_](Failure *) {
            return std::vector<Pass>{
                [&, json](Reading &reading) { return PrintTexts(reading, input, prefix, json); }};
        };
        const Status status = session.Run(std::move(task), {STDOUT_FILENO});
        worst = Worst(worst, status);
        if (status == Status::OutputFailed) // nothing more can be printed
            break;
    }
    return worst;
}

} // namespace vxhost
