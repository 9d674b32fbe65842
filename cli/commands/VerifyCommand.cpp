#include "cli/commands/VerifyCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/Digest.h"
#include "cli/report/StandardStreams.h"
#include "host/reading/Utf8.h"
#include "jobs/Rendering.h"
#include "library/Decimal.h"
#include "library/FactsJson.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

// Holds an output beside what is made of the drawing now.
struct Comparison {
    std::string input, output;
    FileDigest found, expected;
    Box box;
    std::vector<FontUse> substitutes; // fonts that were not there

    bool IsSame() const { return found == expected; }
};

std::vector<FontUse> SubstitutesIn(const Outcome &outcome)
{
    std::vector<FontUse> substitutes;
    for (const FontUse &font : outcome.fonts) {
        if (font.match != FontMatch::Exact)
            substitutes.push_back(font);
    }
    return substitutes;
}

std::string TextOf(const Comparison &comparison)
{
    const auto shown = [](const std::string &text) {
        return Printable(text, std::numeric_limits<size_t>::max());
    };
    const Box &box = comparison.box;
    std::string text =
        fmt::format("{}: {} what vx {} makes of {}\n", shown(comparison.output),
                    comparison.IsSame() ? "is" : "is not", VX_VERSION, shown(comparison.input));
    text += fmt::format("  sha256       {}\n", comparison.found.digest);
    if (!comparison.IsSame())
        text += fmt::format("  expected     {}\n", comparison.expected.digest);
    text += fmt::format("  page box     {} {} {} {}\n", Decimal(box.left), Decimal(box.bottom),
                        Decimal(box.right), Decimal(box.top));
    for (const FontUse &font : comparison.substitutes)
        text += fmt::format("  substitute   {}: {}\n", shown(font.asked),
                            font.served.empty() ? "none, boxes" : shown(font.served));
    return text;
}

std::string JsonOf(const Comparison &comparison)
{
    const Box &box = comparison.box;
    nlohmann::ordered_json json;
    json["input"] = comparison.input;
    json["output"] = comparison.output;
    json["same"] = comparison.IsSame();
    json["version"] = VX_VERSION;
    json["sha256"] = comparison.found.digest;
    json["expected"] = comparison.expected.digest;
    json["box"] = {box.left, box.bottom, box.right, box.top};
    json["substitutes"] = nlohmann::ordered_json::array();
    for (const FontUse &font : comparison.substitutes)
        json["substitutes"].push_back({{"asked", font.asked}, {"served", font.served}});
    return JsonLine(json);
}

} // namespace

VerifyCommand::VerifyCommand(CLI::App *command)
{
    command->add_flag("--json", json_, "one JSON object");
    outputOptions_.AddTo(command);
    common_.AddTo(command, "the drawing, or - for standard input, and the output that was made of it");
    command->footer("Give the options with which the output was made.\n\n"
                    "Examples:\n"
                    "  vx verify harp.vx harp.pdf\n"
                    "  vx verify harp.vx small.png --fit 256 || vx render harp.vx -o small.png --fit 256");
}

Status VerifyCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    if (options.inputs.size() != 2)
        throw UsageError(fmt::format("{} given: name a drawing and its output, as harp.vx harp.pdf",
                                     options.inputs.size() == 1 ? "one name is" : "more than two names are"));
    if (options.inputs[1] == "-")
        throw UsageError("-: an output on standard input cannot be compared: name a file");
    const FormatList formats = ReadFormats(outputOptions_.format, options.inputs[1]);
    if (formats.size() > 1)
        throw UsageError(
            fmt::format("--format {}: one output has one format: give it alone", outputOptions_.format));
    outputOptions_.texts.CheckMeant(SetOf(formats));
    const Settings settings = options.Complete(ReadSettings(outputOptions_.texts));
    Comparison comparison;
    comparison.input = options.inputs[0];
    comparison.output = options.inputs[1];
    comparison.found = DigestOfFile(comparison.output);
    if (!comparison.found.error.empty())
        throw EarlyEnd(Status::InputFailed, fmt::format("{}: {}", comparison.output, comparison.found.error));

    Session session(options, CommandKind::Render, messages);
    session.CheckDevices(formats, settings);
    RenderTask task = {comparison.input, {}, settings};
    task.outputs.push_back({formats.front(), "", [&comparison](int descriptor) {
                                comparison.expected = DigestOfDescriptor(descriptor);
                            }});
    Rendering rendering(std::move(task), &session.Jobs());
    rendering.Wait();
    const Result result = rendering.Finish();
    const Status status = session.Tell(comparison.input, result).status;
    if (status != Status::Done && status != Status::Warned)
        return status;
    comparison.box = result.outcome.page.box;
    comparison.substitutes = SubstitutesIn(result.outcome);
    if (!PrintResult(json_ ? JsonOf(comparison) : TextOf(comparison), messages))
        return Status::OutputFailed;
    return comparison.IsSame() ? status : Status::Warned;
}

} // namespace vxhost
