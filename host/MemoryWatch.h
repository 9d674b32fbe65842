// Notices that memory ran out inside a C library, which not every library tells: HarfBuzz, for one, goes on with an
// empty table, and its caller sees a font that has no glyphs.
//
// Whatever a library makes of it, the allocator has left ENOMEM in errno. A watch stands around the calls; after them
// Check throws what C++ throws in that case. Watches may nest, and leave errno as it was before them.
#pragma once

#include <cerrno>
#include <new>
#include <utility>

namespace vxhost
{

class MemoryWatch
{
  public:
    MemoryWatch() : before_(std::exchange(errno, 0)) {}
    ~MemoryWatch()
    {
        if (!HasRunOut()) // a watch around this one is to see a lack of memory too
            errno = before_;
    }
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;

    bool HasRunOut() const { return errno == ENOMEM; }
    void Check() const
    {
        if (HasRunOut())
            throw std::bad_alloc();
    }

  private:
    int before_;
};

// Returns what the call returns, or throws std::bad_alloc.
template <typename Call>
auto Watched(Call &&call)
{
    const MemoryWatch watch;
    auto result = std::forward<Call>(call)();
    watch.Check();
    return result;
}

} // namespace vxhost
