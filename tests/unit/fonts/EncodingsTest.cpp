// Which script the host's system uses.
#include "plugin/fonts/Encodings.h"

#include "host/toolbox/HostContext.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

struct ScriptCase {
    const char *name;
    int32_t macScript;
    int16_t script;
};

class Scripts : public testing::TestWithParam<ScriptCase>
{
};

TEST_P(Scripts, FollowFromTheMacScript)
{
    EXPECT_EQ(MacScript2VXParserScript(GetParam().macScript), GetParam().script);

    vxhost::HostContext host;
    host.systemScript = GetParam().macScript;
    const vxhost::HostScope scope(&host);
    EXPECT_EQ(GetDefaultScript(), GetParam().script);
}

const ScriptCase kScripts[] = {
    {"RomanIsRoman", 0, kScriptRoman},
    {"Japanese", 1, kScriptJapanese},
    {"TraditionalChinese", 2, kScriptTraditionalChinese},
    {"Korean", 3, kScriptKorean},
    {"OthersAreRoman", 4, kScriptRoman},
    {"SimplifiedChineseIsRoman", 25, kScriptRoman},
    {"NegativeOnesAreRoman", -1, kScriptRoman},
};
INSTANTIATE_TEST_SUITE_P(Encodings, Scripts, testing::ValuesIn(kScripts), CaseName());

} // namespace
