// Loaded before a program: a kernel without the call that closes the descriptors that nobody names. With VX_WITHOUT_PROC the
// folder is not there either in which the kernel lists them.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/types.h>

extern "C" long syscall(long number, ...)
{
    constexpr int kMostArguments = 6;
    long arguments[kMostArguments];
    std::va_list rest;
    va_start(rest, number);
    for (long &argument : arguments)
        argument = va_arg(rest, long);
    va_end(rest);
    if (number == SYS_close_range) {
        errno = ENOSYS;
        return -1;
    }
    using SyscallProc = long (*)(long, ...);
    return reinterpret_cast<SyscallProc>(dlsym(RTLD_NEXT, "syscall"))(
        number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}

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
