// Loaded before a program: notes which process looks for fonts and which reads a profile, in the file that VX_WATCHED names,
// and what the first of them could change.
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <lcms2.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

struct Notes {
    std::atomic<size_t> length; // of the text
    char text[8192];
};
Notes *g_notes = nullptr;

void Note(const char *what, long number)
{
    if (g_notes == nullptr)
        return;
    char line[64];
    const auto length = static_cast<size_t>(std::snprintf(line, sizeof line, "%s %ld\n", what, number));
    const size_t at = g_notes->length.fetch_add(length);
    if (at + length <= sizeof g_notes->text)
        std::memcpy(g_notes->text + at, line, length);
}

void NoteOutcome(const char *what, long outcome)
{
    Note(what, outcome < 0 ? errno : 0);
}

// What a font that took over the process would try.
void TryToWrite()
{
    const char *path = std::getenv("VX_WATCH_WRITE");
    if (path == nullptr)
        return;
    NoteOutcome("write", open(path, O_WRONLY | O_CREAT, 0600));
    NoteOutcome("chmod", chmod(path, 0777));
    NoteOutcome("unlink", unlink(path));
    NoteOutcome("rename", rename(path, "renamed"));
    NoteOutcome("truncate", truncate(path, 0));
}

// A process that is confined can open no file to write to, so all share a mapping that there is before any of them.
__attribute__((constructor)) void OpenNotes()
{
    const char *path = std::getenv("VX_WATCHED");
    if (path == nullptr)
        return;
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, sizeof *g_notes) != 0)
        std::abort();
    void *mapped = mmap(nullptr, sizeof *g_notes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (mapped == MAP_FAILED)
        std::abort();
    g_notes = static_cast<Notes *>(mapped);
    Note("main", getpid());
}

template <typename Procedure>
Procedure *Next(const char *name)
{
    return reinterpret_cast<Procedure *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" FcBool FcConfigAppFontAddDir(FcConfig *config, const FcChar8 *folder)
{
    Note("fonts", getpid());
    TryToWrite();
    return Next<decltype(FcConfigAppFontAddDir)>("FcConfigAppFontAddDir")(config, folder);
}

extern "C" FcBool FcConfigBuildFonts(FcConfig *config)
{
    Note("fonts", getpid());
    return Next<decltype(FcConfigBuildFonts)>("FcConfigBuildFonts")(config);
}

extern "C" cmsHPROFILE cmsOpenProfileFromMemTHR(cmsContext context, const void *bytes, cmsUInt32Number length)
{
    Note("profile", getpid());
    const char *crash = std::getenv("VX_WATCH_CRASH");
    if (crash != nullptr && memmem(bytes, length, crash, std::strlen(crash)) != nullptr)
        std::abort();
    return Next<decltype(cmsOpenProfileFromMemTHR)>("cmsOpenProfileFromMemTHR")(context, bytes, length);
}
