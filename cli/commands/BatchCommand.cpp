#include "cli/commands/BatchCommand.h"

#include "cli/batch/Batch.h"
#include "cli/batch/MergeJournals.h"
#include "cli/commands/Session.h"
#include "cli/options/Digest.h"
#include "cli/options/OutputNames.h"
#include "library/OptionValues.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxhost
{

BatchCommand::BatchCommand(CLI::App *command)
{
    command->add_option("--manifest", manifests_, "a list of documents, which may be a pipe; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command->add_flag("-0,--null", endInNul_, "manifests have names alone, each of which ends in NUL");
    command
        ->add_option("--files0-from", nulLists_,
                     "a list of names alone, each of which ends in NUL; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command->add_flag("--all-files", takesAll_, "tell of the files in folders that are no drawings, too");
    command
        ->add_option(
            "-o,--output", output_,
            "where to write, for lines that do not say it; {stem}, {dir}, {relative}, {number}, {hash}, "
            "{namehash} and {ext} are those of the document and the format")
        ->type_name("PATH");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for outputs");
    command->add_flag("--allow-outside", allowOutside_,
                      "outputs may lie outside of the folder that -o names, else of the working folder");
    command
        ->add_option("-j,--jobs", jobs_,
                     "how many documents to draw at a time (as many as there are processors)")
        ->type_name("N");
    command->add_flag("--unordered", isUnordered_,
                      "print results as documents are done, not as they were named");
    command
        ->add_option("--journal", journal_,
                     "a file that gets a line when a document is begun and one when it is done")
        ->type_name("FILE");
    command
        ->add_flag("--resume", resume_,
                   "pass over what is done in the journal and there; =verify reads the outputs")
        ->type_name("[=verify]");
    command->add_option("--retry", retry_, "with --resume: failed draws again what failed")
        ->type_name("WHICH");
    command->add_flag("--merge-journals", merges_,
                      "draw nothing: add what the FILEs, journals, have to that of --journal");
    command->add_flag("--premis", writesPremis_,
                      "write a PREMIS record beside each output, as OUT.premis.xml");
    command
        ->add_option("--bag", bag_,
                     "make the folder a BagIt bag of the outputs, which lie in its folder data")
        ->type_name("FOLDER");
    command->add_option("--pack", pack_, "put the outputs into one tar, with an index beside it")
        ->type_name("FILE.tar");
    command
        ->add_option(
            "--shard", shard_,
            "do one part of several alone, as 3/20: which one a document is in follows from its name")
        ->type_name("K/N");
    command
        ->add_option(
            "--report", report_,
            "a folder for a catalogue of the drawings: a page with a small picture of each, and a table")
        ->type_name("DIR");
    command->add_option("--summary", summary_, "what to tell in the end: text, json or none (text)")
        ->type_name("HOW");
    outputOptions_.AddTo(command);
    common_.AddTo(
        command,
        "documents to read, and folders to look through; -, or no FILE at all, is a manifest on standard "
        "input");
    command->footer(
        "A line of a manifest is the name of a document, or a JSON object: input, output, id, and options\n"
        "of that document by their names, as {\"input\": \"a.vx\", \"output\": \"a.png\", \"dpi\": 300}.\n\n"
        "Examples:\n"
        "  vx batch drawings -o 'pictures/{relative}/{stem}.{ext}' -f png >results.jsonl\n"
        "  vx batch --manifest list.jsonl >results.jsonl\n"
        "  vx batch drawings --bag drawings-bag --premis -f pdf --journal drawings.journal --resume "
        ">results.jsonl\n"
        "  find drawings -name '*.vx' -print0 | vx batch -0 -f pdf,png -o '{dir}/{stem}.{ext}' "
        ">results.jsonl\n"
        "  vx batch -o pictures/ -- *.vx | jq -r 'select(.exit != 0) | .input + \": \" + .error'");
}

Status BatchCommand::Run(Messages *messages) const
{
    CommonOptions options = common_.Read(false);
    if (merges_)
        return Merge(options, messages);
    const std::vector<BatchSource> sources = ReadSources(options.inputs);
    const bool showProgress =
        options.showProgress && isatty(STDOUT_FILENO) != 1; // else it would stand among them
    if (bag_ && (bag_->empty() || *bag_ == "-"))
        throw UsageError(fmt::format("--bag \"{}\": no name of a folder: name one", *bag_));
    CheckPack();
    const std::string output = !output_.empty() ? output_
                               : bag_           ? Bag::DataFolderOf(*bag_) + "/"
                               : pack_          ? "./"
                                                : "";
    CheckPattern(output);
    options.showProgress = false; // the progress of a single document is not shown

    const Settings settings = options.Complete(ReadSettings(outputOptions_.texts));
    const FormatList named = ReadFormats(outputOptions_.format, output);
    FormatList formats = named;
    const Format *png = FindFormat("png");
    if (!outputOptions_.texts.Of("profile").empty() && std::ranges::find(formats, png) == formats.end())
        formats.push_back(png); // of these formats it alone looks at the profile
    Session session(options, CommandKind::Batch, messages);
    session.CheckDevices(formats, settings);
    const Status worst = session.TellOfName(output, named);
    messages->ShowProgress(showProgress);
    BatchOptions batchOptions;
    batchOptions.sources = sources;
    batchOptions.takesAll = takesAll_;
    batchOptions.output = output;
    batchOptions.writesPremis = writesPremis_;
    batchOptions.bag = bag_.value_or("");
    batchOptions.pack = pack_.value_or("");
    batchOptions.allowOutside = allowOutside_;
    batchOptions.makesFolders = !noMkdir_;
    batchOptions.outputOptions = outputOptions_;
    batchOptions.settings = settings;
    batchOptions.jobs = ReadJobs(jobs_).value_or(std::max(1U, std::thread::hardware_concurrency()));
    batchOptions.isUnordered = isUnordered_;
    batchOptions.shard = ReadShard();
    if (report_ && report_->empty())
        throw UsageError("--report \"\": no name of a folder: name one that is new or empty");
    batchOptions.report = report_.value_or("");
    ReadJournal(options, &batchOptions);
    if (summary_ != "text" && summary_ != "json" && summary_ != "none")
        throw UsageError(fmt::format("--summary {}: not known: give text, json or none", summary_));
    batchOptions.summary = summary_ == "text"   ? SummaryForm::Text
                           : summary_ == "json" ? SummaryForm::Json
                                                : SummaryForm::None;
    Batch batch(std::move(batchOptions), &session, messages);
    return Worst(worst, batch.Run());
}

std::vector<BatchSource> BatchCommand::ReadSources(const std::vector<std::string> &inputs) const
{
    const LineEnd end = endInNul_ ? LineEnd::Nul : LineEnd::Newline;
    std::vector<BatchSource> sources;
    for (const std::string &input : inputs) {
        std::error_code failure;
        const bool isFolder = std::filesystem::is_directory(input, failure);
        sources.push_back({input,
                           input == "-" ? SourceKind::Manifest
                           : isFolder   ? SourceKind::Folder
                                        : SourceKind::Document,
                           end});
    }
    for (const std::string &manifest : manifests_)
        sources.push_back({manifest, SourceKind::Manifest, end});
    for (const std::string &list : nulLists_)
        sources.push_back({list, SourceKind::Manifest, LineEnd::Nul});
    if (std::ranges::count(manifests_, "") + std::ranges::count(nulLists_, "") > 0)
        throw UsageError(
            fmt::format("{}: the name is empty: name a file, or - for standard input",
                        std::ranges::count(manifests_, "") > 0 ? "--manifest" : "--files0-from"));
    if (sources.empty()) {
        if (isatty(STDIN_FILENO) == 1)
            throw UsageError(
                "no FILE: name documents or folders, or a list of them with --manifest, or pipe one in");
        sources.push_back({"-", SourceKind::Manifest, end});
    }
    if (std::ranges::count(sources, "-", &BatchSource::name) > 1)
        throw UsageError("- is given twice: standard input can be read once");
    if (endInNul_ && std::ranges::count(sources, SourceKind::Manifest, &BatchSource::kind) == 0)
        throw UsageError("-0: no list of names to read: give one with --manifest, or - for standard input");
    const bool hasFolder = std::ranges::count(sources, SourceKind::Folder, &BatchSource::kind) > 0;
    if (takesAll_ && !hasFolder)
        throw UsageError("--all-files: no folder to look through: name one");
    if (hasFolder && output_.empty() && !bag_ && !pack_)
        throw UsageError("no output: add -o and a folder, as -o pictures/");
    return sources;
}

Shard BatchCommand::ReadShard() const
{
    if (shard_.empty())
        return {};
    const size_t slash = std::min(shard_.find('/'), shard_.size());
    const int32_t number = ReadInteger(shard_.substr(0, slash)).value_or(0);
    const int32_t count = slash == shard_.size() ? 0 : ReadInteger(shard_.substr(slash + 1)).value_or(0);
    if (number < 1 || number > count)
        throw UsageError(fmt::format("--shard {}: not K/N with K from 1 to N: give one as 3/20", shard_));
    return {static_cast<uint64_t>(number), static_cast<uint64_t>(count)};
}

void BatchCommand::CheckPack() const
{
    if (!pack_)
        return;
    if (std::filesystem::path(*pack_).extension() != ".tar")
        throw UsageError(fmt::format("--pack \"{}\": no name of a tar: name one, as pictures.tar", *pack_));
    if (bag_)
        throw UsageError("--pack: what is in a bag are files: leave --bag or --pack out");
    if (report_)
        throw UsageError("--pack: a catalogue leads to outputs that are files: leave --report or --pack out");
    if (allowOutside_)
        throw UsageError("--pack: outputs lie in the tar: leave --allow-outside out");
}

Status BatchCommand::Merge(const CommonOptions &common, Messages *messages) const
{
    if (!journal_ || journal_->empty() || *journal_ == "-")
        throw UsageError("--merge-journals: no journal to merge into: give one with --journal");
    if (pack_)
        throw UsageError("--pack: journals are merged, and nothing is packed: leave it out");
    if (report_)
        throw UsageError("--report: journals are merged, and nothing is drawn: leave it out");
    if (common.inputs.empty() || !manifests_.empty() || !nulLists_.empty())
        throw UsageError("--merge-journals: no journals to merge: name them, and nothing else");
    messages->SetVerbosity(common.verbosity);
    MergeJournals(common.inputs, *journal_, messages);
    return Status::Done;
}

void BatchCommand::ReadJournal(const CommonOptions &common, BatchOptions *options) const
{
    if (journal_ && (journal_->empty() || *journal_ == "-"))
        throw UsageError(fmt::format("--journal \"{}\": no name of a file: name one", *journal_));
    if (!resume_.empty() && !journal_)
        throw UsageError("--resume: no journal: give that of the earlier run with --journal");
    if (!resume_.empty() && resume_ != "true" && resume_ != "verify")
        throw UsageError(fmt::format("--resume={}: not known: give --resume, or --resume=verify", resume_));
    if (!retry_.empty() && resume_.empty())
        throw UsageError("--retry: nothing is gone on with: add --resume");
    if (!retry_.empty() && retry_ != "failed")
        throw UsageError(fmt::format("--retry {}: not known: give failed", retry_));
    options->journal = journal_.value_or("");
    options->resuming = resume_.empty()       ? Resuming::Nothing
                        : resume_ == "verify" ? Resuming::ByDigest
                                              : Resuming::BySize;
    options->retriesFailed = !retry_.empty();
    if (!journal_)
        return;
    const std::string &profile = outputOptions_.texts.Of("profile");
    const char *date = std::getenv("SOURCE_DATE_EPOCH");
    options->circumstances = {
        {"vx", VX_VERSION},
        {"plugin", common.plugin.empty() ? "built in" : DigestOfFile(common.plugin).digest},
        {"profile", IsProfileFile(profile) ? DigestOfFile(profile).digest : profile},
        {"date", date == nullptr ? "" : date},
        {"reading", common.said},
    };
}

} // namespace vxhost
