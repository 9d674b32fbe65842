// The next malloc need not be the C library's: one that is preloaded frees what it is given, so it has to be the one that
// is asked.
#include "jobs/MallocHandler.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <dlfcn.h>

namespace vxhost
{

namespace
{

std::atomic<void (*)()> g_handler = nullptr;

} // namespace

void SetMallocHandler(void (*handler)())
{
    g_handler = handler;
}

// A sanitizer has its own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace
{

void TellFailure()
{
    if (const auto handler = g_handler.load())
        handler();
}

// Stands for the procedure of that name beyond this program, which is found when it is first called.
template <typename Procedure>
class Next
{
  public:
    explicit constexpr Next(const char *name) : name_(name) {}

    template <typename... Arguments>
    auto operator()(Arguments... arguments)
    {
        Procedure *found = found_.load(std::memory_order_relaxed);
        if (found == nullptr) {
            found = reinterpret_cast<Procedure *>(dlsym(RTLD_NEXT, name_));
            found_.store(found, std::memory_order_relaxed);
        }
        return found(arguments...);
    }

  private:
    const char *name_;
    std::atomic<Procedure *> found_ = nullptr;
};

// Nothing may be constructed here: the first call comes before main.
constinit Next<void *(size_t)> g_malloc("malloc");
constinit Next<void *(size_t, size_t)> g_calloc("calloc");
constinit Next<void *(void *, size_t)> g_realloc("realloc");
constinit Next<void *(void *, size_t, size_t)> g_reallocarray("reallocarray");
constinit Next<void *(size_t, size_t)> g_alignedAlloc("aligned_alloc");
constinit Next<int(void **, size_t, size_t)> g_posixMemalign("posix_memalign");

void *Told(void *block)
{
    if (block == nullptr)
        TellFailure();
    return block;
}

} // namespace

extern "C" {

void *malloc(size_t size)
{
    return Told(g_malloc(size));
}

void *calloc(size_t count, size_t size)
{
    return Told(g_calloc(count, size));
}

// A size of 0 frees the block, and null is no failure then.
void *realloc(void *block, size_t size)
{
    void *moved = g_realloc(block, size);
    return size == 0 ? moved : Told(moved);
}

void *reallocarray(void *block, size_t count, size_t size)
{
    void *moved = g_reallocarray(block, count, size);
    return count == 0 || size == 0 ? moved : Told(moved);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    return Told(g_alignedAlloc(alignment, size));
}

int posix_memalign(void **block, size_t alignment, size_t size)
{
    const int error = g_posixMemalign(block, alignment, size);
    if (error == ENOMEM)
        TellFailure();
    return error;
}

} // extern "C"

#endif

} // namespace vxhost
