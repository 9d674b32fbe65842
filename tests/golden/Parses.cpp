#include "tests/golden/Parses.h"

#include <vx/HostCall.h>

#include <algorithm>
#include <iterator>

namespace vxtest
{

namespace
{

constexpr int16_t kListedResults[] = {kVXOk,          kVXStoppedByUser, kVXProcsUnusable,
                                      kVXOutOfMemory, kVXBadSelector,   kVXBadFormat};

} // namespace

int16_t ParseSoundly(RecordingHost *host, const std::string &bytes)
{
    const int16_t result = host->Parse(bytes);
    EXPECT_NE(std::find(std::begin(kListedResults), std::end(kListedResults), result),
              std::end(kListedResults))
        << result;
    EXPECT_EQ(host->liveBlocks, 0);
    EXPECT_TRUE(host->TableIsAsItWas());
    return result;
}

std::vector<std::string> Trace(RecordingHost *host, const std::string &bytes)
{
    const int16_t result = ParseSoundly(host, bytes);
    std::vector<std::string> lines = host->lines;
    lines.push_back("result " + std::to_string(result));
    return lines;
}

testing::AssertionResult IsSameTrace(const std::vector<std::string> &expected,
                                     const std::vector<std::string> &actual)
{
    const auto lineAt = [](const std::vector<std::string> &lines, size_t index) {
        return index < lines.size() ? lines[index] : "(nothing more)";
    };
    for (size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
        if (lineAt(expected, i) != lineAt(actual, i))
            return testing::AssertionFailure() << "call " << i + 1 << "\n  expected: " << lineAt(expected, i)
                                               << "\n  made:     " << lineAt(actual, i);
    }
    return testing::AssertionSuccess();
}

} // namespace vxtest
