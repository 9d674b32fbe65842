#include "cli/OutputFile.h"

#include "cli/Interrupt.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr int kMaxAttempts = 100;

// A link is written through, so that it still is one afterwards. One that leads nowhere is replaced.
std::string ResolveLinks(const std::string &path)
{
    std::error_code failure;
    const fs::path resolved = fs::weakly_canonical(path, failure);
    return failure ? path : resolved.string();
}

std::string CreateError(int error)
{
    if (error == ENOENT || error == ENOTDIR)
        return "no such folder: make it first";
    return fmt::format("cannot be written, {}: choose another place with -o", SystemText(error));
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

std::string SystemText(int error)
{
    std::string text = std::strerror(error);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z')
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

std::unique_ptr<OutputFile> OutputFile::Create(const std::string &path, std::string *error)
{
    std::unique_ptr<OutputFile> file(new OutputFile);
    if (path == "-") {
        file->target_ = dup(STDOUT_FILENO);
        if (file->target_ >= 0)
            return file->Spool(error) ? std::move(file) : nullptr;
        *error = CreateError(errno);
        return nullptr;
    }

    struct stat present;
    const bool exists = stat(path.c_str(), &present) == 0;
    if (exists && S_ISDIR(present.st_mode)) {
        *error = "is a directory: name a file in it";
        return nullptr;
    }
    if (exists && !S_ISREG(present.st_mode)) {
        file->target_ = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        if (file->target_ >= 0)
            return file->Spool(error) ? std::move(file) : nullptr;
        *error = CreateError(errno);
        return nullptr;
    }
    file->path_ = ResolveLinks(path);
    return file->CreateBeside(error) ? std::move(file) : nullptr;
}

OutputFile::~OutputFile()
{
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
        RemoveWhenInterrupted("");
    }
    for (const int descriptor : {descriptor_, target_}) {
        if (descriptor >= 0)
            close(descriptor);
    }
}

bool OutputFile::CreateBeside(std::string *error)
{
    struct stat present;
    const bool exists = stat(path_.c_str(), &present) == 0;
    if (exists && access(path_.c_str(), W_OK) != 0) {
        *error = CreateError(errno); // the folder may allow what the file's own permissions forbid
        return false;
    }
    const fs::path folder = fs::path(path_).parent_path();
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        const std::string name = (folder / fmt::format(".vx-{}-{}.part", getpid(), attempt)).string();
        // The handler knows the name before the file exists: there is no moment in which it would stay behind.
        RemoveWhenInterrupted(name);
        descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) {
            temporary_ = name;
            if (exists && fchmod(descriptor_, present.st_mode & 07777) != 0) {
                *error = CreateError(errno);
                return false;
            }
            return true;
        }
        RemoveWhenInterrupted("");
        if (errno != EEXIST)
            break;
    }
    *error = CreateError(errno);
    return false;
}

bool OutputFile::Spool(std::string *error)
{
    std::string name = (fs::temp_directory_path() / "vx-XXXXXX").string();
    descriptor_ = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        *error = fmt::format("no room for a temporary file, {}: set TMPDIR to a folder with space",
                             SystemText(errno));
        return false;
    }
    unlink(name.c_str());
    return true;
}

bool OutputFile::Commit(std::string *error)
{
    return target_ >= 0 ? CopyTo(target_, error) : Rename(error);
}

bool OutputFile::Rename(std::string *error)
{
    // Some file systems report a full disk only here.
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != ENOTSUP) {
        *error = CreateError(errno);
        return false;
    }
    if (rename(temporary_.c_str(), path_.c_str()) != 0) {
        *error = CreateError(errno);
        return false;
    }
    temporary_.clear();
    RemoveWhenInterrupted("");
    return true;
}

bool OutputFile::CopyTo(int target, std::string *error)
{
    std::array<char, 1 << 16> buffer;
    off_t at = 0;
    while (true) {
        const ssize_t got = pread(descriptor_, buffer.data(), buffer.size(), at);
        if (got == 0)
            return true;
        if (got < 0 || !WriteAll(target, {buffer.data(), static_cast<size_t>(got)})) {
            *error = errno == EPIPE ? "" : CreateError(errno);
            return false;
        }
        at += got;
    }
}

} // namespace vxhost
