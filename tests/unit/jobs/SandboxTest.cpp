// What a process that was confined can still reach of files. It is another than that of the tests.
#include "jobs/Sandbox.h"

#include "jobs/ThreadCrew.h"
#include "tests/unit/jobs/JobsFolder.h"

#include <atomic>
#include <barrier>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vxhost
{
namespace
{

namespace fs = std::filesystem;

class SandboxTest : public JobsFolder
{
  protected:
    void SetUp() override
    {
        JobsFolder::SetUp();
        if (FileRules().Get() < 0)
            GTEST_SKIP() << "this kernel has no Landlock";
        fs::create_directory(Path("folder"));
        Write("folder/one", "1");
        Write("folder/two", "2");
    }
};

// 0 or the errno, of an attempt in a process that is confined by the rules.
int TryConfined(const FileRules &rules, SystemCalls calls, const std::function<long()> &attempt)
{
    const pid_t process = fork();
    if (process == 0) {
        const Confinement confinement = EnterSandbox(rules, CallRules(calls));
        _exit(!confinement.IsWhole() ? 255 : attempt() < 0 ? errno : 0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

int Open(const FileRules &rules, SystemCalls calls, const std::string &path, int flags)
{
    return TryConfined(rules, calls, [&] { return open(path.c_str(), flags, 0600); });
}

int ReadBy(const FileRules &rules, const std::string &path)
{
    return Open(rules, SystemCalls::OfReading, path, O_RDONLY);
}

TEST_F(SandboxTest, LeavesNothingInReach)
{
    const FileRules rules;
    EXPECT_EQ(rules.Error(), 0);
    EXPECT_EQ(ReadBy(rules, Path("folder/one")), EACCES);
    EXPECT_EQ(ReadBy(rules, Path("folder")), EACCES);
}

TEST_F(SandboxTest, LeavesTheFilesThatAreNamed)
{
    FileRules rules;
    rules.Read(Path("folder/one"));
    EXPECT_EQ(ReadBy(rules, Path("folder/one")), 0);
    EXPECT_EQ(ReadBy(rules, Path("folder/two")), EACCES);
    EXPECT_EQ(ReadBy(rules, Path("folder")), EACCES);
    EXPECT_EQ(Open(rules, SystemCalls::OfReading, Path("folder/one"), O_WRONLY), EPERM);
    rules.Read(Path("folder/two")); // for processes that are confined from now on
    EXPECT_EQ(ReadBy(rules, Path("folder/two")), 0);
}

TEST_F(SandboxTest, LeavesTheFileThatALinkLeadsTo)
{
    fs::create_symlink("folder/one", Path("link"));
    FileRules rules;
    rules.Read(Path("link"));
    EXPECT_EQ(ReadBy(rules, Path("link")), 0);
    EXPECT_EQ(ReadBy(rules, Path("folder/one")), 0);
    fs::remove(Path("link"));
    fs::create_symlink("folder/two", Path("link"));
    EXPECT_EQ(ReadBy(rules, Path("link")), EACCES);
}

// A list of fonts comes from a process that nobody trusts.
TEST_F(SandboxTest, LeavesNothingOfAFolderThatIsNamedAsAFile)
{
    FileRules rules;
    for (const std::string &folder : {Path("folder"), Path("folder/"), std::string("/")})
        rules.Read(folder);
    EXPECT_EQ(ReadBy(rules, Path("folder/one")), EACCES);
    EXPECT_EQ(ReadBy(rules, "/etc/passwd"), EACCES);
}

TEST_F(SandboxTest, PassesOverWhatIsNotThere)
{
    FileRules rules;
    rules.Read(Path("none"));
    rules.WriteIn(Path("none"));
    fs::create_directory(Path("none"));
    Write("none/one", "");
    EXPECT_EQ(ReadBy(rules, Path("none/one")), EACCES);
}

class ConfinedThreads : public SandboxTest
{
  protected:
    static constexpr size_t kThreads = 4;

    // The probes whose outcome is not the expected one in some thread of a confined process: bit i is that of probe i. 255: it is
    // not confined, or has other threads.
    struct Probe {
        std::function<long()> attempt;
        int expected; // 0 or the errno
    };
    static int FindWrong(const std::vector<Probe> &probes)
    {
        const FileRules rules;
        const CallRules calls(SystemCalls::OfReading);
        const pid_t process = fork();
        if (process == 0) {
            ThreadCrew crew;
            const Confinement confinement = EnterSandbox(rules, calls, [&] { crew.Start(kThreads); });
            if (!confinement.IsWhole() || crew.Size() != kThreads)
                _exit(255);
            std::atomic<int> wrong = 0;
            std::barrier<> allAtOnce(kThreads); // so that each takes one lane
            crew.Begin(kThreads, 1, [&](size_t, size_t) {
                allAtOnce.arrive_and_wait();
                for (size_t i = 0; i < probes.size(); ++i) {
                    const int outcome = probes[i].attempt() < 0 ? errno : 0;
                    wrong |= outcome == probes[i].expected ? 0 : 1 << i;
                }
            });
            (void)crew.Post();
            _exit(wrong);
        }
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        EXPECT_TRUE(WIFEXITED(status)) << status;
        return WEXITSTATUS(status);
    }
};

TEST_F(ConfinedThreads, ReachNoMoreThanTheirProcess)
{
    const std::string file = Path("folder/one"), link = Path("link");
    const pid_t others = getpid();
    EXPECT_EQ(FindWrong({
                  {[&] { return open(file.c_str(), O_RDONLY); }, EACCES},
                  {[&] { return open(file.c_str(), O_WRONLY); }, EPERM},
                  {[&] { return open(Path("folder/new").c_str(), O_WRONLY | O_CREAT, 0600); }, EPERM},
                  {[&] { return unlink(file.c_str()); }, EPERM},
                  {[&] { return symlink(file.c_str(), link.c_str()); }, EPERM},
                  {[&] { return chmod(file.c_str(), 0777); }, EPERM},
              }),
              0);
    EXPECT_EQ(FindWrong({
                  {[] { return socket(AF_INET, SOCK_STREAM, 0); }, EPERM},
                  {[] { return socket(AF_UNIX, SOCK_STREAM, 0); }, EPERM},
                  {[&] { return syscall(SYS_tgkill, others, others, 0); }, EPERM},
                  {[] { return syscall(SYS_tgkill, getpid(), gettid(), 0); }, 0},
                  {[] { return syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0); }, EPERM},
                  {[] { return execl("/none", "none", nullptr); }, EPERM},
              }),
              0);
    const auto map = [](int protection, int flags) {
        return mmap(nullptr, 4096, protection, flags | MAP_ANONYMOUS, -1, 0) == MAP_FAILED ? -1L : 0L;
    };
    const auto makeThread = [] {
        pthread_t thread;
        errno = pthread_create(
            &thread, nullptr, [](void *) -> void * { return nullptr; }, nullptr);
        return errno == 0 ? 0L : -1L;
    };
    EXPECT_EQ(FindWrong({
                  {[&] { return map(PROT_READ | PROT_WRITE, MAP_PRIVATE); }, 0},
                  {[&] { return map(PROT_READ | PROT_EXEC, MAP_PRIVATE); }, EPERM},
                  {[&] { return map(PROT_READ | PROT_WRITE, MAP_SHARED); }, EPERM},
                  {makeThread, EPERM},
              }),
              0);
}

// Rules that were made once hold for each process.
TEST(CallRulesTest, LetAProcessSendSignalsToItselfAlone)
{
    const FileRules files;
    const pid_t others = getpid();
    for (const SystemCalls calls :
         {SystemCalls::OfReading, SystemCalls::OfListingFonts, SystemCalls::OfServing}) {
        const CallRules rules(calls);
        ASSERT_EQ(rules.Error(), 0);
        for (int i = 0; i < 2; ++i) {
            const pid_t process = fork();
            if (process == 0) {
                (void)EnterSandbox(files, rules);
                const bool toItself = syscall(SYS_tgkill, getpid(), gettid(), 0) == 0;
                const bool toOthers = syscall(SYS_tgkill, others, others, 0) == 0 || errno != EPERM;
                const bool toNobody = syscall(SYS_tgkill, 0x7FFFFFFF, 1, 0) == 0 || errno != EPERM;
                _exit((toItself ? 0 : 1) | (toOthers ? 2 : 0) | (toNobody ? 4 : 0));
            }
            int status = 0;
            ASSERT_EQ(waitpid(process, &status, 0), process);
            EXPECT_EQ(status, 0);
        }
    }
}

TEST(CallRulesTest, DifferInTheProcessAlone)
{
    const CallRules rules(SystemCalls::OfReading);
    const auto one = rules.ForProcess(1), another = rules.ForProcess(70'000);
    ASSERT_EQ(one.size(), another.size());
    ASSERT_FALSE(one.empty());
    int differ = 0;
    for (size_t i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one[i].code, another[i].code);
        EXPECT_EQ(one[i].jt, another[i].jt);
        EXPECT_EQ(one[i].jf, another[i].jf);
        differ += one[i].k != another[i].k ? 1 : 0;
    }
    EXPECT_EQ(differ, 1);
}

TEST_F(SandboxTest, LetsFontsBeListedAndFilesOfACacheBeKept)
{
    FileRules rules;
    rules.ReadAll();
    fs::create_directory(Path("cache"));
    rules.WriteIn(Path("cache"));
    const auto tried = [&](const std::function<long()> &attempt) {
        return TryConfined(rules, SystemCalls::OfListingFonts, attempt);
    };
    const auto opened = [&](std::string_view name, int flags) {
        return Open(rules, SystemCalls::OfListingFonts, Path(name), flags);
    };
    EXPECT_EQ(opened("folder/one", O_RDONLY), 0);
    EXPECT_EQ(opened("folder", O_RDONLY | O_DIRECTORY), 0);
    EXPECT_EQ(opened("cache/new", O_WRONLY | O_CREAT), 0);
    EXPECT_EQ(tried([&] { return rename(Path("cache/new").c_str(), Path("cache/newer").c_str()); }), 0);
    EXPECT_EQ(tried([&] { return unlink(Path("cache/newer").c_str()); }), 0);
    EXPECT_EQ(opened("folder/one", O_WRONLY), EACCES);
    EXPECT_EQ(opened("folder/new", O_WRONLY | O_CREAT), EACCES);
    EXPECT_EQ(opened("new", O_WRONLY | O_CREAT), EACCES);
    EXPECT_EQ(tried([&] { return unlink(Path("folder/one").c_str()); }), EACCES);
    EXPECT_EQ(tried([&] { return mkdir(Path("new").c_str(), 0700); }), EACCES);
    EXPECT_EQ(tried([&] { return rename(Path("folder/one").c_str(), Path("cache/one").c_str()); }), EACCES);
    EXPECT_EQ(tried([&] { return symlink("one", Path("cache/link").c_str()); }), EPERM);
}

TEST_F(SandboxTest, LetsAServerAnswerAndConnectToNobody)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const place = reinterpret_cast<sockaddr *>(&address);
    const Descriptor listening(socket(AF_INET, SOCK_STREAM, 0)), client(socket(AF_INET, SOCK_STREAM, 0)),
        spare(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(bind(listening.Get(), place, size), 0);
    ASSERT_EQ(listen(listening.Get(), 1), 0);
    ASSERT_EQ(getsockname(listening.Get(), place, &size), 0);
    ASSERT_EQ(connect(client.Get(), place, size), 0);
    const auto tried = [](const std::function<long()> &attempt) {
        return TryConfined(FileRules(), SystemCalls::OfServing, attempt);
    };
    const auto answer = [&] {
        const int connection = accept4(listening.Get(), nullptr, nullptr, SOCK_CLOEXEC);
        return connection < 0 ? -1 : send(connection, "1", 1, MSG_NOSIGNAL);
    };
    EXPECT_EQ(TryConfined(FileRules(), SystemCalls::OfReading, answer), EPERM);
    EXPECT_EQ(tried(answer), 0);
    char got = 0;
    EXPECT_EQ(recv(client.Get(), &got, 1, 0), 1);
    EXPECT_EQ(got, '1');
    EXPECT_EQ(tried([] { return socket(AF_INET, SOCK_STREAM, 0); }), EPERM);
    EXPECT_EQ(tried([&] { return connect(spare.Get(), place, size); }), EPERM);
    EXPECT_EQ(tried([&] { return bind(spare.Get(), place, size); }), EPERM);
    EXPECT_EQ(tried([&] { return listen(spare.Get(), 1); }), EPERM);
    EXPECT_EQ(tried([&] { return open(Path("folder/one").c_str(), O_RDONLY); }), EACCES);
    EXPECT_EQ(tried([] { return execl("/bin/true", "true", nullptr); }), EPERM);
    EXPECT_EQ(tried([] { return fork(); }), EPERM);
}

// No rule of files knows of these.
TEST_F(SandboxTest, LetsNobodyChangeModesTimesAndOwners)
{
    FileRules rules;
    rules.ReadAll();
    rules.WriteIn(Path("folder"));
    const std::string path = Path("folder/one");
    const std::vector<std::function<long()>> attempts = {
        [&] { return chmod(path.c_str(), 0777); },
        [&] { return fchmodat(AT_FDCWD, path.c_str(), 0777, 0); },
        [&] { return fchmod(open(path.c_str(), O_RDONLY), 0777); },
        [&] { return utimensat(AT_FDCWD, path.c_str(), nullptr, 0); },
        [&] { return chown(path.c_str(), 0, 0); },
    };
    for (const auto &attempt : attempts) {
        EXPECT_EQ(TryConfined(rules, SystemCalls::OfListingFonts, attempt), EPERM);
        EXPECT_EQ(TryConfined(rules, SystemCalls::OfReading, attempt), EPERM);
    }
}

} // namespace
} // namespace vxhost
