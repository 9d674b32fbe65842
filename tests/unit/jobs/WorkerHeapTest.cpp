// What malloc does in a worker. Each case is a process of its own, since none of it can be undone.
#include "jobs/WorkerHeap.h"

#include "jobs/Worker.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vxhost
{
namespace
{

constexpr int64_t kMiB = int64_t{1} << 20;

struct HeapCase {
    const char *name;
    int64_t limit;
    bool isPrepared;
};

void PrintTo(const HeapCase &heap, std::ostream *stream)
{
    *stream << heap.name;
}

const HeapCase kHeaps[] = {
    {"None", 0, true},
    {"TheUsual", 1024 * kMiB, true},
    {"OfTwoPages", 64 * kMiB, true},
    {"OfLess", 64 * kMiB - 1, false},
    {"OfLittle", kMiB, false},
};

class WorkerHeap : public testing::TestWithParam<HeapCase>
{
};

// The exit status: 0 a large block is part of the heap, and what is released stays there; 1 it is mapped by itself.
[[noreturn]] void TryHeap(int64_t limit)
{
    PrepareHeap(limit);
    const auto room = mallinfo2().arena, mapped = mallinfo2().hblks;
    void *block = std::malloc(static_cast<size_t>(30 * kMiB)); // larger than any of the tests before
    const bool isMapped = mallinfo2().hblks != mapped;
    std::free(block);
    const bool isKept = mallinfo2().arena >= room;
    _exit(block == nullptr || !isKept ? 2 : isMapped ? 1 : 0);
}

TEST_P(WorkerHeap, IsPreparedWhereTheLimitHasRoom)
{
    if (!MemoryLimitWorks())
        GTEST_SKIP() << "a sanitizer has a malloc of its own";
    const pid_t process = fork();
    if (process == 0)
        TryHeap(GetParam().limit);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), GetParam().isPrepared ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(Limits, WorkerHeap, testing::ValuesIn(kHeaps),
                         [](const auto &tested) { return tested.param.name; });

} // namespace
} // namespace vxhost
