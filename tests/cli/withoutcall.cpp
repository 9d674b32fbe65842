// Is loaded before a program, for which the kernel then seems not to have the call VX_REFUSED_CALL, as older ones do not.
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <sys/syscall.h>

extern "C" long syscall(long number, ...)
{
    constexpr int kMostArguments = 6;
    long arguments[kMostArguments];
    std::va_list rest;
    va_start(rest, number);
    for (long &argument : arguments)
        argument = va_arg(rest, long);
    va_end(rest);
    if (number == VX_REFUSED_CALL) {
        errno = ENOSYS;
        return -1;
    }
    using SyscallProc = long (*)(long, ...);
    return reinterpret_cast<SyscallProc>(dlsym(RTLD_NEXT, "syscall"))(
        number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}
