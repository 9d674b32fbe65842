// Is loaded before a program, for which no file system then seems able to make a file without a name, as some are not.
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

namespace
{

int Open(const char *name, const char *path, int flags, mode_t mode)
{
    if ((flags & O_TMPFILE) == O_TMPFILE) {
        errno = EOPNOTSUPP;
        return -1;
    }
    using OpenProc = int (*)(const char *, int, ...);
    return reinterpret_cast<OpenProc>(dlsym(RTLD_NEXT, name))(path, flags, mode);
}

mode_t ModeOf(int flags, std::va_list rest)
{
    return (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
}

} // namespace

extern "C" int open(const char *path, int flags, ...)
{
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Open("open", path, flags, mode);
}

extern "C" int open64(const char *path, int flags, ...)
{
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Open("open64", path, flags, mode);
}
