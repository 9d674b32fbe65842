#include "cli/batch/Journal.h"

#include "cli/batch/FileLock.h"
#include "cli/batch/WholeLines.h"
#include "cli/options/CommonOptions.h"
#include "jobs/OutputFile.h"
#include "library/FactsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr std::string_view kHead = R"({"journal":"vx batch")";
constexpr std::string_view kBegun = R"({"begun":")";
constexpr std::string_view kDone = R"({"done":")";
constexpr size_t kJobDigits = 16;
constexpr size_t kReadSize = size_t{4} << 10;

std::string TextOf(uint64_t job)
{
    return fmt::format("{:016x}", job);
}

// Reads the job of a line that begins so.
std::optional<uint64_t> JobOf(std::string_view line, std::string_view beginning)
{
    if (!line.starts_with(beginning) || line.size() < beginning.size() + kJobDigits)
        return std::nullopt;
    const char *first = line.data() + beginning.size();
    uint64_t job = 0;
    const auto [end, error] = std::from_chars(first, first + kJobDigits, job, 16);
    return error == std::errc() && end == first + kJobDigits ? std::optional(job) : std::nullopt;
}

// Returns the line that begins there, without its end.
std::string LineAt(int descriptor, uint64_t at)
{
    std::string line;
    std::string piece(kReadSize, '\0');
    while (true) {
        const ssize_t got =
            pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(at + line.size()));
        if (got <= 0)
            return line;
        const std::string_view bytes(piece.data(), static_cast<size_t>(got));
        const size_t end = bytes.find('\n');
        line += bytes.substr(0, end);
        if (end != std::string_view::npos)
            return line;
    }
}

Json JsonOf(const FileDigest &digest)
{
    return {{"sha256", digest.digest}, {"bytes", digest.bytes}};
}

FileDigest DigestIn(const Json &json)
{
    return {json.at("sha256").get<std::string>(), json.at("bytes").get<uint64_t>(), ""};
}

} // namespace

bool IsJournal(int descriptor)
{
    const std::string line = LineAt(descriptor, 0);
    return line.starts_with(kHead) || kHead.starts_with(line);
}

uint64_t ReadJournalLines(int descriptor, const std::function<void(const JournalLine &line)> &take)
{
    return ReadWholeLines(descriptor, [&take](uint64_t at, std::string_view text) {
        const std::optional<uint64_t> begun = JobOf(text, kBegun), done = JobOf(text, kDone);
        if (begun)
            take({JournalLine::Kind::Begun, *begun, at, text});
        else if (done)
            take({JournalLine::Kind::Done, *done, at, text});
        else if (text.starts_with(kHead))
            take({JournalLine::Kind::Run, 0, at, text});
    });
}

uint64_t JournalIndex::Read(int descriptor)
{
    const uint64_t whole = ReadJournalLines(descriptor, [this](const JournalLine &line) {
        if (line.kind == JournalLine::Kind::Begun) {
            ++begun_[line.job];
        } else if (line.kind == JournalLine::Kind::Done) {
            begun_.erase(line.job);
            done_.push_back({line.job, line.at});
        }
    });
    Settle();
    return whole;
}

// Puts the lines in the order of their jobs, and keeps the last of each.
void JournalIndex::Settle()
{
    std::ranges::sort(done_, {}, [](const Done &done) { return std::pair(done.job, done.at); });
    size_t kept = 0;
    for (size_t i = 0; i < done_.size(); ++i) {
        if (i + 1 == done_.size() || done_[i + 1].job != done_[i].job)
            done_[kept++] = done_[i];
    }
    done_.resize(kept);
    done_.shrink_to_fit();
}

std::optional<uint64_t> JournalIndex::Find(uint64_t job) const
{
    const auto found = std::ranges::lower_bound(done_, job, {}, &Done::job);
    return found != done_.end() && found->job == job ? std::optional(found->at) : std::nullopt;
}

int JournalIndex::BegunInVain(uint64_t job) const
{
    const auto found = begun_.find(job);
    return found == begun_.end() ? 0 : found->second;
}

Journal::Journal(const std::string &path) : path_(path)
{
    file_.Take(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666));
    struct stat status = {};
    if (file_.Get() < 0 || fstat(file_.Get(), &status) != 0)
        throw EarlyEnd(
            Status::OutputFailed,
            fmt::format("--journal {}: cannot be opened, {}: choose another place", path, SystemText(errno)));
    if (!S_ISREG(status.st_mode) || !IsJournal(file_.Get()))
        throw UsageError(fmt::format("--journal {}: is there, and is no journal: choose another name", path));
    if (!LockForRun(file_.Get()))
        throw EarlyEnd(
            Status::OutputFailed,
            fmt::format("--journal {}: another run writes to it: wait for its end, or choose another name",
                        path));
    const uint64_t whole = index_.Read(file_.Get());
    wasMended_ = fstat(file_.Get(), &status) == 0 && static_cast<uint64_t>(status.st_size) > whole;
    if (wasMended_ && ftruncate(file_.Get(), static_cast<off_t>(whole)) != 0)
        Fail(errno);
}

void Journal::BeginRun(const Json &with)
{
    Json json;
    json["journal"] = "vx batch";
    json.update(with);
    Add(JsonLine(json));
}

void Journal::Begin(uint64_t job, const std::string &input)
{
    Json json;
    json["begun"] = TextOf(job);
    json["input"] = input;
    Add(JsonLine(json));
}

void Journal::Finish(uint64_t job, const JournalEntry &entry)
{
    Json json;
    json["done"] = TextOf(job);
    json["number"] = entry.number;
    json["input"] = entry.input;
    json.update(JsonOf(entry.digest));
    json["outputs"] = Json::array();
    for (const JournalOutput &output : entry.outputs) {
        Json one = {{"path", output.path}};
        one.update(JsonOf(output.digest));
        json["outputs"].push_back(std::move(one));
    }
    json["milliseconds"] = entry.milliseconds;
    json["exit"] = static_cast<int>(entry.status);
    if (!entry.error.empty())
        json["error"] = entry.error;
    json["warnings"] = entry.warnings;
    if (entry.isPassedOver)
        json["passedOver"] = true;
    Add(JsonLine(json));
}

// A line that somebody changed so that it makes no sense counts for none.
std::optional<JournalEntry> Journal::Find(uint64_t job) const
{
    const std::optional<uint64_t> at = index_.Find(job);
    if (!at)
        return std::nullopt;
    try {
        const Json json = Json::parse(LineAt(file_.Get(), *at));
        JournalEntry entry;
        entry.number = json.at("number");
        entry.input = json.at("input");
        entry.digest = DigestIn(json);
        for (const Json &output : json.at("outputs"))
            entry.outputs.push_back({output.at("path"), DigestIn(output)});
        entry.milliseconds = json.at("milliseconds");
        entry.status = static_cast<Status>(json.at("exit").get<int>());
        entry.error = json.value("error", "");
        entry.warnings = json.at("warnings").get<std::vector<std::string>>();
        entry.isPassedOver = json.value("passedOver", false);
        return entry;
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

void Journal::Add(std::string_view line)
{
    if (!WriteAll(file_.Get(), line))
        Fail(errno);
}

void Journal::Fail(int error) const
{
    throw EarlyEnd(Status::OutputFailed,
                   fmt::format("--journal {}: cannot be written, {}: make room, and go on with "
                               "--resume",
                               path_, SystemText(error)));
}

} // namespace vxhost
