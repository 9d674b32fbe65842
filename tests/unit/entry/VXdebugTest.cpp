// Debug messages, cut to what a length-prefixed string of the debugger holds.
#include "plugin/entry/VXdebug.h"

#include "host/toolbox/HostContext.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string DebugMessage(const std::string &message)
{
    std::string shown = "nothing";
    vxhost::HostContext host;
    host.onDebugMessage = [&](std::string_view text) { shown = text; };
    const vxhost::HostScope scope(&host);
    vx::DebugMsg(message.c_str());
    return shown;
}

TEST(DebugMsgTest, PassesItsTextOn)
{
    EXPECT_EQ(DebugMessage("hello"), "hello");
    EXPECT_EQ(DebugMessage(""), "");
}

TEST(DebugMsgTest, CutsAtTwoHundredFiftyFour)
{
    const std::string longest(254, 'x');
    EXPECT_EQ(DebugMessage(longest), longest);
    EXPECT_EQ(DebugMessage(longest + "y"), longest);
    EXPECT_EQ(DebugMessage(longest + std::string(46, 'y')), longest);
}

} // namespace
