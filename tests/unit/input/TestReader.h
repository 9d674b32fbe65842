// A stream reader for a module under test alone, and the lines that come of it.
#pragma once

#include "plugin/input/LnStream.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace vxtest
{

// Delivers bytes, at most mostAtOnce of them a call, and notes what it was asked for.
struct TestReader {
    StreamReader reader;
    std::string bytes;
    int32_t mostAtOnce = INT32_MAX;
    int32_t claimed = INT32_MIN; // when set, the count that it writes back instead of the truth
    size_t position = 0;
    std::vector<int32_t> wanted;

    explicit TestReader(std::string text) : reader{Read}, bytes(std::move(text)) {}

    static int32_t Read(StreamReader *reader, int32_t op, void *arg, int32_t *inout)
    {
        auto *self = reinterpret_cast<TestReader *>(reader);
        EXPECT_EQ(op, kVXReadBytes) << "a line stream never seeks";
        self->wanted.push_back(*inout);
        const auto left = static_cast<int32_t>(self->bytes.size() - self->position);
        const int32_t count = std::min({*inout, left, self->mostAtOnce});
        memcpy(arg, self->bytes.data() + self->position, static_cast<size_t>(count));
        self->position += static_cast<size_t>(count);
        *inout = self->claimed == INT32_MIN ? count : self->claimed;
        return -1; // never examined
    }
};

// Lines of text.
struct TextStream {
    TestReader reader;
    vx::LineStream lines;

    explicit TextStream(const std::string &bytes) : reader(bytes)
    {
        vx::InitializeLineStream(&lines, &reader.reader, static_cast<int32_t>(bytes.size()), nullptr);
    }
};

} // namespace vxtest
