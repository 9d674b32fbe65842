// What a reading knows without being told: page, fonts, script and character set, all from the document itself; what it
// tells of a document that it gives up; and who goes beside it.
#include "host/reading/Reading.h"

#include "host/StreamCompanion.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/trace/TraceLines.h"
#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

// A document of eight lines.
constexpr std::string_view kSquare =
    "%!PS-Tavro-3.0\n%%BoundingBox: 30 2 1 40\n%VX5_FileFormat 3\n%%EndComments\n"
    "%%BeginSetup\n%%EndSetup\n"
    "0.5 g 0 0 m 9 0 l 9 9 l f\n%%EOF\n";

std::string TextDocument(const std::string &header, const std::string &font)
{
    return "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n" + header +
           "%%EndComments\n%%BeginSetup\n%%EndSetup\n"
           "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_" +
           font + " 10 Tf (abc) Tx TO\n%%EOF\n";
}

const std::string kVersion3 = "%VX5_FileFormat 3\n";
const std::string kVersion4 = "%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.0\n";

class ReadingTest : public testing::Test
{
  protected:
    static void SetUpTestSuite()
    {
        std::string error;
        installation_.plugin = Plugin::Load(VX_PLUGIN_PATH, &error);
        ASSERT_NE(installation_.plugin, nullptr) << error;
        installation_.fonts = MakeFontconfigFonts(
            {false, {"/usr/share/fonts/opentype/urw-base35", "/usr/share/fonts/opentype/ipafont-gothic"}});
    }
    static void TearDownTestSuite() { installation_ = {}; }

    Reading &Open(std::string_view bytes, ReadingOptions options = {})
    {
        bytes_ = bytes;
        std::string error;
        document_ = Document::FromMemory(std::as_bytes(std::span(bytes_)), &error);
        reading_ = std::make_unique<Reading>(installation_, *document_, std::move(options));
        return *reading_;
    }

    static Installation installation_;
    std::string bytes_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<Reading> reading_;
    RecordingDevice device_;
};

Installation ReadingTest::installation_;

TEST_F(ReadingTest, ThePageIsTheHeadersBoxTurnedUpright)
{
    const Box box = Open(kSquare).PageFor().box;
    EXPECT_EQ(box.left, 1);
    EXPECT_EQ(box.bottom, 2);
    EXPECT_EQ(box.right, 30);
    EXPECT_EQ(box.top, 40);
}

TEST_F(ReadingTest, APageOfOnesOwnKeepsTheHeadersTitle)
{
    const Page page =
        Open("%!PS-Tavro-3.0\n%%Title: (Boat)\n" + std::string(kSquare.substr(15))).PageFor(Box{0, 9, 5, 1});
    EXPECT_EQ(page.title, "Boat");
    EXPECT_EQ(page.box.bottom, 1);
    EXPECT_EQ(page.box.top, 9);
}

TEST_F(ReadingTest, LookingCountsWhatDrawingWouldPaint)
{
    const Outcome outcome = Open(kSquare).Look();
    EXPECT_EQ(outcome.result, kVXOk);
    EXPECT_EQ(outcome.counts.fills, 1U);
    EXPECT_EQ(outcome.counts.segments, 2U);
}

TEST_F(ReadingTest, LookingEndsWithTheHeaderOfWhatIsNoDocument)
{
    const Outcome outcome = Open("GIF89a and more of it").Look();
    EXPECT_NE(outcome.result, kVXOk);
    EXPECT_FALSE(outcome.headerAccepted);
}

TEST_F(ReadingTest, TextIsDrawnInTheFontThatServesIt)
{
    Reading &reading = Open(TextDocument(kVersion3, "Helvetica"));
    const Outcome outcome = reading.Draw(reading.PageFor(), device_);
    ASSERT_EQ(outcome.fonts.size(), 1U);
    EXPECT_EQ(outcome.fonts[0].served, "NimbusSans-Regular");
    EXPECT_EQ(outcome.fonts[0].characters, 3U);
    EXPECT_EQ(outcome.undrawnTexts, 0U);
    EXPECT_NE(device_.calls.find("fill"), std::string::npos) << device_.calls;
}

TEST_F(ReadingTest, TextOfVersion4IsOfTheCodePage)
{
    const auto encodingIn = [this](const std::string &header) {
        const Reading &reading = Open(TextDocument(header, "Helvetica"));
        return reading.Fonts().EncodingOf(reading.Fonts().Find("Helvetica"));
    };
    EXPECT_EQ(encodingIn(kVersion3), TextEncoding::MacRoman);
    EXPECT_EQ(encodingIn(kVersion4), TextEncoding::CodePage1252);
}

TEST_F(ReadingTest, FontsThatOnlyTheHeaderNamesAreServedToo)
{
    const Reading &reading = Open(TextDocument(kVersion3 + "%%DocumentFonts: Frutiger\n", "Helvetica"));
    EXPECT_GE(reading.Fonts().Find("Frutiger"), 0);
    EXPECT_EQ(Open(TextDocument(kVersion3, "Helvetica")).Fonts().Find("Frutiger"), -1);
}

TEST_F(ReadingTest, TheScriptIsTheFontsUnlessItIsSaid)
{
    const std::string japanese = TextDocument(kVersion3, "IPAGothic");
    EXPECT_EQ(Open(japanese).Fonts().SystemScript(), Script::Japanese);
    ReadingOptions options;
    options.script = Script::Roman;
    EXPECT_EQ(Open(japanese, options).Fonts().SystemScript(), Script::Roman);
}

TEST_F(ReadingTest, WhatMayNotBeSubstitutedEndsTheDocumentAndIsNamed)
{
    ReadingOptions options;
    options.substitute = false;
    Reading &reading = Open(TextDocument(kVersion3, "Frutiger"), options);
    const Outcome outcome = reading.Draw(reading.PageFor(), device_);
    EXPECT_EQ(outcome.result, kVXStoppedByUser);
    EXPECT_EQ(outcome.lackedFont, "Frutiger");
    ASSERT_EQ(outcome.fonts.size(), 1U);
    EXPECT_EQ(outcome.fonts[0].match, FontMatch::Missing);
    EXPECT_EQ(Open(TextDocument(kVersion3, "Helvetica"), options).Look().result, kVXOk);
}

TEST_F(ReadingTest, ACallerThatGivesUpLacksNoFont)
{
    ReadingOptions options;
    options.substitute = false;
    int reports = 0;
    options.onReport = [&](const Report &) { return ++reports > 0; };
    std::string text(kSquare);
    text.replace(text.find("0.5 g"), 5, "1 Qx 0.5 g");
    const Outcome outcome = Open(text, options).Look();
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(outcome.result, kVXStoppedByUser);
    EXPECT_EQ(outcome.lackedFont, "");
}

TEST_F(ReadingTest, TooLittleMemoryIsAnOutcome)
{
    ReadingOptions options;
    options.maxMemory = 100;
    const Outcome outcome = Open(kSquare, options).Look();
    EXPECT_TRUE(outcome.memoryLimitHit);
}

void AddLine(void *to, std::string_view line)
{
    static_cast<std::vector<std::string> *>(to)->emplace_back(line);
}

TEST_F(ReadingTest, TheTraceHasReportsAndTheResult)
{
    std::vector<std::string> lines;
    TraceLines writer({AddLine, &lines});
    std::string text(kSquare);
    text.replace(text.find("0.5 g"), 5, "1 Qx 0.5 g");
    EXPECT_EQ(Open(text).Trace(writer).result, kVXOk);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "report 3");
    EXPECT_EQ(lines.back(), "result 0");
    EXPECT_EQ(std::ranges::count(lines, "fill"), 1);
}

class Watching final : public StreamCompanion
{
  public:
    void Deliver(std::span<std::byte> bytes, size_t offset) override
    {
        if (seen.size() < offset + bytes.size())
            seen.resize(offset + bytes.size());
        std::ranges::transform(bytes, seen.begin() + static_cast<std::ptrdiff_t>(offset),
                               [](std::byte byte) { return static_cast<char>(byte); });
        if (change != nullptr)
            change(bytes);
    }
    void BeginLine() override { ++lines; }

    std::string seen;
    int lines = 0;
    void (*change)(std::span<std::byte> bytes) = nullptr;
};

TEST_F(ReadingTest, ACompanionSeesEveryByteAndEveryLineOnce)
{
    Watching companion;
    ReadingOptions options;
    options.companion = &companion;
    (void)Open(kSquare, options).ReadInfo();
    EXPECT_EQ(companion.seen, "") << "the header's pass has no companion";
    (void)Open(kSquare, options).Look();
    EXPECT_EQ(companion.seen, kSquare);
    EXPECT_EQ(companion.lines, 8);
}

TEST_F(ReadingTest, ALineHasBegunWhenItsCallsCome)
{
    Watching companion;
    ReadingOptions options;
    options.companion = &companion;
    Reading &reading = Open(kSquare, options);
    int lineOfPaint = 0;
    device_.onPaint = [&] { lineOfPaint = companion.lines; };
    (void)reading.Draw(reading.PageFor(), device_);
    EXPECT_EQ(lineOfPaint, 7);
}

TEST_F(ReadingTest, ACompanionMayChangeWhatThePlugInReads)
{
    Watching companion;
    companion.change = [](std::span<std::byte> bytes) {
        std::ranges::replace(bytes, std::byte{'9'}, std::byte{'7'});
    };
    ReadingOptions options;
    options.companion = &companion;
    Reading &reading = Open(kSquare, options);
    EXPECT_EQ(reading.Draw(reading.PageFor(), device_).result, kVXOk);
    EXPECT_NE(device_.calls.find("M0 0 L7 0 L7 7"), std::string::npos) << device_.calls;
}

} // namespace
} // namespace vxhost
