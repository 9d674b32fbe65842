// Scripts: which one the host's system uses.
#pragma once

#include <cstdint>

namespace vx
{

enum Script : int16_t {
    kScriptRoman = 0,
    kScriptJapanese = 1,
    kScriptTraditionalChinese = 2,
    kScriptKorean = 3
};
constexpr int16_t kScriptCount = 4;

// The script that the system is set to.
int16_t GetDefaultScript();

// A Mac script number as a Script: 1 to 3 are passed through, all others count as Roman.
int16_t MacScript2VXParserScript(int32_t macScript);

} // namespace vx
