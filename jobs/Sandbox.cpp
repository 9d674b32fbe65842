#include "jobs/Sandbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <memory>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

// Headers that are older than the kernel do not name these yet.
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

// Limits refuse once more what seccomp refuses, for a kernel without it.
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

// These are what memory, clocks, open files and an orderly end need. Everything else fails with "operation not permitted", which
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

// A condition on an argument, as far as the mask sees it.
struct Condition {
    unsigned argument;
    scmp_datum_t mask;
    scmp_datum_t value;
};

// A call that is allowed when all of its conditions hold.
struct PartlyAllowed {
    int call;
    std::array<Condition, 2> conditions;
};

constexpr scmp_datum_t kWhole = ~scmp_datum_t{0};
constexpr scmp_datum_t kUnnamedFile = O_TMPFILE & ~O_DIRECTORY;
constexpr scmp_datum_t kWrites = O_ACCMODE | O_CREAT | O_TRUNC | O_PATH | kUnnamedFile;
constexpr Condition kAlways = {0, 0, 0};
constexpr PartlyAllowed kPartlyAllowed[] = {
    {SCMP_SYS(open), {{{1, kWrites, O_RDONLY}, kAlways}}},
    {SCMP_SYS(openat), {{{2, kWrites, O_RDONLY}, kAlways}}},
    {SCMP_SYS(fcntl), {{{1, kWhole, F_DUPFD}, kAlways}}},
    {SCMP_SYS(fcntl), {{{1, kWhole, F_DUPFD_CLOEXEC}, kAlways}}},
    {SCMP_SYS(fcntl), {{{1, kWhole, F_GETFD}, kAlways}}},
    {SCMP_SYS(fcntl), {{{1, kWhole, F_SETFD}, kAlways}}},
    {SCMP_SYS(fcntl), {{{1, kWhole, F_GETFL}, kAlways}}},
    {SCMP_SYS(prlimit64), {{{0, kWhole, 0}, kAlways}}}, // a process may ask for its own
    // The limit of memory does not count what is shared, and nobody makes code.
    {SCMP_SYS(mmap), {{{2, PROT_EXEC, 0}, {3, MAP_TYPE, MAP_PRIVATE}}}},
    {SCMP_SYS(mprotect), {{{2, PROT_EXEC, 0}, kAlways}}},
};

// Fontconfig needs these to look through folders, and to keep what it found in files of its own. Which folders these are the
// rules of files say; they say nothing of modes and times, so these cannot be changed at all.
constexpr int kOfListingFonts[] = {
    SCMP_SYS(access),    SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(fcntl),   SCMP_SYS(flock),
    SCMP_SYS(getcwd),    SCMP_SYS(getdents),  SCMP_SYS(getdents64), SCMP_SYS(geteuid), SCMP_SYS(getuid),
    SCMP_SYS(link),      SCMP_SYS(linkat),    SCMP_SYS(mkdir),      SCMP_SYS(mkdirat), SCMP_SYS(open),
    SCMP_SYS(openat),    SCMP_SYS(readlink),  SCMP_SYS(readlinkat), SCMP_SYS(rename),  SCMP_SYS(renameat),
    SCMP_SYS(renameat2), SCMP_SYS(statfs),    SCMP_SYS(umask),      SCMP_SYS(uname),   SCMP_SYS(unlink),
    SCMP_SYS(unlinkat),
};

// A server takes connections and answers them. It makes none, since there can be no new socket.
constexpr int kOfServing[] = {
    SCMP_SYS(accept4), SCMP_SYS(epoll_ctl), SCMP_SYS(epoll_pwait), SCMP_SYS(epoll_wait), SCMP_SYS(recvfrom),
    SCMP_SYS(sendmsg), SCMP_SYS(sendto),    SCMP_SYS(setsockopt),  SCMP_SYS(shutdown),   SCMP_SYS(wait4),
};

// Returns 0, or why they cannot be made.
int MakeRules(SystemCalls calls, pid_t process, std::vector<sock_filter> *rules)
{
    const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                                  seccomp_release);
    if (filter == nullptr)
        return ENOSYS;
    // As a tree: the kernel tries it with each call that there is, whenever a process takes it.
    constexpr uint32_t kTree = 2;
    (void)seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, kTree);
    // A rule for a call that this machine has not is refused, and not needed.
    const auto allow = [&filter](int call) { (void)seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0); };
    const auto allowPartly = [&filter](const PartlyAllowed &rule) {
        scmp_arg_cmp compared[2];
        unsigned count = 0;
        for (const auto &[argument, mask, value] : rule.conditions) {
            if (mask != 0)
                compared[count++] = {argument, SCMP_CMP_MASKED_EQ, mask, value};
        }
        (void)seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, rule.call, count, compared);
    };
    std::ranges::for_each(kAllowed, allow);
    std::ranges::for_each(kPartlyAllowed, allowPartly);
    if (calls == SystemCalls::OfListingFonts)
        std::ranges::for_each(kOfListingFonts, allow);
    if (calls == SystemCalls::OfServing)
        std::ranges::for_each(kOfServing, allow);
    // A signal for itself is how a process aborts.
    allowPartly({SCMP_SYS(tgkill), {{{0, kWhole, static_cast<scmp_datum_t>(process)}, kAlways}}});

    // They come out as bytes, of which a pipe holds more than the kernel takes.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    const Descriptor out(ends[0]), in(ends[1]);
    const int failure = seccomp_export_bpf(filter.get(), in.Get());
    if (failure != 0)
        return -failure;
    rules->resize(BPF_MAXINSNS);
    const ssize_t bytes = read(out.Get(), rules->data(), rules->size() * sizeof(sock_filter));
    rules->resize(static_cast<size_t>(std::max<ssize_t>(bytes, 0)) / sizeof(sock_filter));
    return rules->empty() ? EIO : 0;
}

// Returns 0, or why it cannot be.
int ConfineCalls(const CallRules &calls)
{
    std::vector<sock_filter> rules = calls.ForProcess(getpid());
    if (rules.empty())
        return calls.Error();
    const sock_fprog program = {static_cast<unsigned short>(rules.size()), rules.data()};
    // The call returns the thread that cannot be confined, which would be one that is confined otherwise.
    const long unconfined =
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program);
    return unconfined == 0 ? 0 : unconfined < 0 ? errno : ESRCH;
}

} // namespace

FileRules::FileRules()
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        error_ = errno;
        return;
    }
    handled_ = HandledAccess(version);
    const landlock_ruleset_attr attributes = {handled_};
    rules_.Take(static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
    error_ = rules_.Get() < 0 ? errno : 0;
}

void FileRules::Allow(const std::string &path, uint64_t access, mode_t kind)
{
    const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status;
    if (place.Get() < 0 || fstat(place.Get(), &status) != 0 || (status.st_mode & S_IFMT) != kind)
        return;
    const landlock_path_beneath_attr rule = {access & handled_, place.Get()};
    (void)syscall(SYS_landlock_add_rule, rules_.Get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}

void FileRules::Read(const std::string &file)
{
    Allow(file, LANDLOCK_ACCESS_FS_READ_FILE, S_IFREG);
}

void FileRules::ReadAll()
{
    Allow("/", LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR, S_IFDIR);
}

void FileRules::WriteIn(const std::string &folder)
{
    Allow(folder,
          LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE |
              LANDLOCK_ACCESS_FS_MAKE_DIR | kRefer | kTruncate,
          S_IFDIR);
}

// A rule compares words of 32 bits. No process has that number.
constexpr pid_t kNobody = 0x7FFFFFFF;

CallRules::CallRules(SystemCalls calls) : error_(MakeRules(calls, kNobody, &rules_))
{
    const auto names = [](const sock_filter &rule) {
        return rule.code == (BPF_JMP | BPF_JEQ | BPF_K) && rule.k == static_cast<uint32_t>(kNobody);
    };
    process_ = static_cast<size_t>(std::ranges::find_if(rules_, names) - rules_.begin());
    if (error_ == 0 && std::ranges::count_if(rules_, names) != 1)
        error_ = ENOSYS;
}

std::vector<sock_filter> CallRules::ForProcess(pid_t process) const
{
    if (error_ != 0)
        return {};
    std::vector<sock_filter> rules = rules_;
    rules[process_].k = static_cast<uint32_t>(process);
    return rules;
}

// Files are taken from the calling thread and those that it makes from then on, calls from all threads at once.
Confinement EnterSandbox(const FileRules &files, const CallRules &calls,
                         const std::function<void()> &makeThreads)
{
    Confinement confinement;
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        confinement.landlockError = confinement.seccompError = errno;
        return confinement;
    }
    confinement.landlockError = files.Error();
    if (files.Get() >= 0 && syscall(SYS_landlock_restrict_self, files.Get(), 0) != 0)
        confinement.landlockError = errno;
    if (makeThreads)
        makeThreads();
    ConfineResources();
    confinement.seccompError = ConfineCalls(calls);
    confinement.byLandlock = confinement.landlockError == 0;
    confinement.bySeccomp = confinement.seccompError == 0;
    return confinement;
}

} // namespace vxhost
