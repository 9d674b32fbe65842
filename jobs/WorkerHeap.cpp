#include "jobs/WorkerHeap.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>

namespace vxhost
{

void PrepareHeap(int64_t limit)
{
    constexpr int64_t kLargePage = int64_t{2} << 20, kMost = int64_t{32} << 20, kPartOfLimit = 16;
    const int64_t room = limit == 0 ? kMost : std::min(limit / kPartOfLimit, kMost);
    if (room < 2 * kLargePage) // of which one is whole, wherever it begins
        return;
    // One block as large as the piece: malloc makes room for it, and keeps that when it is released.
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(kMost));
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(kMost * 32 - 1));
    const auto size = static_cast<size_t>(room - (int64_t{1} << 16));
    void *block = std::malloc(size);
    if (block == nullptr)
        return;
    const auto address = reinterpret_cast<uintptr_t>(block);
    const uintptr_t first = (address + kLargePage - 1) / kLargePage * kLargePage,
                    last = (address + size) / kLargePage * kLargePage;
    (void)madvise(reinterpret_cast<void *>(first), last - first, MADV_HUGEPAGE); // without it they are small
    std::free(block);
}

} // namespace vxhost
