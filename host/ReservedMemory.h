// An allocator for C libraries that take one: it knows afterwards whether memory ran out.
//
// Libraries do not look at what they get for each of their small records, and write through null. So those come from a
// reserve when there is no more memory; what is larger is refused.
#pragma once

#include <array>
#include <cstddef>

namespace vxhost
{

class ReservedMemory
{
  public:
    ReservedMemory() = default;
    ReservedMemory(const ReservedMemory &) = delete;
    ReservedMemory &operator=(const ReservedMemory &) = delete;

    // These do what malloc, free and realloc do.
    void *Allocate(size_t size);
    void Release(void *block);
    void *Resize(void *block, size_t size);

    // Throws std::bad_alloc if there was not memory for everything until now. What the library has made is then of no
    // use, and is only to be released.
    void Check() const;

  private:
    static constexpr size_t kReserve = size_t{1} << 14;

    bool IsReserve(const void *block) const;
    void *TakeReserve(size_t size);

    bool hasRunOut_ = false;
    size_t taken_ = 0; // bytes of the reserve in use; none come back
    alignas(std::max_align_t) std::array<std::byte, kReserve> reserve_;
};

} // namespace vxhost
