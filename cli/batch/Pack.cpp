#include "cli/batch/Pack.h"

#include "cli/archive/TarHeader.h"
#include "cli/batch/FileLock.h"
#include "cli/batch/WholeLines.h"
#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"
#include "cli/report/Times.h"
#include "host/SystemText.h"
#include "library/FactsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t kCopySize = size_t{256} << 10;
constexpr int kOpenFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;
constexpr mode_t kMode = 0666; // less what the user's mask takes away

// Returns false with errno set when not all of it can be written at the place.
bool WriteAt(int descriptor, std::string_view bytes, uint64_t at)
{
    while (!bytes.empty()) {
        const ssize_t written = pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at));
        if (written < 0 && errno != EINTR)
            return false;
        const size_t count = written < 0 ? 0 : static_cast<size_t>(written);
        bytes.remove_prefix(count);
        at += count;
    }
    return true;
}

// Copies the file from its beginning. Returns false with errno set when that fails.
bool CopyAt(int from, int descriptor, uint64_t size, uint64_t at)
{
    std::vector<char> buffer(kCopySize);
    for (uint64_t copied = 0; copied < size;) {
        const ssize_t got = pread(from, buffer.data(), std::min<uint64_t>(buffer.size(), size - copied),
                                  static_cast<off_t>(copied));
        if (got == 0)
            errno = EIO; // nobody else has the file, and it was so long
        if (got <= 0 || !WriteAt(descriptor, {buffer.data(), static_cast<size_t>(got)}, at + copied))
            return false;
        copied += static_cast<uint64_t>(got);
    }
    return true;
}

bool Truncate(int descriptor, uint64_t size)
{
    return ftruncate(descriptor, static_cast<off_t>(size)) == 0;
}

uint64_t SizeOf(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

bool IsThere(const std::string &path)
{
    return access(path.c_str(), F_OK) == 0;
}

// The index says names as JSON does, in which bytes that are not UTF-8 are replaced.
uint64_t KeyOf(const nlohmann::ordered_json &name)
{
    return ShortDigestOf(JsonLine(name));
}

uint64_t NumberOf(const std::string &digest)
{
    return std::stoull(digest.substr(0, 2 * sizeof(uint64_t)), nullptr, 16);
}

// Members are not older or newer because the tar was made today.
std::time_t TimeOfMembers()
{
    return std::getenv("SOURCE_DATE_EPOCH") == nullptr ? 0 : StatedTime();
}

} // namespace

Pack::Pack(const std::string &path, bool goesOn) : path_(path), place_(PlaceOf(path))
{
    struct stat status = {};
    if (stat(place_.c_str(), &status) == 0 && (!S_ISREG(status.st_mode) || access(place_.c_str(), W_OK) != 0))
        Fail(S_ISREG(status.st_mode) ? errno : S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    FinishRenaming();
    if (!goesOn || IsThere(PartNameOf(place_)) || !OpenWhole())
        OpenPart(goesOn);
    begun_ = end_;
}

std::optional<std::string> Pack::MemberNameOf(const std::string &path)
{
    const fs::path name = fs::path(path).lexically_normal();
    if (name.is_absolute() || !name.has_filename() || *name.begin() == ".." || *name.begin() == ".")
        return std::nullopt;
    return name.string();
}

std::string Pack::PartNameOf(const std::string &path)
{
    return path + ".part";
}

std::string Pack::IndexNameOf(const std::string &path)
{
    return path + ".jsonl";
}

// A tar gets its name before its index does: a run may have been killed between.
void Pack::FinishRenaming() const
{
    const std::string index = IndexNameOf(PartNameOf(place_));
    if (!IsThere(PartNameOf(place_)) && IsThere(index))
        (void)std::rename(index.c_str(), IndexNameOf(place_).c_str());
}

// Returns false where there is no tar with an index.
bool Pack::OpenWhole()
{
    if (!IsThere(place_) || !IsThere(IndexNameOf(place_)))
        return false;
    OpenLocked(place_, kOpenFlags);
    OpenIndex(IndexNameOf(place_), kOpenFlags);
    ReadIndex();
    isWhole_ = true;
    return true;
}

void Pack::OpenPart(bool goesOn)
{
    const std::string part = PartNameOf(place_);
    OpenLocked(part, kOpenFlags | O_CREAT);
    OpenIndex(IndexNameOf(part), kOpenFlags | O_CREAT);
    if (goesOn)
        ReadIndex();
    // The index goes first: no line of it is for what comes behind.
    if (!Truncate(index_.Get(), indexEnd_) || !Truncate(tar_.Get(), end_))
        Fail(errno);
}

void Pack::OpenLocked(const std::string &file, int flags)
{
    tar_.Take(open(file.c_str(), flags, kMode));
    struct stat opened = {}, named = {};
    if (tar_.Get() < 0 || fstat(tar_.Get(), &opened) != 0)
        Fail(errno);
    // The other run may have ended, and given the file its name, while its end was waited for.
    if (!LockForRun(tar_.Get()) || stat(file.c_str(), &named) != 0 || named.st_ino != opened.st_ino)
        throw EarlyEnd(
            Status::OutputFailed,
            fmt::format("--pack {}: another run writes to it: wait for its end, or choose another name",
                        path_));
}

void Pack::OpenIndex(const std::string &file, int flags)
{
    index_.Take(open(file.c_str(), flags, kMode));
    if (index_.Get() < 0)
        Fail(errno);
}

void Pack::ReadIndex()
{
    const uint64_t size = SizeOf(tar_.Get());
    bool isBehind = false; // the tar ends before, as after a loss of power
    ReadWholeLines(index_.Get(), [&](uint64_t at, std::string_view line) {
        if (isBehind)
            return;
        Member member;
        bool makesSense = false;
        uint64_t key = 0;
        try {
            const auto json = nlohmann::ordered_json::parse(line);
            member = {json.at("offset"), json.at("size"), NumberOf(json.at("sha256"))};
            key = KeyOf(json.at("member"));
            makesSense = member.offset % kTarBlock == 0 && member.offset > end_;
        } catch (const std::exception &) {
            makesSense = false;
        }
        if (!makesSense)
            throw UsageError(
                fmt::format("--pack {}: the line at byte {} of its index makes no sense: take the "
                            "tar and its index away, and begin anew",
                            path_, at));
        isBehind = member.size > size || member.offset > size - member.size ||
                   TarPaddingOf(member.size) > size - member.size - member.offset;
        if (isBehind)
            return;
        members_.insert_or_assign(key, member);
        end_ = member.offset + member.size + TarPaddingOf(member.size);
        indexEnd_ = at + line.size();
    });
}

// Takes the names away that say that all is there.
bool Pack::Reopen()
{
    const std::string part = PartNameOf(place_);
    isWhole_ = std::rename(IndexNameOf(place_).c_str(), IndexNameOf(part).c_str()) != 0 ||
               std::rename(place_.c_str(), part.c_str()) != 0;
    return !isWhole_;
}

std::string Pack::Add(const std::string &name, int descriptor, const FileDigest &digest,
                      const std::string &document)
{
    if (!digest.error.empty())
        return fmt::format("{}: is not packed, it {}", name, digest.error);
    return Append(name, digest, document,
                  [&](uint64_t at) { return CopyAt(descriptor, tar_.Get(), digest.bytes, at); });
}

std::string Pack::Add(const std::string &name, std::string_view text, const std::string &document)
{
    return Append(name, {DigestOf(text), text.size(), ""}, document,
                  [&](uint64_t at) { return WriteAt(tar_.Get(), text, at); });
}

template <class Write>
std::string Pack::Append(const std::string &name, const FileDigest &digest, const std::string &document,
                         const Write &write)
{
    if (Has(name, digest, true))
        return "";
    if (const Member *member = FindMember(name); member != nullptr && member->offset > begun_)
        return fmt::format(
            "--pack {}: another document of this run is its member \"{}\": name each after its input", path_,
            name);
    const auto problem = [&](const std::string &what) {
        return fmt::format(
            "--pack {}: its member \"{}\" cannot be written, {}: make room, and go on with --resume --retry "
            "failed",
            path_, name, what);
    };
    std::string header;
    try {
        header = TarHeaderOf(name, digest.bytes, TimeOfMembers());
    } catch (const std::runtime_error &error) {
        return problem(error.what());
    }
    const uint64_t offset = end_ + header.size();
    const std::string padding(TarPaddingOf(digest.bytes), '\0');
    nlohmann::ordered_json json;
    json["member"] = name;
    json["offset"] = offset;
    json["size"] = digest.bytes;
    json["sha256"] = digest.digest;
    json["document"] = document;
    const std::string line = JsonLine(json);
    if ((isWhole_ && !Reopen()) || !WriteAt(tar_.Get(), header, end_) || !write(offset) ||
        !WriteAt(tar_.Get(), padding, offset + digest.bytes) || !WriteAt(index_.Get(), line, indexEnd_))
        return problem(SystemText(errno));
    end_ = offset + digest.bytes + padding.size();
    indexEnd_ += line.size();
    members_.insert_or_assign(KeyOf(name), Member{offset, digest.bytes, NumberOf(digest.digest)});
    return "";
}

const Pack::Member *Pack::FindMember(const std::string &name) const
{
    const auto found = members_.find(KeyOf(name));
    return found == members_.end() ? nullptr : &found->second;
}

bool Pack::Has(const std::string &name, const FileDigest &digest, bool isRead) const
{
    const Member *member = FindMember(name);
    return member != nullptr && member->size == digest.bytes && member->digest == NumberOf(digest.digest) &&
           (!isRead || DigestOfRange(tar_.Get(), member->offset, member->size) == digest);
}

void Pack::Close()
{
    if (isWhole_)
        return;
    const std::string part = PartNameOf(place_);
    if (!WriteAt(tar_.Get(), std::string(kTarEnd, '\0'), end_) || !Truncate(tar_.Get(), end_ + kTarEnd) ||
        !Truncate(index_.Get(), indexEnd_) || fsync(index_.Get()) != 0 || fsync(tar_.Get()) != 0 ||
        std::rename(part.c_str(), place_.c_str()) != 0 ||
        std::rename(IndexNameOf(part).c_str(), IndexNameOf(place_).c_str()) != 0)
        Fail(errno, "make room, and go on with --resume");
    isWhole_ = true;
}

void Pack::GiveUp()
{
    if (isWhole_)
        return;
    const std::string part = PartNameOf(place_);
    unlink(IndexNameOf(part).c_str());
    unlink(part.c_str());
}

void Pack::Fail(int error, const char *advice) const
{
    throw EarlyEnd(Status::OutputFailed,
                   fmt::format("--pack {}: cannot be written, {}: {}", path_, SystemText(error), advice));
}

} // namespace vxhost
