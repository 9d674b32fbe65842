#include "cli/Sandbox.h"

#include "host/FileReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <memory>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

// What headers older than the kernel do not name yet.
constexpr uint64_t kRefer = uint64_t{1} << 13;
constexpr uint64_t kTruncate = uint64_t{1} << 14;
constexpr uint64_t kDeviceControl = uint64_t{1} << 15;

// All ways to reach a file that this version of Landlock can take away.
uint64_t HandledAccess(long version)
{
    uint64_t access = (uint64_t{LANDLOCK_ACCESS_FS_MAKE_SYM} << 1) - 1;
    if (version >= 2)
        access |= kRefer;
    if (version >= 3)
        access |= kTruncate;
    if (version >= 5)
        access |= kDeviceControl;
    return access;
}

// What seccomp refuses is refused here once more, for a kernel without it.
void ConfineResources()
{
    constexpr rlim_t kFiles = 256; // fonts are closed as soon as they are mapped
    constexpr std::pair<__rlimit_resource, rlim_t> kMost[] = {{RLIMIT_CORE, 0},
                                                              {RLIMIT_NPROC, 0},
                                                              {RLIMIT_MEMLOCK, 0},
                                                              {RLIMIT_MSGQUEUE, 0},
                                                              {RLIMIT_NOFILE, kFiles}};
    for (const auto &[resource, most] : kMost) {
        rlimit limit = {};
        if (getrlimit(resource, &limit) != 0)
            continue;
        const rlim_t lower = std::min(limit.rlim_max, most);
        limit = {lower, lower};
        (void)setrlimit(resource, &limit); // lowering is always allowed
    }
}

std::string ConfineFiles(std::span<const std::string> readable)
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return fmt::format("files, no Landlock in this kernel ({})", SystemText(errno));
    const landlock_ruleset_attr handled = {HandledAccess(version)};
    const Descriptor rules(
        static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0)));
    if (rules.Get() < 0)
        return fmt::format("files, {}", SystemText(errno));
    for (const std::string &path : readable) {
        const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
        if (place.Get() < 0)
            continue; // what is not there cannot be read either
        const landlock_path_beneath_attr rule = {LANDLOCK_ACCESS_FS_READ_FILE, place.Get()};
        (void)syscall(SYS_landlock_add_rule, rules.Get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
    if (syscall(SYS_landlock_restrict_self, rules.Get(), 0) != 0)
        return fmt::format("files, {}", SystemText(errno));
    return "";
}

// What memory, clocks, open files and an orderly end need. Everything else fails with "operation not permitted", which
// a library takes better than a sudden end.
constexpr int kAllowed[] = {
    SCMP_SYS(brk),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(close),
    SCMP_SYS(dup),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(fadvise64),
    SCMP_SYS(fallocate),
    SCMP_SYS(fdatasync),
    SCMP_SYS(fstat),
    SCMP_SYS(fstat64),
    SCMP_SYS(fstatfs),
    SCMP_SYS(fsync),
    SCMP_SYS(ftruncate),
    SCMP_SYS(futex),
    SCMP_SYS(getpid),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrusage),
    SCMP_SYS(gettid),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(lseek),
    SCMP_SYS(lstat),
    SCMP_SYS(madvise),
    SCMP_SYS(mmap),
    SCMP_SYS(mprotect),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    SCMP_SYS(nanosleep),
    SCMP_SYS(newfstatat),
    SCMP_SYS(pipe2), // through which a sanitizer looks whether memory can be read
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(pread64),
    SCMP_SYS(preadv),
    SCMP_SYS(pwrite64),
    SCMP_SYS(pwritev),
    SCMP_SYS(read),
    SCMP_SYS(readv),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sched_yield),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(stat),
    SCMP_SYS(statx),
    SCMP_SYS(sysinfo),
    SCMP_SYS(write),
    SCMP_SYS(writev),
};

// A call that is allowed as long as one argument, as far as the mask sees it, has a value.
struct PartlyAllowed {
    int call;
    unsigned argument;
    scmp_datum_t mask;
    scmp_datum_t value;
};

constexpr scmp_datum_t kWrites = O_ACCMODE | O_CREAT | O_TRUNC;
constexpr scmp_datum_t kWhole = ~scmp_datum_t{0};
constexpr PartlyAllowed kPartlyAllowed[] = {
    {SCMP_SYS(open), 1, kWrites, O_RDONLY}, {SCMP_SYS(openat), 2, kWrites, O_RDONLY},
    {SCMP_SYS(fcntl), 1, kWhole, F_DUPFD},  {SCMP_SYS(fcntl), 1, kWhole, F_DUPFD_CLOEXEC},
    {SCMP_SYS(fcntl), 1, kWhole, F_GETFD},  {SCMP_SYS(fcntl), 1, kWhole, F_SETFD},
    {SCMP_SYS(fcntl), 1, kWhole, F_GETFL},  {SCMP_SYS(prlimit64), 0, kWhole, 0}, // of itself
};

std::string ConfineCalls()
{
    const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                                  seccomp_release);
    if (filter == nullptr)
        return "calls, no seccomp in this kernel";
    for (const int call : kAllowed)
        (void)seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0); // not every machine has every call
    const auto allow = [&filter](const PartlyAllowed &rule) {
        const scmp_arg_cmp condition = {rule.argument, SCMP_CMP_MASKED_EQ, rule.mask, rule.value};
        (void)seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, rule.call, 1, &condition);
    };
    for (const PartlyAllowed &rule : kPartlyAllowed)
        allow(rule);
    // A signal for itself is how a process aborts.
    allow({SCMP_SYS(tgkill), 0, kWhole, static_cast<scmp_datum_t>(getpid())});
    const int error = -seccomp_load(filter.get());
    return error > 0 ? fmt::format("calls, {}", SystemText(error)) : "";
}

} // namespace

std::string EnterSandbox(std::span<const std::string> readable)
{
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return fmt::format("files and calls, {}", SystemText(errno));
    ConfineResources();
    std::string lacking = ConfineFiles(readable);
    const std::string calls = ConfineCalls();
    if (!lacking.empty() && !calls.empty())
        lacking += "; ";
    return lacking + calls;
}

} // namespace vxhost
