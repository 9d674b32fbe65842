#include "cli/batch/LookAhead.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kShowEvery = 1000; // documents

bool CanBeReadTwice(const BatchSource &source)
{
    if (source.kind != SourceKind::Manifest)
        return true;
    struct stat status = {};
    const int result = source.name == "-" ? fstat(STDIN_FILENO, &status) : stat(source.name.c_str(), &status);
    return result == 0 && S_ISREG(status.st_mode);
}

// Returns those before the first that can be read only once: what is behind it has no number yet.
std::vector<BatchSource> FirstReadable(const std::vector<BatchSource> &sources)
{
    return {sources.begin(), std::ranges::find_if_not(sources, CanBeReadTwice)};
}

// Goes through the entries. Returns false where there are more than are looked at.
using EntryProc = std::function<void(const ManifestEntry &entry, size_t number)>;

bool GoThrough(ManifestReader *reader, const EntryProc &take)
{
    size_t number = 0, lines = 0;
    while (true) {
        const std::optional<ManifestEntry> entry = reader->Next();
        if (!entry && reader->AtEnd())
            return true;
        if (!entry) {
            reader->Read();
            continue;
        }
        lines += entry->manifest.empty() ? 0 : 1;
        if (lines > kMostLinesAhead)
            return false;
        take(*entry, ++number);
    }
}

struct NamedPlace {
    uint64_t hash; // stands for the place
    std::string path;
};

// Returns the places that are named without a look into the document. What is wrong with an entry is told in its turn, also
// that it names one twice.
std::vector<NamedPlace> PlacesOf(const Planner &planner, const ManifestEntry &entry, size_t number)
{
    std::vector<NamedPlace> places;
    try {
        if (!entry.error.empty() || planner.NeedsDigest(entry))
            return {};
        for (RenderTask::Output &output : planner.OutputsOf(entry, number, "")) {
            const uint64_t hash = std::hash<std::string>()(planner.PlaceOfOutput(output.path));
            if (std::ranges::count(places, hash, &NamedPlace::hash) == 0)
                places.push_back({hash, std::move(output.path)});
        }
    } catch (const OptionError &) {
        return {};
    }
    return places;
}

// Says how the two could be named apart.
std::string AdviceFor(const ManifestEntry &one, const ManifestEntry &other, const std::string &pattern)
{
    const bool isSameFolder =
        std::filesystem::path(one.input).parent_path() == std::filesystem::path(other.input).parent_path();
    if (one.relative.empty() && other.relative.empty())
        return "name each after its input, as -o '{dir}/{stem}.{ext}', or {number}";
    const char *part = isSameFolder                     ? "{stem}-{number}"
                       : one.relative == other.relative ? "{dir}/{stem}"
                                                        : "{relative}/{stem}";
    return fmt::format("name each after its {}, as -o '{}/{}.{{ext}}'", isSameFolder ? "number" : "folder",
                       FolderOf(pattern), part);
}

// Finds the first two that share one of the places, and throws.
[[noreturn]] void ThrowFor(const std::vector<uint64_t> &shared, ManifestReader *reader,
                           const BatchOptions &options, const Planner &planner)
{
    std::unordered_map<uint64_t, ManifestEntry> writers;
    (void)GoThrough(reader, [&](const ManifestEntry &entry, size_t number) {
        for (const NamedPlace &place : PlacesOf(planner, entry, number)) {
            if (!std::ranges::binary_search(shared, place.hash))
                continue;
            const auto [writer, isNew] = writers.try_emplace(place.hash, entry);
            if (isNew)
                continue;
            const std::string more =
                shared.size() == 1 ? "" : fmt::format(", and so would others to {} more", shared.size() - 1);
            throw UsageError(fmt::format("\"{}\" and \"{}\" would both be written to \"{}\"{}: {}",
                                         writer->second.input, entry.input, place.path, more,
                                         AdviceFor(writer->second, entry, options.output)));
        }
    });
    throw UsageError(
        "the folders change while they are looked through: try again when nothing writes to them");
}

} // namespace

std::optional<size_t> LookAhead(const BatchOptions &options, const Planner &planner, Messages *messages)
{
    const std::vector<BatchSource> sources = FirstReadable(options.sources);
    ManifestReader reader(sources, {options.takesAll, [messages](const std::string &path) {
                                        messages->Warning(path,
                                                          "a symbolic link, which is not followed: name what "
                                                          "it leads to, if it is to be drawn");
                                    }});
    std::vector<uint64_t> places;
    size_t own = 0; // of the shard
    const auto take = [&](const ManifestEntry &entry, size_t number) {
        own += options.shard.Has(entry) ? 1 : 0;
        for (const NamedPlace &place : PlacesOf(planner, entry, number))
            places.push_back(place.hash);
        if (number % kShowEvery == 0)
            messages->Progress(fmt::format("looked at the names of {} documents", number));
    };
    const bool isWhole = GoThrough(&reader, take) && sources.size() == options.sources.size();
    std::ranges::sort(places);
    std::vector<uint64_t> shared;
    for (size_t i = 1; i < places.size(); ++i) {
        if (places[i] == places[i - 1] && (shared.empty() || shared.back() != places[i]))
            shared.push_back(places[i]);
    }
    if (!shared.empty()) {
        ManifestReader again(sources, {options.takesAll, nullptr});
        ThrowFor(shared, &again, options, planner);
    }
    messages->EraseProgress();
    return isWhole ? std::optional(own) : std::nullopt;
}

} // namespace vxhost
