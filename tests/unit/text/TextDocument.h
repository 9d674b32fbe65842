// Wraps text operators into the smallest document that sets text, so that a case is only the operators it is about.
#pragma once

#include "tests/support/RecordingHost.h"
#include "tests/unit/body/BodyDocument.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vxtest
{

// An open object of point text at (10, 20), with no font and no render mode.
inline constexpr std::string_view kTextOpened = "0 To 1 0 0 1 10 20 0 Tp TP\n";
// The same, to be filled in Helvetica of 12 points. A host that is not told otherwise makes every character half an
// em wide: 6 points.
inline constexpr std::string_view kTextReady = "0 To 1 0 0 1 10 20 0 Tp TP\n/_Helvetica 12 Tf 0 Tr\n";

inline std::string TextDocument(std::string_view lines)
{
    return Document(std::string(kTextReady) + std::string(lines));
}

// A document that re-encodes Helvetica as _Helvetica, its text being of that script.
inline std::string ReencodedDocument(int version, int script, std::string_view lines)
{
    return DocumentWithSetup(version, "%%BeginSetup\n%VX3_BeginEncoding: _Helvetica Helvetica\n"
                                      "[ 39/quotesingle /_Helvetica /Helvetica 0 " +
                                          std::to_string(script) + " 0 TZ\n%VX3_EndEncoding\n%%EndSetup\n" +
                                          std::string(kTextReady) + std::string(lines));
}

// What a document makes a host of these fonts do: Helvetica (the default font), Times-Roman, Courier.
struct TextCase {
    const char *name, *lines, *calls;
    int16_t result;
};

inline void ExpectCalls(const std::string &document, const TextCase &expected, int32_t systemScript = 0)
{
    RecordingHost host;
    host.systemScript = static_cast<int16_t>(systemScript);
    EXPECT_EQ(host.Parse(document), expected.result);
    EXPECT_EQ(host.Joined(), expected.calls);
    EXPECT_EQ(host.liveBlocks, 0);
}

} // namespace vxtest
