// Is loaded before a program. With VX_WITHOUT_PROC the folder is not there in which the kernel lists its descriptors.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

extern "C" int openat(int folder, const char *path, int flags, ...)
{
    if (std::strcmp(path, "/proc/self/fd") == 0 && std::getenv("VX_WITHOUT_PROC") != nullptr) {
        errno = ENOENT;
        return -1;
    }
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    using OpenAtProc = int (*)(int, const char *, int, ...);
    return reinterpret_cast<OpenAtProc>(dlsym(RTLD_NEXT, "openat"))(folder, path, flags, mode);
}
