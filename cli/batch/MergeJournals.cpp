#include "cli/batch/MergeJournals.h"

#include "cli/batch/Journal.h"
#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace vxhost
{

namespace
{

struct Source {
    Descriptor file;
    JournalIndex index;
};

// Opens a journal that another run may be writing: its whole lines count.
std::unique_ptr<Source> OpenSource(const std::string &path)
{
    auto source = std::make_unique<Source>();
    std::string error;
    source->file.Take(OpenToRead(path, FileKinds::Regular, &error));
    if (source->file.Get() < 0)
        throw UsageError(fmt::format("{}: {}", path, error));
    if (!IsJournal(source->file.Get()))
        throw UsageError(fmt::format("{}: is no journal: name those of vx batch --journal", path));
    (void)source->index.Read(source->file.Get());
    return source;
}

bool IsDoneIn(uint64_t job, const std::vector<std::unique_ptr<Source>> &sources, size_t first)
{
    return std::any_of(sources.begin() + static_cast<std::ptrdiff_t>(first), sources.end(),
                       [job](const auto &source) { return source->index.Find(job).has_value(); });
}

} // namespace

void MergeJournals(const std::vector<std::string> &journals, const std::string &into, Messages *messages)
{
    std::vector<std::unique_ptr<Source>> sources;
    for (const std::string &path : journals) {
        if (IsSameFile(path, into))
            throw UsageError(
                fmt::format("{}: is what the journals are to be merged into: leave it out", path));
        sources.push_back(OpenSource(path));
    }
    Journal target(into);
    size_t done = 0, several = 0;
    for (size_t i = 0; i < sources.size(); ++i) {
        const JournalIndex &index = sources[i]->index;
        ReadJournalLines(sources[i]->file.Get(), [&](const JournalLine &line) {
            const bool isLast = line.kind == JournalLine::Kind::Done && index.Find(line.job) == line.at;
            const bool isElsewhere =
                line.kind != JournalLine::Kind::Run && IsDoneIn(line.job, sources, i + 1);
            done += isLast && !isElsewhere ? 1 : 0;
            several += isLast && isElsewhere ? 1 : 0;
            if (line.kind == JournalLine::Kind::Run || (isLast && !isElsewhere) ||
                (line.kind == JournalLine::Kind::Begun && !IsDoneIn(line.job, sources, 0)))
                target.Add(line.text);
        });
    }
    messages->Note(
        fmt::format("--journal {}: {} documents are done in {} journals{}", into, done, journals.size(),
                    several == 0 ? "" : fmt::format(", and {} of them in an earlier one too", several)));
}

} // namespace vxhost
