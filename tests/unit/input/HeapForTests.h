// Memory procedures for a module under test alone: they count what is live and can refuse.
#pragma once

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

namespace vxtest
{

struct HeapForTests {
    int live = 0;
    int asked = 0;
    int32_t lastSize = -1;
    uint32_t refused = 0; // bit n: the n-th request, from 0
    MemoryProcs procs = {Allocate, Release, this};

    HeapForTests() = default;
    HeapForTests(const HeapForTests &) = delete;
    HeapForTests &operator=(const HeapForTests &) = delete;

    static void *Allocate(int32_t size, void *refcon)
    {
        auto *self = static_cast<HeapForTests *>(refcon);
        self->lastSize = size;
        if ((self->refused >> self->asked++ & 1) != 0)
            return nullptr;
        ++self->live;
        return malloc(static_cast<size_t>(size));
    }

    static void Release(void *block, void *refcon)
    {
        EXPECT_NE(block, nullptr);
        --static_cast<HeapForTests *>(refcon)->live;
        free(block);
    }
};

} // namespace vxtest
