// Calls of a plug-in: what it is given, what becomes of its answers, and that neither threads nor nesting nor
// exceptions mix them up. Most plug-ins here are one procedure that does what the case is about.
#include "host/Plugin.h"

#include "host/fonts/FixedFontList.h"
#include "tests/unit/host/RecordingDevice.h"

#include <vx/Toolbox.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

constexpr std::string_view kSquare =
    "%!PS-Tavro-3.0\n%%BoundingBox: 1 2 30 40\n%VX5_FileFormat 3\n%%EndComments\n"
    "%%BeginSetup\n%%EndSetup\n"
    "q 0 0 m 9 0 l 9 9 l W n 0.5 g 0 0 m 9 0 l 9 9 l f Q\n%%EOF\n";
constexpr const char *kSquareCalls =
    "begin 100 100; save; clip M0 0 L9 0 L9 9; fill M0 0 L9 0 L9 9 Z gray 0.5; restore; end";

// The page that all drawings here are made on.
Page TestPage()
{
    Page page;
    page.box = {0, 0, 100, 100};
    return page;
}

class PluginTest : public testing::Test
{
  protected:
    PluginTest()
    {
        options_.fonts = &fonts_;
        options_.widths = &fonts_;
    }

    std::unique_ptr<Document> MakeDocument(std::string_view bytes)
    {
        return Document::FromMemory(std::as_bytes(std::span(bytes)), &error_);
    }
    std::unique_ptr<Plugin> Load()
    {
        auto plugin = Plugin::Load(VX_PLUGIN_PATH, &error_);
        EXPECT_NE(plugin, nullptr) << error_;
        return plugin;
    }
    Outcome Run(VXMainProc entry, std::string_view bytes = "0123456789")
    {
        return Plugin::FromEntry(entry)->Draw(*MakeDocument(bytes), options_, TestPage(), device_);
    }

    FixedFontList fonts_{{"Helvetica"}};
    ParseOptions options_;
    RecordingDevice device_;
    std::string error_;
};

void FillLine(HostCallRecord *record)
{
    const FixedPoint at = {0, 0};
    reinterpret_cast<ZRKMoveToProc>(record->procs->entry[kZRKMoveTo])(record->drawing, &at);
    reinterpret_cast<ZRKLineToProc>(record->procs->entry[kZRKLineTo])(record->drawing, &at);
    reinterpret_cast<ZRKPathProc>(record->procs->entry[kZRKFill])(record->drawing);
}

// Reads until nothing more comes, and returns how much came.
int32_t ReadAll(HostCallRecord *record)
{
    char buffer[4];
    int32_t total = 0;
    for (int32_t count = sizeof buffer; count > 0;) {
        count = sizeof buffer;
        record->reader->read(record->reader, kVXReadBytes, buffer, &count);
        total += count;
    }
    return total;
}

TEST_F(PluginTest, AMissingFileIsAnError)
{
    EXPECT_EQ(Plugin::Load("/no/such/plugin.so", &error_), nullptr);
    EXPECT_TRUE(error_.starts_with("cannot be loaded, ")) << error_;
    EXPECT_EQ(error_.find('\n'), std::string::npos);
}

TEST_F(PluginTest, ALibraryWithoutTheEntryIsAnError)
{
    EXPECT_EQ(Plugin::Load("libz.so.1", &error_), nullptr);
    EXPECT_NE(error_.find("\"main\""), std::string::npos) << error_;
}

TEST_F(PluginTest, TheHeaderGivesTheBox)
{
    const Outcome outcome = Load()->ReadInfo(*MakeDocument(kSquare), options_);
    EXPECT_EQ(outcome.result, kVXOk);
    EXPECT_TRUE(outcome.headerAccepted);
    EXPECT_EQ(outcome.box.left, 1);
    EXPECT_EQ(outcome.box.bottom, 2);
    EXPECT_EQ(outcome.box.right, 30);
    EXPECT_EQ(outcome.box.top, 40);
    EXPECT_EQ(outcome.bytesTotal, static_cast<int64_t>(kSquare.size()));
}

TEST_F(PluginTest, AnythingElseIsNoDocument)
{
    const Outcome outcome = Load()->ReadInfo(*MakeDocument("GIF89a and more bytes"), options_);
    EXPECT_EQ(outcome.result, kVXBadFormat);
    EXPECT_FALSE(outcome.headerAccepted);
}

TEST_F(PluginTest, ADocumentIsDrawn)
{
    const Outcome outcome = Load()->Draw(*MakeDocument(kSquare), options_, TestPage(), device_);
    EXPECT_EQ(outcome.result, kVXOk);
    EXPECT_TRUE(outcome.headerAccepted);
    EXPECT_EQ(outcome.box.top, 40);
    EXPECT_EQ(outcome.bytesRead, static_cast<int64_t>(kSquare.size()));
    EXPECT_GE(outcome.peakHeap, 8192) << "the string buffer alone is as large";
    EXPECT_EQ(outcome.counts.fills, 1u);
    EXPECT_EQ(device_.calls, kSquareCalls);
}

TEST_F(PluginTest, SavesThatStayOpenAreRestoredBeforeThePageEnds)
{
    Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector != kVXParse)
            return;
        reinterpret_cast<ZRKPathProc>(record->procs->entry[kZRKGSave])(record->drawing);
        reinterpret_cast<ZRKPathProc>(record->procs->entry[kZRKClip])(record->drawing);
    });
    EXPECT_EQ(device_.calls, "begin 100 100; save; clip; restore; end");
}

TEST_F(PluginTest, TooLittleMemoryIsAnOutcome)
{
    options_.maxHeap = 1000;
    const Outcome outcome = Load()->Draw(*MakeDocument(kSquare), options_, TestPage(), device_);
    EXPECT_EQ(outcome.result, kVXOutOfMemory);
    EXPECT_TRUE(outcome.memoryLimitHit);
    EXPECT_LE(outcome.peakHeap, 1000);
}

// A plug-in may take a line for malformed because it got no memory for it, or go on without.
TEST_F(PluginTest, MemoryThatWasRefusedIsAnOutcomeWhateverThePluginSays)
{
    options_.maxHeap = 1000;
    for (const int16_t answer : {kVXBadFormat, kVXOk}) {
        static int16_t said;
        said = answer;
        const Outcome outcome = Run([](int32_t selector, HostCallRecord *record, void *, int16_t *result) {
            if (selector == kVXParse && record->memory->allocate(2000, record->memory->refcon) == nullptr)
                *result = said;
        });
        EXPECT_EQ(outcome.result, kVXOutOfMemory) << answer;
        EXPECT_TRUE(outcome.memoryLimitHit) << answer;
    }
}

TEST_F(PluginTest, ThreadsDrawAtOnce)
{
    const auto plugin = Load();
    const auto document = MakeDocument(kSquare);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                RecordingDevice device;
                const Outcome outcome = plugin->Draw(*document, options_, TestPage(), device);
                ASSERT_EQ(outcome.result, kVXOk);
                ASSERT_EQ(device.calls, kSquareCalls);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}

TEST_F(PluginTest, ADeviceMayDrawAnotherDocument)
{
    const auto plugin = Load();
    const auto document = MakeDocument(kSquare);
    const FixedFontList others({"A", "B"});
    ParseOptions innerOptions;
    innerOptions.fonts = &others;
    RecordingDevice inner;
    device_.onPaint = [&] {
        EXPECT_EQ(UNIXNumFonts(), 1);
        plugin->Draw(*document, innerOptions, TestPage(), inner);
        EXPECT_EQ(UNIXNumFonts(), 1) << "the outer host is back";
    };
    EXPECT_EQ(plugin->Draw(*document, options_, TestPage(), device_).result, kVXOk);
    EXPECT_EQ(device_.calls, kSquareCalls);
    EXPECT_EQ(inner.calls, kSquareCalls);
}

TEST_F(PluginTest, TextThatIsNotDrawnIsCounted)
{
    constexpr std::string_view kText =
        "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n%%EndComments\n"
        "%%BeginSetup\n%%EndSetup\n"
        "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 10 Tf (one) Tx (two) Tx TO\n%%EOF\n";
    const Outcome outcome = Load()->Draw(*MakeDocument(kText), options_, TestPage(), device_);
    EXPECT_EQ(outcome.result, kVXOk);
    EXPECT_EQ(outcome.undrawnTexts, 2U);
    EXPECT_EQ(device_.calls, "begin 100 100; end");
}

TEST_F(PluginTest, ReportsAreCollectedWithTheirNumbers)
{
    const Outcome outcome = Run([](int32_t selector, HostCallRecord *record, void *, int16_t *result) {
        *result = kVXOk;
        if (selector != kVXParse)
            return;
        uint8_t title[256];
        uint8_t message[256];
        GetIndString(title, kVXProblemStrings, 2 * kVXProblemBinary - 1);
        GetIndString(message, kVXProblemStrings, 2 * kVXProblemBinary);
        EXPECT_EQ(record->report(title, message, 0), 0);
        EXPECT_EQ(record->warningsOff, 0);
    });
    ASSERT_EQ(outcome.reports.size(), 1u);
    EXPECT_EQ(outcome.reports[0].number, kVXProblemBinary);
    EXPECT_EQ(outcome.reports[0].title, "binary data skipped");
    EXPECT_FALSE(outcome.reports[0].message.empty());
}

TEST_F(PluginTest, AReportMayStop)
{
    options_.report = false;
    options_.onReport = [](const Report &report) { return report.number == 0; };
    Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector != kVXParse)
            return;
        EXPECT_NE(record->report(reinterpret_cast<const uint8_t *>("\1x"),
                                 reinterpret_cast<const uint8_t *>(""), 0),
                  0);
        EXPECT_NE(record->warningsOff, 0);
    });
}

// A plug-in tells such totals of a binary wrapper whose length is damaged.
TEST_F(PluginTest, ProgressOfATotalBelowZeroIsOfNone)
{
    std::vector<int64_t> told;
    options_.onProgress = [&](int64_t read, int64_t total) { told.insert(told.end(), {read, total}); };
    Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector != kVXParse)
            return;
        record->progress(0, -1);
        record->progress(7, INT32_MIN);
        record->progress(7, 9);
    });
    EXPECT_EQ(told, (std::vector<int64_t>{0, 0, 7, 0, 7, 9}));
}

TEST_F(PluginTest, ProgressIsHandedOn)
{
    int64_t last = 0;
    options_.onProgress = [&](int64_t read, int64_t total) { last = 100 * read / total; };
    Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector == kVXParse)
            record->progress(5, 10);
    });
    EXPECT_EQ(last, 50);
}

TEST_F(PluginTest, WhatADeviceThrowsEndsTheParseAndComesBack)
{
    device_.onPaint = [] { throw std::runtime_error("the device broke"); };
    static int32_t readAfterwards;
    readAfterwards = -1;
    const auto entry = [](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector != kVXParse)
            return;
        FillLine(record);
        readAfterwards = ReadAll(record);
    };
    EXPECT_THROW(Run(entry), std::runtime_error);
    EXPECT_EQ(readAfterwards, 0);
}

TEST_F(PluginTest, ADeviceWithoutMemoryIsAnOutcome)
{
    device_.onPaint = [] { throw std::bad_alloc(); };
    const Outcome outcome = Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector == kVXParse)
            FillLine(record);
    });
    EXPECT_EQ(outcome.result, kVXOutOfMemory);
    EXPECT_FALSE(outcome.memoryLimitHit) << "the machine's limit, not ours";
    EXPECT_EQ(device_.calls, "begin 100 100") << "it is in the middle of a fill";
}

TEST_F(PluginTest, SavesWithoutEndAreAnOutcome)
{
    options_.maxDrawing = 1 << 20;
    const Outcome outcome = Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        for (int i = 0; selector == kVXParse && i < 100000; ++i)
            reinterpret_cast<ZRKPathProc>(record->procs->entry[kZRKGSave])(record->drawing);
    });
    EXPECT_EQ(outcome.result, kVXOutOfMemory);
    EXPECT_TRUE(outcome.memoryLimitHit);
}

TEST_F(PluginTest, WhatTheDeviceSaysAtTheEndIsKept)
{
    device_.endPageFailure = {FailureKind::CannotWrite, "disk full", ENOSPC};
    const Failure failure = Load()->Draw(*MakeDocument(kSquare), options_, TestPage(), device_).failure;
    EXPECT_EQ(failure.kind, FailureKind::CannotWrite);
    EXPECT_EQ(failure.text, "disk full");
    EXPECT_EQ(failure.error, ENOSPC);
}

TEST_F(PluginTest, TheReadingPositionIsTold)
{
    const Outcome outcome = Run([](int32_t selector, HostCallRecord *record, void *, int16_t *) {
        if (selector == kVXParse) {
            char buffer[4];
            int32_t count = sizeof buffer;
            record->reader->read(record->reader, kVXReadBytes, buffer, &count);
        }
    });
    EXPECT_EQ(outcome.bytesRead, 4);
    EXPECT_EQ(outcome.bytesTotal, 10);
}

} // namespace
} // namespace vxhost
