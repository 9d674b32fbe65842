// A line of a version 5 body, and the calls that it makes.
#pragma once

#include "tests/support/CaseName.h"
#include "tests/support/RecordingHost.h"
#include "tests/unit/body/BodyDocument.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

namespace vxtest
{

struct LineCase {
    const char *name, *line, *calls;
    int16_t result;
};

inline void ExpectCalls(const LineCase &c)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document(c.line)), c.result);
    EXPECT_EQ(host.Joined(), c.calls);
    EXPECT_TRUE(host.TableIsAsItWas());
    EXPECT_EQ(host.liveBlocks, 0);
}

} // namespace vxtest
