#include "cli/options/Manifest.h"

#include "cli/options/OutputNames.h"
#include "jobs/OutputFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kReadSize = size_t{64} << 10;

// A file is opened once more, so that others can read it from the same place.
int OpenStandardInput()
{
    struct stat status = {};
    if (fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode)) {
        const int file = open("/proc/self/fd/0", O_RDONLY | O_CLOEXEC);
        if (file >= 0 && lseek(file, lseek(STDIN_FILENO, 0, SEEK_CUR), SEEK_SET) >= 0)
            return file;
        if (file >= 0)
            close(file);
    }
    return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

} // namespace

ManifestReader::ManifestReader(const std::vector<BatchSource> &sources, WalkOptions walks)
    : sources_(sources.begin(), sources.end()), walks_(std::move(walks))
{
    for (const BatchSource &source : sources) {
        if (source.kind == SourceKind::Manifest)
            manifests_.push_back(source.name);
    }
}

std::optional<ManifestEntry> ManifestReader::Next()
{
    if (found_)
        return std::exchange(found_, std::nullopt);
    if (walk_)
        return TakeFound();
    std::optional<ManifestEntry> entry = lines_.Next();
    if (lines_.IsGivenUp())
        Close();
    return entry;
}

std::optional<ManifestEntry> ManifestReader::TakeFound()
{
    while (std::optional<FoundFile> file = walk_->Next()) {
        if (file->kind != FoundFile::Kind::Link) {
            ManifestEntry entry;
            entry.input = std::move(file->path);
            entry.relative = std::move(file->relative);
            entry.error = std::move(file->error);
            return entry;
        }
        if (walks_.onLink)
            walks_.onLink(file->path);
    }
    passedOver_ += walk_->PassedOver();
    walk_.reset();
    return std::nullopt;
}

void ManifestReader::Read()
{
    if (descriptor_ < 0) {
        OpenNext();
        return;
    }
    std::array<char, kReadSize> bytes;
    const ssize_t got = read(descriptor_, bytes.data(), bytes.size());
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got > 0) {
        lines_.Add({bytes.data(), static_cast<size_t>(got)});
        return;
    }
    if (got == 0)
        lines_.End();
    else // a line that came in part is not used
        Fail(fmt::format("cannot be read on, {}", SystemText(errno)));
    Close();
}

bool ManifestReader::Includes(const std::string &path) const
{
    return std::ranges::any_of(manifests_, [&](const std::string &name) {
        return name == "-" ? IsOpenAs(STDIN_FILENO, path) : IsSameFile(name, path);
    });
}

void ManifestReader::OpenNext()
{
    const BatchSource source = std::move(sources_.front());
    sources_.pop_front();
    if (source.kind == SourceKind::Document)
        found_.emplace().input = source.name;
    else if (source.kind == SourceKind::Folder)
        walk_.emplace(source.name, walks_.takesAll);
    if (source.kind != SourceKind::Manifest)
        return;
    name_ = source.name;
    lines_ = ManifestLines(name_, source.end);
    // Opening a pipe that nobody writes to yet must not hold up the documents at work.
    descriptor_ = name_ == "-" ? OpenStandardInput()
                               : open(name_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    struct stat status;
    if (descriptor_ < 0) {
        Fail(errno == ENOENT ? "no such file: check the name"
                             : fmt::format("cannot be opened, {}", SystemText(errno)));
    } else if (fstat(descriptor_, &status) == 0 && S_ISDIR(status.st_mode)) {
        Fail("is a directory: name a manifest in it");
        Close();
    }
}

void ManifestReader::Close()
{
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
}

// Makes an entry that is about the whole manifest.
void ManifestReader::Fail(std::string error)
{
    ManifestEntry &entry = found_.emplace();
    entry.manifest = name_;
    entry.error = std::move(error);
}

} // namespace vxhost
