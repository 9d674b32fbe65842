#include "jobs/PartFiles.h"

#include "host/FileReading.h"
#include "library/OptionValues.h"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = ".vx-";
constexpr std::string_view kSuffix = ".part";

// The process of a name that is spelt as PartName does.
std::optional<pid_t> ProcessOf(std::string_view name)
{
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix) ||
        name.size() < kPrefix.size() + kSuffix.size())
        return std::nullopt;
    const std::string_view numbers =
        name.substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size());
    const size_t dash = numbers.find('-');
    const std::optional<int32_t> process = ReadInteger(numbers.substr(0, dash));
    const std::optional<int32_t> number =
        dash == std::string_view::npos ? std::nullopt : ReadInteger(numbers.substr(dash + 1));
    if (!process || !number || *process < 1 || PartName(*process, *number) != name)
        return std::nullopt;
    return *process;
}

// A container may give every run the same number: then that of an earlier run is our own.
bool IsGone(pid_t process)
{
    return process == getpid() || (kill(process, 0) != 0 && errno == ESRCH);
}

bool IsAbandoned(const fs::path &path)
{
    struct stat status;
    const Descriptor file(open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return file.Get() >= 0 && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() && flock(file.Get(), LOCK_EX | LOCK_NB) == 0;
}

} // namespace

std::string PartName(pid_t process, int number)
{
    return fmt::format("{}{}-{}{}", kPrefix, process, number, kSuffix);
}

void MarkAsOurs(int descriptor)
{
    (void)flock(descriptor,
                LOCK_EX | LOCK_NB); // where there are no locks, nobody gets one to remove it either
}

void RemoveAbandoned(const fs::path &folder)
{
    static std::unordered_set<size_t> seen; // by a hash, as there may be any number of folders
    if (!seen.insert(std::hash<std::string>()(folder.string())).second)
        return;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end; at.increment(failure)) {
        const std::optional<pid_t> process = ProcessOf(at->path().filename().native());
        if (process && IsGone(*process) && IsAbandoned(at->path()))
            (void)unlink(at->path().c_str());
    }
}

} // namespace vxhost
