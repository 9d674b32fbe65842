#include "tests/memory/FailingMalloc.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace vxtest
{

namespace
{

struct State {
    bool isOn = false;
    uint64_t count = 0;
    uint64_t failing = 0;
    FailingMalloc how = FailingMalloc::Once;
    AllocationsOf whose = AllocationsOf::All;
};

// The model finds it without a call, which could allocate.
[[gnu::tls_model("initial-exec")]] thread_local State state;

} // namespace

MallocFailure::MallocFailure(uint64_t number, FailingMalloc how, AllocationsOf whose)
{
    state = {true, 0, number, how, whose};
}

MallocFailure::~MallocFailure()
{
    state.isOn = false;
}

uint64_t MallocFailure::Count()
{
    return state.count;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

bool CanMallocFail()
{
    return false;
}

} // namespace vxtest

#else

bool CanMallocFail()
{
    return true;
}

namespace
{

// True when this allocation is to fail; errno then says so, as malloc's does.
bool FailsNow()
{
    if (!state.isOn)
        return false;
    const uint64_t number = ++state.count;
    const bool fails = state.failing != 0 &&
                       (state.how == FailingMalloc::Once ? number == state.failing : number >= state.failing);
    if (fails)
        errno = ENOMEM;
    return fails;
}

} // namespace

} // namespace vxtest

extern "C" {

// The C library's own, by the names that it has for programs with a malloc of their own.
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);

void *malloc(size_t size)
{
    return vxtest::FailsNow() ? nullptr : __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    return vxtest::FailsNow() ? nullptr : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size)
{
    return size != 0 && vxtest::FailsNow() ? nullptr : __libc_realloc(block, size);
}

void *reallocarray(void *block, size_t count, size_t size)
{
    size_t bytes = 0;
    return __builtin_mul_overflow(count, size, &bytes) ? nullptr : realloc(block, bytes);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    return vxtest::FailsNow() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void **block, size_t alignment, size_t size)
{
    void *made = aligned_alloc(alignment, size);
    if (made == nullptr)
        return ENOMEM;
    *block = made;
    return 0;
}

} // extern "C"

void *operator new(size_t size)
{
    size += size == 0 ? 1 : 0;
    void *made = vxtest::state.whose == vxtest::AllocationsOf::C ? __libc_malloc(size) : malloc(size);
    if (made == nullptr)
        throw std::bad_alloc();
    return made;
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, size_t) noexcept
{
    std::free(block);
}

#endif
