// A drawing in a process of its own: the same bytes and the same errors as in the caller's, whatever the helper program does.
#include "tests/library/Support.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxtest
{
namespace
{

namespace fs = std::filesystem;

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string SamplePath(const std::string &name)
{
    return VX_SOURCE_DIR "/samples/" + name + ".vx";
}

std::string ReadWhole(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

struct Made {
    vx_status status = VX_OK;
    std::string text, bytes;
    std::vector<std::string> warnings;
};

// A call, with what is not the rule in it.
struct Isolated {
    std::string path, bytes = {};
    std::string format = "png";
    Pairs options = {};
    vx_library *library = SharedLibrary();
    std::string helper = {};
    bool mustBeConfined = false;
    std::function<int()> onWrite = {}, onProgress = {};

    Made Run() const
    {
        std::vector<const char *> words;
        for (const auto &[name, value] : options)
            words.insert(words.end(), {name.c_str(), value.c_str()});
        struct Context {
            const Isolated *call;
            Made made;
        } context = {this, {}};
        vx_isolated request = {};
        request.size = sizeof request;
        request.path = path.empty() ? nullptr : path.c_str();
        request.bytes = path.empty() ? bytes.data() : nullptr;
        request.byte_count = path.empty() ? bytes.size() : 0;
        request.format = format.c_str();
        request.options = words.data();
        request.option_count = options.size();
        request.must_be_confined = mustBeConfined ? 1 : 0;
        request.helper = helper.empty() ? nullptr : helper.c_str();
        if (onProgress)
            request.progress = [](void *to, int64_t, int64_t) {
                return static_cast<Context *>(to)->call->onProgress();
            };
        request.warning = [](void *to, const char *text) {
            static_cast<Context *>(to)->made.warnings.emplace_back(text);
            return 0;
        };
        const auto write = [](void *to, const void *data, size_t size) {
            auto *written = static_cast<Context *>(to);
            written->made.bytes.append(static_cast<const char *>(data), size);
            return written->call->onWrite ? written->call->onWrite() : 0;
        };
        vx_error error = kNoError;
        context.made.status = vx_render_isolated(library, &request, write, &context, &error);
        context.made.text = error.text;
        return std::move(context.made);
    }
};

// What a kernel that cannot confine has us told, on top of the rest.
void DropConfinement(std::vector<std::string> *warnings)
{
    std::erase_if(*warnings, [](const std::string &text) { return text.starts_with("no sandbox for "); });
}

// The same in the process of the test.
Made MadeHere(const std::string &bytes, const std::string &format, const Pairs &options,
              vx_library *library = SharedLibrary())
{
    Made made;
    vx_error error = kNoError;
    vx_document *opened = nullptr;
    made.status = vx_document_open_bytes(library, bytes.data(), bytes.size(), VX_BORROW, &opened, &error);
    const OwnedDocument document(opened);
    for (const auto &[name, value] : options) {
        if (made.status == VX_OK)
            made.status = vx_document_set(opened, name.c_str(), value.c_str(), &error);
    }
    if (made.status == VX_OK)
        made.status = vx_document_render(opened, format.c_str(), AppendBytes, &made.bytes, &error);
    for (size_t i = 0; i < vx_document_warning_count(opened); ++i)
        made.warnings.emplace_back(vx_document_warning_at(opened, i));
    made.text = error.text;
    return made;
}

class SameBytes : public testing::TestWithParam<const char *>
{
};

TEST_P(SameBytes, AsInTheProcess)
{
    const std::string path = SamplePath(GetParam()), bytes = ReadWhole(path);
    for (const char *format : {"png", "svg", "pdf", "tiff"}) {
        SCOPED_TRACE(format);
        const Made here = MadeHere(bytes, format, {});
        ASSERT_EQ(here.status, VX_OK) << here.text;
        for (const Isolated &call : {Isolated{path, "", format}, Isolated{"", bytes, format}}) {
            Made there = call.Run();
            DropConfinement(&there.warnings);
            EXPECT_EQ(there.status, VX_OK) << there.text;
            EXPECT_TRUE(there.bytes == here.bytes);
            EXPECT_EQ(there.warnings, here.warnings);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, SameBytes,
                         testing::Values("text-point", "text-japanese", "text-missing", "text-version-4",
                                         "gradients", "overprint", "binary-wrapper", "gift"));

struct SameEndCase {
    const char *name;
    std::string bytes;
    const char *format;
    Pairs options;
    vx_status status;
};

void PrintTo(const SameEndCase &tested, std::ostream *stream)
{
    *stream << tested.name;
}

class SameEnd : public testing::TestWithParam<SameEndCase>
{
};

TEST_P(SameEnd, AsInTheProcess)
{
    const SameEndCase &tested = GetParam();
    const Made here = MadeHere(tested.bytes, tested.format, tested.options);
    const Made there = Isolated{"", tested.bytes, tested.format, tested.options}.Run();
    EXPECT_EQ(here.status, tested.status);
    EXPECT_EQ(there.status, tested.status);
    EXPECT_EQ(there.text, here.text);
    EXPECT_EQ(there.bytes, ""); // nothing of what is not whole
}

const SameEndCase kSameEnds[] = {
    {"NoDrawing", "GIF89a\x1b[2J\n", "png", {}, VX_NOT_A_DRAWING},
    {"Empty", "", "svg", {}, VX_NOT_A_DRAWING},
    {"Damaged", DrawingOf("0 0 0 1 k\n0 0 m\n36 x l\nf\n36 36 l (\n"), "pdf", {}, VX_MALFORMED},
    {"LacksFont", ReadWhole(SamplePath("text-missing")), "png", {{"missing-fonts", "fail"}}, VX_FONT_MISSING},
    {"TooManyPixels", LeftHalf(), "png", {{"dpi", "100000"}}, VX_LIMIT},
    {"OutputTooLong", ReadWhole(SamplePath("gift")), "png", {{"max-output", "1K"}}, VX_LIMIT},
    {"NothingToShow", LeftHalf(), "svg", {{"box", "5,5,5,9"}}, VX_WRONG_OPTION},
    {"NoSuchProfile", LeftHalf(), "png", {{"profile", "/no/such.icc"}}, VX_WRONG_OPTION},
    {"NoSuchOption", LeftHalf(), "png", {{"colour", "red"}}, VX_WRONG_OPTION},
    {"WrongValue", LeftHalf(), "png", {{"dpi", "-1"}}, VX_WRONG_OPTION},
    {"TwoSizes", LeftHalf(), "png", {{"dpi", "72"}, {"width", "9"}}, VX_WRONG_OPTION},
    {"NoSuchFormat", LeftHalf(), "gif", {}, VX_WRONG_OPTION},
};

INSTANTIATE_TEST_SUITE_P(Ends, SameEnd, testing::ValuesIn(kSameEnds),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST(Isolated, TakesWhatTheLibrarySays)
{
    const OwnedLibrary library = MakeLibrary();
    vx_font_entry entry = {};
    entry.size = sizeof entry;
    ASSERT_EQ(vx_library_font_at(library.get(), 0, &entry, nullptr), VX_OK);
    ASSERT_EQ(vx_library_map_font(library.get(), "Ornata-Condensed", entry.postscript, nullptr), VX_OK);
    const std::string text = ReadWhole(SamplePath("text-missing"));
    const Made mapped = Isolated{"", text, "svg", {}, library.get()}.Run();
    EXPECT_TRUE(mapped.bytes == MadeHere(text, "svg", {}, library.get()).bytes);
    EXPECT_FALSE(mapped.bytes == MadeHere(text, "svg", {}).bytes);

    const std::string profile = ReadWhole(VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc");
    ASSERT_EQ(vx_library_add_profile(library.get(), "ours", profile.data(), profile.size(), nullptr), VX_OK);
    const Pairs options = {{"profile", "ours"}, {"pdf-x", "x3"}, {"date", "0"}};
    const Made press = Isolated{"", LeftHalf(), "pdf", options, library.get()}.Run();
    EXPECT_EQ(press.status, VX_OK) << press.text;
    EXPECT_TRUE(press.bytes == MadeHere(LeftHalf(), "pdf", options, library.get()).bytes);

    const OwnedLibrary bare = MakeLibrary();
    ASSERT_EQ(vx_library_set(bare.get(), "system-fonts", "no", nullptr), VX_OK);
    const Made boxes = Isolated{"", text, "svg", {}, bare.get()}.Run();
    EXPECT_EQ(boxes.status, VX_OK) << boxes.text;
    EXPECT_TRUE(boxes.bytes == MadeHere(text, "svg", {}, bare.get()).bytes);
}

TEST(Isolated, RefusesFontsFromMemory)
{
    const OwnedLibrary library = MakeLibrary();
    vx_font_entry entry = {};
    entry.size = sizeof entry;
    ASSERT_EQ(vx_library_font_at(SharedLibrary(), 0, &entry, nullptr), VX_OK);
    const std::string font = ReadWhole(entry.file);
    ASSERT_EQ(vx_library_add_font(library.get(), font.data(), font.size(), nullptr), VX_OK);
    const Made made = Isolated{"", LeftHalf(), "png", {}, library.get()}.Run();
    EXPECT_EQ(made.status, VX_WRONG_ARGUMENT);
    EXPECT_NE(made.text.find("font-dir"), std::string::npos) << made.text;
}

TEST(Isolated, LooksForNoFontsInTheProcess)
{
    const OwnedLibrary library = MakeLibrary();
    EXPECT_EQ((Isolated{SamplePath("text-point"), "", "png", {}, library.get()}.Run().status), VX_OK);
    // Once they are listed this comes too late.
    EXPECT_EQ(vx_library_set(library.get(), "system-fonts", "no", nullptr), VX_OK);
}

TEST(Isolated, KeepsItsOutputWhereTheLibrarySays)
{
    const OwnedLibrary library = MakeLibrary();
    ASSERT_EQ(vx_library_set(library.get(), "temp-dir", "/proc", nullptr),
              VX_OK); // where nobody makes a file
    for (const char *format : {"svg", "pdf"}) {
        const Made made = Isolated{"", LeftHalf(), format, {}, library.get()}.Run();
        EXPECT_EQ(made.status, VX_CANNOT_WRITE);
        EXPECT_NE(made.text.find("temp-dir"), std::string::npos) << made.text;
        EXPECT_EQ(made.bytes, "");
    }
}

TEST(Isolated, NamesTheFileThatCannotBeRead)
{
    for (const char *path : {"/no/such\n.vx", "/", "/dev/null"}) {
        const Made made = Isolated{path}.Run();
        EXPECT_EQ(made.status, VX_CANNOT_READ);
        EXPECT_EQ(made.text.find('\n'), std::string::npos) << made.text;
        EXPECT_EQ(made.text.rfind(path == std::string("/no/such\n.vx") ? "/no/such\\x0A.vx: " : path, 0), 0U)
            << made.text;
    }
}

// ---- Limits ----

// Takes a processor many minutes: a page of 3000 by 1500 pixels, painted over and over.
Isolated Endless()
{
    std::string body;
    for (int i = 0; i < 100000; ++i)
        body += "0 0 0 1 k\n0 0 m\n72 0 l\n72 36 l\n0 35 l\nf\n";
    return {"", DrawingOf(body), "png", {{"width", "3000"}}};
}

TEST(IsolatedLimits, OfMemoryIsThatOfAllThatIsAllocated)
{
#ifdef VX_SANITIZE
    GTEST_SKIP() << "a sanitizer takes more memory than there may be";
#endif
    const Made made = Isolated{SamplePath("gift"), "", "png", {{"max-memory", "2M"}}}.Run();
    EXPECT_EQ(made.status, VX_LIMIT);
    EXPECT_EQ(made.text, "needs more than 2 MiB of memory: allow more with max-memory");
}

TEST(IsolatedLimits, OfTimeIsThatOfTheCall)
{
    Isolated call = Endless();
    call.options.emplace_back("max-time", "0.5");
    const Made made = call.Run();
    EXPECT_EQ(made.status, VX_LIMIT);
    EXPECT_EQ(made.text, "not done after 0.5 s: allow more with max-time");
    EXPECT_EQ(made.bytes, "");
}

// ---- Helpers that are none of ours ----

class Helpers : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "vx-helpers-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string Path(const std::string &name) const { return (folder_ / name).string(); }

    // A program of the shell.
    std::string Script(const std::string &lines) const
    {
        const std::string path = Path("helper");
        std::ofstream(path) << "#!/bin/sh\n" << lines;
        EXPECT_EQ(chmod(path.c_str(), S_IRWXU), 0);
        return path;
    }

    Made Run(const std::string &helper, Pairs options = {}) const
    {
        return Isolated{"", LeftHalf(), "png", std::move(options), SharedLibrary(), helper}.Run();
    }

    fs::path folder_;
};

TEST_F(Helpers, ThatAreNotThereAreTold)
{
    for (const std::string &path : {Path("no-such"), folder_.string()}) {
        const Made made = Run(path);
        EXPECT_EQ(made.status, VX_NOT_ISOLATED);
        EXPECT_NE(made.text.find(path + " cannot be started"), std::string::npos) << made.text;
        EXPECT_NE(made.text.find(": install "), std::string::npos) << made.text;
    }
}

struct BadHelper {
    const char *lines;
    const char *told;
};

TEST_F(Helpers, ThatGiveNoAnswerAreTold)
{
    for (const auto &[lines, told] : std::initializer_list<BadHelper>{
             {"kill -SEGV $$", "ended by signal SEGV"},
             {"exit 3", "ended with status 3"},
             {"true", "ended with status 0"},
             {"while :; do echo nonsense >&4; done", "gave no answer"},
             {"printf 'a\\377\\377\\377\\377\\377\\377\\377\\177' >&4; exec cat /dev/zero >&4",
              "gave no answer"},
             {"printf 'a\\003\\000\\000\\000\\000\\000\\000\\000xyz' >&4", "gave no answer"},
             {"printf 'a\\003' >&4", "gave no answer"},
             {"exec >&- 4>&-; sleep 1000", "ended by signal KILL"}}) {
        const Made made = Run(Script(lines));
        EXPECT_EQ(made.status, VX_FAILED) << lines;
        EXPECT_NE(made.text.find(told), std::string::npos) << lines << ": " << made.text;
    }
}

TEST_F(Helpers, ThatHangEndWithTheLimitOfTime)
{
    for (const char *lines : {"exec sleep 1000", "while :; do printf p1 >&4; done"}) {
        const Made made = Run(Script(lines), {{"max-time", "0.3"}});
        EXPECT_EQ(made.status, VX_LIMIT) << lines;
        EXPECT_EQ(made.text, "not done after 0.3 s: allow more with max-time");
    }
}

TEST_F(Helpers, ThatBabbleWriteNoMoreThanTheyMay)
{
    const Made made = Run(Script("exec yes"), {{"max-output", "100K"}});
    EXPECT_EQ(made.status, VX_LIMIT);
    EXPECT_EQ(made.text, "takes more than 100 KiB: allow more with max-output");
    EXPECT_LE(made.bytes.size(), size_t{100} << 10);
}

TEST_F(Helpers, OfAnotherVersionAreTold)
{
    // The request begins with the length of the version, and with that; here with one that is no libvx's.
    const Made made = Run(Script("{ printf '\\005\\000\\000\\0009.9.9'; tail -c +10 <&3; } >" +
                                 Path("request") + "\nexec 3<" + Path("request") + "\nexec " VX_HELPER_PATH));
    EXPECT_EQ(made.status, VX_FAILED);
    EXPECT_NE(made.text.find("ended with status 2 and gave no answer: install the one of this libvx"),
              std::string::npos)
        << made.text;
}

TEST_F(Helpers, HaveTheirDescriptorsAndSignalsAndALittleOfTheEnvironment)
{
    const int open = fcntl(STDERR_FILENO, F_DUPFD, 7); // without close-on-exec
    ASSERT_GE(open, 7);
    setenv("VX_TEST_SECRET", "password", 1);
    setenv("FONTCONFIG_FILE", "/etc/fonts/fonts.conf", 1);
    struct sigaction before;
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGUSR1, &ignored, &before);
    sigset_t blocked, mask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &blocked, &mask);
    const Made made = Run(Script("for d in 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do\n"
                                 "  [ -e /proc/$$/fd/$d ] && printf '%s ' $d\n"
                                 "done\n"
                                 "echo; env; grep -E 'Sig(Blk|Ign)' /proc/self/status\n"));
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    sigaction(SIGUSR1, &before, nullptr);
    unsetenv("FONTCONFIG_FILE");
    unsetenv("VX_TEST_SECRET");
    close(open);
    // The shell has its script open above the others.
    const std::string descriptors = made.bytes.substr(0, made.bytes.find('\n'));
    EXPECT_TRUE(descriptors == "0 1 2 3 4 " || descriptors == "0 1 2 3 4 10 ") << descriptors;
    EXPECT_EQ(made.bytes.find("VX_TEST_SECRET"), std::string::npos);
    EXPECT_NE(made.bytes.find("FONTCONFIG_FILE=/etc/fonts/fonts.conf\n"), std::string::npos);
    EXPECT_NE(made.bytes.find("SigBlk:\t0000000000000000\n"), std::string::npos) << made.bytes;
    const size_t at = made.bytes.find("SigIgn:\t");
    ASSERT_NE(at, std::string::npos) << made.bytes;
    const uint64_t stays = std::stoull(made.bytes.substr(at + 8), nullptr, 16);
    EXPECT_EQ(stays & ((uint64_t{1} << 31) - 1), 0U) << made.bytes; // the C library has two above for itself
}

TEST_F(Helpers, ThatCannotBeConfinedWarnOrAreRefused)
{
    Isolated call = {"", LeftHalf()};
    call.helper = Script("export ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=" VX_WITHOUT_LANDLOCK
                         "\nexec " VX_HELPER_PATH);
    const Made warned = call.Run();
    EXPECT_EQ(warned.status, VX_OK) << warned.text;
    ASSERT_EQ(warned.warnings.size(), 1U);
    EXPECT_EQ(warned.warnings[0].find("no sandbox for files, no Landlock in this kernel"), 0U);
    call.mustBeConfined = true;
    const Made refused = call.Run();
    EXPECT_EQ(refused.status, VX_NOT_ISOLATED);
    EXPECT_EQ(refused.bytes, "");
    EXPECT_NE(refused.text.find("no Landlock in this kernel"), std::string::npos) << refused.text;
    EXPECT_NE(refused.text.find("must_be_confined"), std::string::npos) << refused.text;
}

// ---- The caller ----

TEST(IsolatedCaller, EndsItFromEachProcedure)
{
    Isolated call = {SamplePath("gift")};
    call.onWrite = [] { return 1; };
    EXPECT_EQ(call.Run().text, "stopped by its write procedure");
    call = Endless();
    int calls = 0;
    call.onProgress = [&] { return ++calls == 3 ? 1 : 0; };
    const Made made = call.Run();
    EXPECT_EQ(made.status, VX_STOPPED);
    EXPECT_EQ(made.text, "stopped by its progress procedure");
    EXPECT_EQ(calls, 3);
}

// The processes of that one, as the kernel lists them.
std::vector<pid_t> ChildrenOf(pid_t process)
{
    std::vector<pid_t> children;
    for (const auto &thread : fs::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream listed(thread.path() / "children");
        std::copy(std::istream_iterator<pid_t>(listed), {}, std::back_inserter(children));
    }
    return children;
}

// Whether it runs; one that ended and that nobody waited for does not.
bool Runs(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    std::string number, name, state;
    status >> number >> name >> state;
    return status && state != "Z";
}

// Helper and worker of a call that is under way in that process; fewer, if they are not there yet.
std::vector<pid_t> HelperAndWorker(pid_t caller)
{
    std::vector<pid_t> found = ChildrenOf(caller);
    if (!found.empty()) {
        const std::vector<pid_t> workers = ChildrenOf(found[0]);
        found.insert(found.end(), workers.begin(), workers.end());
    }
    return found;
}

void WaitUntilNoneRuns(const std::vector<pid_t> &processes)
{
    ASSERT_EQ(processes.size(), 2U);
    for (const pid_t process : processes) {
        while (Runs(process)) // the test's own limit of time is the end of this
            std::this_thread::yield();
    }
}

TEST(IsolatedCaller, LeavesNoProcessBehind)
{
    std::vector<pid_t> processes;
    Isolated call = Endless();
    call.onProgress = [&] { return (processes = HelperAndWorker(getpid())).size() == 2 ? 1 : 0; };
    EXPECT_EQ(call.Run().status, VX_STOPPED);
    WaitUntilNoneRuns(processes);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(IsolatedCaller, TakesTheHelperAlongWhenItIsKilled)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t caller = fork();
    if (caller == 0) {
        Isolated call = Endless();
        call.onProgress = [&] {
            const std::vector<pid_t> found = HelperAndWorker(getpid());
            if (found.size() == 2 && write(ends[1], found.data(), 2 * sizeof(pid_t)) > 0)
                raise(SIGKILL);
            return 0;
        };
        (void)call.Run();
        _exit(0);
    }
    std::vector<pid_t> processes(2);
    EXPECT_EQ(read(ends[0], processes.data(), 2 * sizeof(pid_t)), ssize_t{2 * sizeof(pid_t)});
    int status = 0;
    waitpid(caller, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    close(ends[0]);
    close(ends[1]);
    WaitUntilNoneRuns(processes);
}

size_t OpenDescriptors()
{
    return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

TEST(IsolatedCaller, KeepsNoDescriptor)
{
    (void)Isolated{"", LeftHalf()}.Run();
    const size_t before = OpenDescriptors();
    EXPECT_EQ((Isolated{"", LeftHalf()}.Run().status), VX_OK);
    EXPECT_EQ((Isolated{SamplePath("gift"), "", "pdf"}.Run().status), VX_OK);
    EXPECT_EQ((Isolated{"", "no drawing"}.Run().status), VX_NOT_A_DRAWING);
    EXPECT_EQ(OpenDescriptors(), before);
}

// In a process of its own, since it does to itself what no test may keep.
void InAChild(const std::function<bool()> &action)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(action() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

bool IsRight(const Made &made)
{
    return made.status == VX_OK && made.bytes.starts_with("\x89PNG");
}

TEST(IsolatedCaller, MayIgnoreItsChildren)
{
    InAChild([] {
        std::signal(SIGCHLD, SIG_IGN);
        return IsRight(Isolated{"", LeftHalf()}.Run());
    });
}

TEST(IsolatedCaller, MayWaitForAllItsChildren)
{
    InAChild([] {
        std::signal(SIGCHLD, [](int) {
            while (waitpid(-1, nullptr, WNOHANG) > 0)
                continue;
        });
        return IsRight(Isolated{"", LeftHalf()}.Run());
    });
}

TEST(IsolatedCaller, MayHaveNoStandardStreams)
{
    InAChild([] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            close(stream);
        return IsRight(Isolated{SamplePath("gift")}.Run()) && IsRight(Isolated{"", LeftHalf()}.Run());
    });
}

TEST(IsolatedCaller, IsNotEndedByWhatItMayNotWrite)
{
    InAChild([] {
        const rlimit limit = {100, 100};
        setrlimit(RLIMIT_FSIZE, &limit);
        const Made made = Isolated{"", LeftHalf()}.Run();
        return made.status == VX_LIMIT && made.text.find("ulimit -f") != std::string::npos;
    });
}

TEST(IsolatedCaller, IsAnyNumberOfThreads)
{
    const std::string bytes = ReadWhole(SamplePath("text-point"));
    const Made expected = MadeHere(bytes, "png", {});
    std::array<Made, 8> made;
    std::vector<std::thread> threads;
    for (Made &one : made)
        threads.emplace_back([&one, &bytes] { one = Isolated{"", bytes}.Run(); });
    for (std::thread &thread : threads)
        thread.join();
    for (const Made &one : made) {
        EXPECT_EQ(one.status, VX_OK) << one.text;
        EXPECT_TRUE(one.bytes == expected.bytes);
    }
}

// ---- Wrong calls ----

TEST(IsolatedCall, ThatIsWrongIsTold)
{
    const std::string bytes = LeftHalf();
    const char *const words[] = {"dpi", nullptr, nullptr, "72", "dpi", "\xFF"};
    vx_isolated right = {};
    right.size = sizeof right;
    right.bytes = bytes.data();
    right.byte_count = bytes.size();
    right.format = "png";
    std::string made;
    vx_error error = kNoError;
    vx_library *const library = SharedLibrary();
    EXPECT_EQ(vx_render_isolated(nullptr, &right, AppendBytes, &made, &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(vx_render_isolated(library, nullptr, AppendBytes, &made, &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(vx_render_isolated(library, &right, nullptr, &made, &error), VX_WRONG_ARGUMENT);
    const auto refused = [&](const std::function<void(vx_isolated *)> &change) {
        vx_isolated request = right;
        change(&request);
        EXPECT_EQ(vx_render_isolated(library, &request, AppendBytes, &made, &error), VX_WRONG_ARGUMENT);
        return std::string(error.text);
    };
    EXPECT_NE(refused([](auto *to) { to->size -= 1; }).find("sizeof(vx_isolated)"), std::string::npos);
    EXPECT_EQ(refused([](auto *to) { to->bytes = nullptr; }), "bytes is null: give one");
    EXPECT_EQ(refused([](auto *to) { to->format = nullptr; }), "format is null: give one");
    EXPECT_EQ(refused([](auto *to) { to->path = "a.vx"; }),
              "path and bytes are both given: leave one of them null");
    EXPECT_EQ(refused([](auto *to) { to->byte_count = size_t{1} << 31; }),
              "longer than 2147483647 bytes, the most that a document may have: split it");
    EXPECT_EQ(refused([](auto *to) { to->option_count = 1; }), "options is null: give one");
    EXPECT_EQ(refused([](auto *to) {
                  to->bytes = nullptr;
                  to->path = "";
              }),
              "path is empty: give one, or null and bytes");
    for (const auto &change : std::initializer_list<std::function<void(vx_isolated *)>>{
             [](auto *to) { to->format = "\xFF"; }, [](auto *to) { to->helper = "\xFF"; },
             [](auto *to) {
                 to->bytes = nullptr;
                 to->path = "\xFF";
             },
             [&](auto *to) {
                 to->options = words + 4;
                 to->option_count = 1;
             }})
        EXPECT_NE(refused(change).find("not UTF-8"), std::string::npos);
    EXPECT_EQ(refused([](auto *to) { to->helper = ""; }), "helper is empty: give a path, or null");
    EXPECT_EQ(refused([&](auto *to) {
                  to->options = words + 2;
                  to->option_count = 1;
              }),
              "name is null: give one");
    const std::string longOne(5000, 'x');
    const char *const tooLong[] = {"profile", longOne.c_str()};
    EXPECT_NE(refused([&](auto *to) {
                  to->options = tooLong;
                  to->option_count = 1;
              }).find("more than 4096 bytes"),
              std::string::npos);
    EXPECT_EQ(made, "");

    vx_isolated standard = right; // a null value is the option's first
    standard.options = words;
    standard.option_count = 1;
    EXPECT_EQ(vx_render_isolated(library, &standard, AppendBytes, &made, &error), VX_OK) << error.text;
    EXPECT_EQ(made, MadeHere(bytes, "png", {}).bytes);
    EXPECT_EQ(vx_render_isolated(library, &right, AppendBytes, &made, nullptr), VX_OK);
}

} // namespace
} // namespace vxtest
