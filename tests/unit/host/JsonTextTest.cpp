// What a terminal would obey is escaped, and nothing else.
#include "host/JsonText.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

TEST(EscapeControlsTest, LeavesNothingThatATerminalObeys)
{
    EXPECT_EQ(EscapeControls("\"\x7F\""), "\"\\u007f\"");
    EXPECT_EQ(EscapeControls("\"\xC2\x80-\xC2\x9B"
                             "2J-\xC2\x9F\""),
              "\"\\u0080-\\u009b2J-\\u009f\"");
}

TEST(EscapeControlsTest, LeavesTheRestAsItIs)
{
    // No-break space, accents, Japanese with bytes of the same codes, an escape that is one already.
    for (const char *json :
         {"", "\"~\"", "\"\xC2\xA0\xC3\xA9\xC3\x9F\"", "\"\xE3\x82\x9B\xE3\x81\x82\"", "\"\\u001b\""})
        EXPECT_EQ(EscapeControls(json), json);
}

} // namespace
} // namespace vxhost
