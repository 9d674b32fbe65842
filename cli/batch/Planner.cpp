#include "cli/batch/Planner.h"

#include "cli/batch/Pack.h"
#include "cli/options/CommonOptions.h"
#include "cli/options/Digest.h"
#include "cli/options/OutputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace vxhost
{

namespace
{

FormatList FormatsOf(const std::vector<RenderTask::Output> &outputs)
{
    FormatList formats;
    for (const RenderTask::Output &output : outputs)
        formats.push_back(output.format);
    return formats;
}

} // namespace

// Every shard tells what is wrong with a whole manifest.
bool Shard::Has(const ManifestEntry &entry) const
{
    const bool isOfAll = !entry.manifest.empty() && entry.line == 0;
    return count == 1 || isOfAll || ShortDigestOf(entry.input) % count == number - 1;
}

bool Planner::NeedsDigest(const ManifestEntry &entry) const
{
    return NamesDigest(PatternOf(entry));
}

std::vector<RenderTask::Output> Planner::OutputsOf(const ManifestEntry &entry, size_t number,
                                                   const std::string &digest) const
{
    const std::string &pattern = PatternOf(entry);
    // The name of a line's own output goes before the format that the command gives for all.
    const bool namesFormat = entry.outputOptions.format.empty() && FormatOfName(entry.output) != nullptr;
    const NamedDocument document = {entry.input, entry.relative, number, digest};
    std::vector<RenderTask::Output> outputs;
    for (const Format *format : ReadFormats(namesFormat ? "" : SaidOf(entry).format, pattern))
        outputs.push_back({format, OutputName(FillPattern(pattern, document, *format))});
    return outputs;
}

std::string Planner::PlaceOfOutput(const std::string &path) const
{
    return options_.pack.empty() ? PlaceOf(path) : path;
}

std::string Planner::OptionsTextOf(const ManifestEntry &entry) const
{
    return SaidOf(entry).Text();
}

RenderTask Planner::TaskFor(const ManifestEntry &entry, size_t number, const std::string &digest) const
{
    RenderTask task;
    task.outputs = OutputsOf(entry, number, digest);
    const OutputOptions said = SaidOf(entry);
    const FormatList formats = FormatsOf(task.outputs);
    // An option of the line that means nothing for its formats is refused; one of the command is passed over.
    entry.outputOptions.texts.CheckMeant(SetOf(formats));

    task.input = entry.input;
    task.kinds = FileKinds::Regular;
    task.rules = {FileKinds::Regular, options_.makesFolders};
    task.settings = entry.outputOptions == OutputOptions() ? options_.settings : ReadSettings(said.texts);
    task.settings.png.memoryLimit = options_.settings.png.memoryLimit;
    return task;
}

// Members of a tar have one spelling.
std::string Planner::OutputName(const std::string &path) const
{
    if (options_.pack.empty() || path == "-")
        return path;
    const std::optional<std::string> member = Pack::MemberNameOf(path);
    if (!member)
        throw UsageError(
            fmt::format("would be written to \"{}\", outside of the tar: name the member from its top, "
                        "as -o '{{relative}}/{{stem}}.{{ext}}'",
                        path));
    return *member;
}

const std::string &Planner::PatternOf(const ManifestEntry &entry) const
{
    const std::string &pattern = entry.output.empty() ? options_.output : entry.output;
    if (pattern.empty())
        throw UsageError("no output: add \"output\" to the line, or give -o");
    return pattern;
}

OutputOptions Planner::SaidOf(const ManifestEntry &entry) const
{
    return options_.outputOptions.OverriddenBy(entry.outputOptions);
}

} // namespace vxhost
