#include "cli/commands/CoverageCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/OutputNames.h"
#include "cli/options/OutputOptions.h"
#include "cli/options/PictureOptions.h"
#include "cli/report/CoverageReport.h"
#include "devices/raster/InkCoverage.h"
#include "jobs/PlateRendering.h"
#include "jobs/Rendering.h"
#include "library/FactsJson.h"
#include "library/OptionValues.h"
#include "library/press/CoverageJson.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

// Returns one line.
std::string CoverageJson(const std::string &input, const InkCoverage &coverage)
{
    nlohmann::ordered_json json;
    json["file"] = input;
    AddCoverage(coverage, &json);
    return JsonLine(json);
}

// Returns it as a part of one full ink.
double ReadInkLimit(const std::string &text)
{
    constexpr double kPercent = 100, kMost = 10000;
    const std::optional<double> percent = ReadNumber(text);
    if (!percent || *percent <= 0 || *percent > kMost)
        throw UsageError(fmt::format(
            "--limit {}: not a number of percent above 0 and up to {}: give one as 300", text, kMost));
    return *percent / kPercent;
}

} // namespace

CoverageCommand::CoverageCommand(CLI::App *command)
{
    command
        ->add_option("--limit", limit_,
                     "percent of ink, all inks together, above which there is too much (300)")
        ->type_name("N");
    command
        ->add_option(
            "-o,--heat-map", heatMap_,
            "write a png too of how much ink there is where; {stem} and {dir} are those of the input")
        ->type_name("PATH");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for heat maps that are named by a pattern");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost");
    command->add_flag("--json", json_, "one JSON object a document, each on a line of its own");
    AddPictureOptions(&texts_, command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx coverage poster.vx\n"
                    "  vx coverage poster.vx --limit 280 -o poster-ink.png\n"
                    "  vx coverage --json *.vx | jq -r 'select(.total.most > 3) | .file'");
}

Status CoverageCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    const double limit = ReadInkLimit(limit_);
    std::vector<std::string> maps;
    if (!heatMap_.empty()) {
        (void)CheckFormatOfName(heatMap_, options.inputs.front(), kPng);
        maps = OutputNames(heatMap_, options.inputs, std::vector{FindFormat("png")});
    }
    for (const std::string &map : maps) {
        if (!force_)
            CheckKeepsDrawing(heatMap_, map);
    }
    const Settings settings = options.Complete(ReadSettings(texts_));
    Session session(options, CommandKind::Render, messages);
    Status worst = Status::Done;
    for (size_t i = 0; i < options.inputs.size(); ++i) {
        const std::string &input = options.inputs[i];
        PlateTask task;
        task.input = input;
        task.settings = settings;
        task.outputs = {"-"};
        task.rules.makesFolders = IsPattern(heatMap_) && !noMkdir_;
        if (!maps.empty())
            task.outputs.push_back(maps[i]);
        task.makeSink = [limit](const OutputFiles &) { return std::make_unique<CoverageMeter>(limit); };
        task.finish = [&, json = json_](PlateSink *sink, const OutputFiles &files) {
            const auto &meter = static_cast<const CoverageMeter &>(*sink);
            const InkCoverage coverage = meter.Measure();
            const std::string text = json ? CoverageJson(input, coverage) : CoverageText(input, coverage);
            Failure failure = SinkFor(files.Descriptor(0))(std::as_bytes(std::span(text)));
            return failure || files.Size() == 1 ? failure : meter.WriteHeatMap(SinkFor(files.Descriptor(1)));
        };
        PlateRendering rendering(std::move(task), &session.Jobs());
        const Status status = session.Tell(input, rendering.Finish()).status;
        worst = Worst(worst, status);
        if (status == Status::OutputFailed && maps.empty()) // nothing more can be printed
            break;
    }
    return worst;
}

} // namespace vxhost
