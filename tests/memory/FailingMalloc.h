// A malloc for tests that fails when it is told to, for C libraries and for C++ alike.
#pragma once

#include <cstdint>

namespace vxtest
{

enum class FailingMalloc { Once, FromThenOn };
enum class AllocationsOf { All, C }; // C: not those of C++, which throw

// False under a sanitizer, which has a malloc of its own.
bool CanMallocFail();

// As long as one of these lives, this thread's allocation of that number fails, the first being 1. 0: none fails.
class MallocFailure
{
  public:
    MallocFailure(uint64_t number, FailingMalloc how, AllocationsOf whose);
    ~MallocFailure();
    MallocFailure(const MallocFailure &) = delete;
    MallocFailure &operator=(const MallocFailure &) = delete;

    static uint64_t Count(); // allocations since this one was made
};

} // namespace vxtest
