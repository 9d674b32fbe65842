// Is loaded before a program, and cuts the file that VX_CUT names as soon as it is mapped, as another program might. Whoever
// reads the mapping then ends by a signal.
#include <cstdlib>
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace
{

void CutIfNamed(int descriptor)
{
    const char *named = std::getenv("VX_CUT");
    struct stat mapped, wanted;
    if (named != nullptr && descriptor >= 0 && fstat(descriptor, &mapped) == 0 && stat(named, &wanted) == 0 &&
        mapped.st_dev == wanted.st_dev && mapped.st_ino == wanted.st_ino && truncate(named, 0) != 0)
        std::abort();
}

void *Map(const char *name, void *at, size_t length, int protection, int flags, int descriptor, off_t offset)
{
    using MapProc = void *(*)(void *, size_t, int, int, int, off_t);
    void *mapped =
        reinterpret_cast<MapProc>(dlsym(RTLD_NEXT, name))(at, length, protection, flags, descriptor, offset);
    CutIfNamed(descriptor);
    return mapped;
}

} // namespace

extern "C" void *mmap(void *at, size_t length, int protection, int flags, int descriptor,
                      off_t offset) noexcept
{
    return Map("mmap", at, length, protection, flags, descriptor, offset);
}

extern "C" void *mmap64(void *at, size_t length, int protection, int flags, int descriptor,
                        off64_t offset) noexcept
{
    return Map("mmap64", at, length, protection, flags, descriptor, offset);
}
