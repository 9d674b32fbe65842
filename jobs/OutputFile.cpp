#include "jobs/OutputFile.h"

#include "host/TemporaryFile.h"
#include "jobs/Interrupt.h"
#include "jobs/PartFiles.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr int kMaxAttempts = 1000;   // more than outputs under way at once
constexpr mode_t kOutputMode = 0666; // less what the user's mask takes away
constexpr mode_t kPermissions = 0777;

// A link is written through, so that it still is one afterwards. One that leads nowhere is replaced.
std::string ResolveLinks(const std::string &path)
{
    std::error_code failure;
    const fs::path resolved = fs::weakly_canonical(path, failure);
    return failure ? path : resolved.string();
}

fs::path FolderOf(const std::string &path)
{
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

// Returns the path by which a file without a name can be given one.
std::string DescriptorPath(int descriptor)
{
    return fmt::format("/proc/self/fd/{}", descriptor);
}

// Opens a file without a name. Returns -1 also where it could not be given one later.
int OpenNameable(const fs::path &folder)
{
    const int descriptor = OpenUnnamed(folder, kOutputMode);
    if (descriptor < 0 || access(DescriptorPath(descriptor).c_str(), F_OK) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

Fault FaultOf(int error)
{
    return {error == ENOENT || error == ENOTDIR ? FaultKind::NoFolder : FaultKind::CannotWrite, "", error};
}

bool WasWrittenSince(const timespec &since, const std::string &path)
{
    struct stat present;
    return stat(path.c_str(), &present) == 0 &&
           std::tie(present.st_ctim.tv_sec, present.st_ctim.tv_nsec) >= std::tie(since.tv_sec, since.tv_nsec);
}

} // namespace

bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(written < 0 ? 0 : static_cast<size_t>(written));
    }
    return true;
}

std::unique_ptr<OutputFile> OutputFile::Create(const std::string &path, const OutputRules &rules,
                                               Fault *fault)
{
    std::unique_ptr<OutputFile> file(new OutputFile(rules));
    struct stat present;
    if (path == "-") {
        file->target_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        *fault = file->target_ >= 0 ? file->Spool() : FaultOf(errno);
    } else if (stat(path.c_str(), &present) != 0 || S_ISREG(present.st_mode)) {
        file->path_ = ResolveLinks(path);
        *fault = file->CreateBeside();
    } else if (S_ISDIR(present.st_mode)) {
        *fault = {FaultKind::OutputIsFolder};
    } else if (std::string kind = WhichKindIsRefused(present.st_mode, rules.kinds); !kind.empty()) {
        *fault = {FaultKind::OutputIsSpecial, std::move(kind)};
    } else {
        *fault = file->OpenTarget(path, present.st_mode);
        if (!*fault)
            *fault = file->Spool();
    }
    return *fault ? nullptr : std::move(file);
}

std::unique_ptr<OutputFile> OutputFile::CreateUnnamed(const OutputRules &rules, Fault *fault)
{
    std::unique_ptr<OutputFile> file(new OutputFile(rules));
    if (rules.staysInMemory) {
        file->descriptor_ = memfd_create("output", MFD_CLOEXEC);
        *fault = file->descriptor_ < 0 ? FaultOf(errno) : Fault{};
    } else {
        *fault = file->Spool();
    }
    return *fault ? nullptr : std::move(file);
}

OutputFile::~OutputFile()
{
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
        KeepWhenInterrupted(temporary_);
    }
    for (const int descriptor : {descriptor_, target_}) {
        if (descriptor >= 0)
            close(descriptor);
    }
}

Fault OutputFile::OpenTarget(const std::string &path, mode_t mode)
{
    target_ = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    // Whoever reads it is waited for while there is one.
    if (target_ >= 0 && fcntl(target_, F_SETFL, 0) == 0)
        return {};
    return errno == ENXIO && S_ISFIFO(mode) ? Fault{FaultKind::NobodyReads} : FaultOf(errno);
}

Fault OutputFile::CreateBeside()
{
    struct stat present;
    const bool exists = stat(path_.c_str(), &present) == 0;
    if (exists && access(path_.c_str(), W_OK) != 0)
        return FaultOf(errno); // the folder may allow what the file's own permissions forbid
    std::error_code failure;
    if (rules_.makesFolders && !fs::create_directories(FolderOf(path_), failure) && failure)
        return FaultOf(failure.value());
    RemoveAbandoned(FolderOf(path_));
    descriptor_ = OpenNameable(FolderOf(path_));
    const auto openNamed = [this](const char *name) {
        descriptor_ = open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOutputMode);
        return descriptor_ >= 0;
    };
    if ((descriptor_ < 0 && !TakeTemporaryName(openNamed)) ||
        (exists && fchmod(descriptor_, present.st_mode & kPermissions) != 0))
        return FaultOf(errno);
    MarkAsOurs(descriptor_);
    return {};
}

// makeName gives the file the name that it is called with, or returns false with errno set.
template <typename MakeName>
bool OutputFile::TakeTemporaryName(const MakeName &makeName)
{
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        const std::string name = (FolderOf(path_) / PartName(getpid(), attempt)).string();
        // The handler of interrupts knows the name before the file has it, so that there is no moment in which an interrupt
        // would leave it behind. It knows the names of our other outputs already.
        if (access(name.c_str(), F_OK) == 0)
            continue;
        RemoveWhenInterrupted(name);
        if (makeName(name.c_str())) {
            temporary_ = name;
            return true;
        }
        const int failure = errno;
        KeepWhenInterrupted(name);
        errno = failure;
        if (failure != EEXIST)
            return false;
    }
    return false;
}

Fault OutputFile::Spool()
{
    descriptor_ = OpenTemporaryFile();
    if (descriptor_ >= 0)
        return {};
    return {FaultKind::NoTemporaryFile, TemporaryFolder(), errno};
}

void OutputFile::Empty()
{
    (void)ftruncate(descriptor_,
                    0); // the file is ours; if it cannot be emptied, it cannot be written again either
    (void)lseek(descriptor_, 0, SEEK_SET);
}

Fault OutputFile::Commit()
{
    return target_ >= 0 ? CopyTo(target_) : TakeName();
}

Fault OutputFile::TakeName()
{
    const auto link = [this](const char *name) {
        return linkat(AT_FDCWD, DescriptorPath(descriptor_).c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
    };
    if (rules_.onceSince && WasWrittenSince(*rules_.onceSince, path_))
        return {FaultKind::OutputTaken};
    // Some file systems report a full disk only here. A name must not stand for a file that is not on the disk.
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != ENOTSUP)
        return FaultOf(errno);
    // A link does not replace what has the name, a renaming does.
    const bool isUnnamed = temporary_.empty();
    if (isUnnamed && link(path_.c_str()))
        return {};
    if ((isUnnamed && (errno != EEXIST || !TakeTemporaryName(link))) ||
        rename(temporary_.c_str(), path_.c_str()) != 0)
        return FaultOf(errno);
    KeepWhenInterrupted(temporary_);
    temporary_.clear();
    return {};
}

Fault OutputFile::CopyTo(int target)
{
    std::array<char, 1 << 16> buffer;
    off_t at = 0;
    while (true) {
        const ssize_t got = pread(descriptor_, buffer.data(), buffer.size(), at);
        if (got == 0)
            return {};
        if (got < 0 || !WriteAll(target, {buffer.data(), static_cast<size_t>(got)}))
            return errno == EPIPE ? Fault{FaultKind::ReaderLeft} : FaultOf(errno);
        at += got;
    }
}

} // namespace vxhost
