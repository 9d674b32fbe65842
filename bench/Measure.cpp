// Measures for bench/compare what is not vx itself, one job a run: the floor, the plug-in alone, the time and memory of another
// program. It writes the documents to measure with, too.
#include "bench/Documents.h"
#include "bench/Equivalents.h"
#include "bench/IdleHost.h"
#include "bench/TokenLoop.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const char *kUsage = "usage: vxmeasure loop FILE\n"
                               "       vxmeasure parse FILE\n"
                               "       vxmeasure write paths|text|lines|gradients vx|ps|pdf|svg BYTES OUT\n"
                               "       vxmeasure run PROGRAM [ARGUMENT...]\n";

int Fail(const std::string &message)
{
    std::fprintf(stderr, "vxmeasure: %s\n", message.c_str());
    return 1;
}

int Loop(const char *file)
{
    std::string error;
    const auto document = vxhost::Document::Open(file, &error);
    if (document == nullptr)
        return Fail(error);
    const auto bytes = document->Bytes();
    const int64_t sum = vxbench::SumOfTokens({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    std::printf("%lld\n", static_cast<long long>(sum));
    return 0;
}

// A document with what reads it.
struct Source {
    explicit Source(const char *file)
        : installation{vxhost::Plugin::Load(VX_PLUGIN_FILE, &error), vxhost::MakeFontconfigFonts()},
          document(installation.plugin == nullptr ? nullptr : vxhost::Document::Open(file, &error))
    {
    }

    std::string error;
    vxhost::Installation installation;
    std::unique_ptr<vxhost::Document> document;
};

// The plug-in alone: no font is opened, so no character has a width.
int Parse(const char *file)
{
    const Source source(file);
    if (source.document == nullptr)
        return Fail(source.error);
    vxhost::ParseOptions options;
    options.fonts = source.installation.fonts.get();
    ZRKProcs procs = vxbench::MakeIdleTable();
    int64_t calls = 0;
    const vxhost::Outcome outcome =
        source.installation.plugin->Parse(*source.document, options, &procs, &calls);
    std::printf("%lld calls\n", static_cast<long long>(calls));
    return outcome.result == kVXOk ? 0 : Fail("the document was not read to its end");
}

int Write(std::string_view kind, std::string_view format, std::string_view bytes, const char *out)
{
    size_t size = 0;
    if (std::from_chars(bytes.data(), bytes.data() + bytes.size(), size).ec != std::errc())
        return Fail("how many bytes?");
    std::string text = kind == "paths"   ? vxbench::MakePathDocument(size)
                       : kind == "text"  ? vxbench::MakeTextPage(size)
                       : kind == "lines" ? vxbench::MakeTextLines(size)
                                         : vxbench::MakeGradientPage(size);
    if (format != "vx")
        text = vxbench::Translate(text, format == "ps"    ? vxbench::Language::PostScript
                                        : format == "pdf" ? vxbench::Language::Pdf
                                                          : vxbench::Language::Svg);
    std::ofstream output(out, std::ios::binary);
    output << text;
    output.close();
    return output ? 0 : Fail("cannot write the document");
}

double Seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Prints "seconds kibibytes": processor time of the program and its children, and the largest of them. This program is
// small: a child counts at least what its parent held when it was made.
int Run(char **arguments)
{
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], &files, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0)
        return Fail(std::string(arguments[0]) + " cannot be run, " + std::strerror(error));
    int status = 0;
    rusage used = {};
    while (wait4(child, &status, 0, &used) < 0) {
        if (errno != EINTR)
            return Fail(std::strerror(errno));
    }
    std::printf("%.4f %ld\n", Seconds(used.ru_utime) + Seconds(used.ru_stime), used.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

int main(int count, char **arguments)
{
    const std::string_view job = count > 2 ? arguments[1] : "";
    if (job == "loop")
        return Loop(arguments[2]);
    if (job == "parse")
        return Parse(arguments[2]);
    if (job == "write" && count == 6)
        return Write(arguments[2], arguments[3], arguments[4], arguments[5]);
    if (job == "run")
        return Run(arguments + 2);
    std::fputs(kUsage, stderr);
    return 2;
}
