#include "cli/BatchCommand.h"

#include "cli/Batch.h"
#include "cli/Session.h"
#include "cli/Values.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vxhost
{

namespace
{

constexpr int32_t kMaxJobs = 256;

} // namespace

BatchCommand::BatchCommand(CLI::App *command) : common_("60")
{
    command
        ->add_option(
            "-o,--output", output_,
            "where to write what its line does not say; {stem}, {dir} and {ext} are those of the input and "
            "the format")
        ->type_name("PATH");
    command->add_option("-j,--jobs", jobs_, "documents at a time (as many as there are processors)")
        ->type_name("N");
    words_.AddTo(command);
    common_.AddTo(command, "manifests to read, or documents; - and nothing are standard input");
    command->footer(
        "A line of a manifest is the name of a document, or a JSON object: input, output, id, and options\n"
        "of that document by their names, as {\"input\": \"a.vx\", \"output\": \"a.png\", \"dpi\": 300}.\n\n"
        "Examples:\n"
        "  vx batch list.jsonl >results.jsonl\n"
        "  find drawings -name '*.vx' | vx batch -f pdf,png -o '{dir}/{stem}.{ext}' >results.jsonl\n"
        "  vx batch *.vx -o pictures/ | jq -r 'select(.exit != 0) | .input + \": \" + .error'");
}

Status BatchCommand::Run(Messages *messages) const
{
    CommonOptions options = common_.Read(false);
    if (options.inputs.empty()) {
        if (isatty(STDIN_FILENO) == 1)
            throw UsageError("no manifest: name one, or pipe names of documents in");
        options.inputs = {"-"};
    }
    const bool showProgress = options.showProgress && isatty(STDOUT_FILENO) != 1; // not among the lines
    options.showProgress = false;                                                 // of every single document

    const RenderSettings settings = ReadSettings(words_, options.limits.memory);
    std::vector<Format> formats = ReadFormats(words_.format, output_);
    if (!words_.profile.empty() && std::ranges::find(formats, Format::Png) == formats.end())
        formats.push_back(Format::Png); // so that the profile is looked at
    CheckDevices(formats, settings);

    Session session(options, messages);
    messages->ShowProgress(showProgress);
    Batch batch({options.inputs, output_, words_, settings, options.limits.memory, ReadJobs()}, &session,
                messages);
    return batch.Run();
}

size_t BatchCommand::ReadJobs() const
{
    if (jobs_.empty())
        return std::max(1U, std::thread::hardware_concurrency());
    const std::optional<int32_t> jobs = ReadInteger(jobs_);
    if (!jobs || *jobs < 1 || *jobs > kMaxJobs)
        throw UsageError(
            fmt::format("--jobs {}: not a whole number from 1 to {}: give one as 4", jobs_, kMaxJobs));
    return static_cast<size_t>(*jobs);
}

} // namespace vxhost
