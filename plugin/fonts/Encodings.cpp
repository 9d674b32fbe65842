#include "plugin/fonts/Encodings.h"

#include <vx/Toolbox.h>

namespace vx
{

namespace
{

constexpr int16_t kSystemScriptSelector = 18;

} // namespace

int16_t GetDefaultScript()
{
    return MacScript2VXParserScript(GetEnvirons(kSystemScriptSelector));
}

int16_t MacScript2VXParserScript(int32_t macScript)
{
    const bool known = macScript >= kScriptJapanese && macScript <= kScriptKorean;
    return known ? static_cast<int16_t>(macScript) : int16_t{kScriptRoman};
}

} // namespace vx
