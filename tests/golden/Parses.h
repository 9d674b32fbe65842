// Whole parses: what they come to, and what must hold for every one of them.
#pragma once

#include "tests/support/RecordingHost.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vxtest
{

// Parses and returns the result. It must be a listed one, with nothing left allocated and the table as it was.
int16_t ParseSoundly(RecordingHost *host, const std::string &bytes);

// What a sound parse makes the host do, and a last line with its result.
std::vector<std::string> Trace(RecordingHost *host, const std::string &bytes);

// Shows the first line in which they differ, in both versions.
testing::AssertionResult IsSameTrace(const std::vector<std::string> &expected,
                                     const std::vector<std::string> &actual);

} // namespace vxtest
