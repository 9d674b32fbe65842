// Resources, strings, dialogs and fonts as the Toolbox shows them, and which host a call finds.
#include "host/fonts/FixedFontList.h"
#include "host/toolbox/HostContext.h"
#include "host/toolbox/PascalString.h"

#include <vx/Toolbox.h>

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace vxhost
{
namespace
{

std::string StringAt(int16_t list, int16_t index)
{
    uint8_t string[256];
    std::memset(string, 'x', sizeof string);
    GetIndString(string, list, index);
    return std::string(PascalView(string));
}

TEST(ResourcesTest, AMissingOneIsNullAndAnError)
{
    HostContext host;
    const HostScope scope(&host);
    EXPECT_EQ(GetResource(kVXStringListType, 1), nullptr);
    EXPECT_EQ(ResError(), kResNotFoundError);
    EXPECT_NE(GetResource(kVXStringListType, kVXEncodingSuffixes), nullptr);
    EXPECT_EQ(ResError(), 0);
    EXPECT_EQ(GetResource(kVXDialogType, 1), nullptr);
}

TEST(ResourcesTest, AReplacedListCountsAndTheOwnOneDoesNot)
{
    HostContext host;
    host.stringLists[kVXEncodingSuffixes] = {"one", "", "three"};
    const HostScope scope(&host);
    EXPECT_EQ(StringAt(kVXEncodingSuffixes, 1), "one");
    EXPECT_EQ(StringAt(kVXEncodingSuffixes, 2), "");
    EXPECT_EQ(StringAt(kVXEncodingSuffixes, 3), "three");
}

TEST(ResourcesTest, AStringOutsideOfItsListIsEmpty)
{
    HostContext host;
    const HostScope scope(&host);
    for (const int16_t index : std::initializer_list<int16_t>{-1, 0, 3, 32767})
        EXPECT_EQ(StringAt(kVXOrientationSuffixes, index), "") << index;
    EXPECT_EQ(StringAt(1, 1), "");
}

TEST(ResourcesTest, TheDialogBeginsWithItsRectangleAndKeepsWhatIsWritten)
{
    HostContext host;
    host.aboutBox = Rect{1, 2, 30, 40};
    const HostScope scope(&host);
    const Handle dialog = GetResource(kVXDialogType, kVXAboutDialog);
    ASSERT_NE(dialog, nullptr);
    Rect bounds;
    std::memcpy(&bounds, *dialog, sizeof bounds);
    EXPECT_EQ(bounds.top, 1);
    EXPECT_EQ(bounds.left, 2);
    EXPECT_EQ(bounds.bottom, 30);
    EXPECT_EQ(bounds.right, 40);
    OffsetRect(&bounds, 100, -1);
    std::memcpy(*dialog, &bounds, sizeof bounds);
    EXPECT_NE(GetNewDialog(kVXAboutDialog, nullptr, nullptr), nullptr);
    EXPECT_EQ(host.dialog.bounds.left, 102);
    EXPECT_EQ(host.dialog.bounds.right, 140);
    EXPECT_EQ(host.dialog.bounds.top, 0);
    EXPECT_EQ(host.dialog.bounds.bottom, 29);
}

TEST(DialogsTest, ADialogWithoutMemoryIsNullAndAnError)
{
    HostContext host;
    host.dialogsFail = true;
    const HostScope scope(&host);
    EXPECT_EQ(GetNewDialog(kVXAboutDialog, nullptr, nullptr), nullptr);
    EXPECT_EQ(MemError(), kMemFullError);
}

TEST(DialogsTest, ADebugMessageReachesTheHost)
{
    HostContext host;
    std::string heard;
    host.onDebugMessage = [&](std::string_view message) { heard = message; };
    const HostScope scope(&host);
    DebugStr(reinterpret_cast<const uint8_t *>("\5hello"));
    EXPECT_EQ(heard, "hello");
}

TEST(StringsTest, P2cstrTurnsAStringInPlace)
{
    uint8_t string[256] = "\3abc";
    EXPECT_EQ(p2cstr(string), reinterpret_cast<char *>(string));
    EXPECT_STREQ(reinterpret_cast<char *>(string), "abc");
    std::memset(string, 'y', sizeof string);
    string[0] = 255;
    EXPECT_EQ(std::strlen(p2cstr(string)), 255u);
    string[0] = 0;
    EXPECT_STREQ(p2cstr(string), "");
}

TEST(StringsTest, BlockMoveMayOverlapAndTakesNoNegativeCount)
{
    char text[] = "abcdef";
    BlockMove(text, text + 1, 5);
    EXPECT_STREQ(text, "aabcde");
    BlockMove(text + 1, text, 5);
    EXPECT_STREQ(text, "abcdee");
    BlockMove(text, text + 1, -1);
    EXPECT_STREQ(text, "abcdee");
}

struct FontNames {
    int16_t result = 0, number = -1;
    std::string name, family, suffix;
};

FontNames NamesOf(int32_t index)
{
    FontNames names;
    uint8_t name[256] = {0};
    uint8_t family[256] = {0};
    uint8_t suffix[256] = {0};
    names.result = UNIXGetIndexedFontName(index, name, &names.number);
    UNIXGetFamilyParentAndSuffix(name, family, 0, suffix);
    names.name = PascalView(name);
    names.family = PascalView(family);
    names.suffix = PascalView(suffix);
    return names;
}

TEST(FontsTest, AreNamedByIndexWithFamilyAndSuffix)
{
    FixedFontList fonts({"Times-Roman", "Courier", "Helvetica-Bold"}, 0x9000);
    HostContext host;
    host.fonts = &fonts;
    host.widths = &fonts;
    const HostScope scope(&host);
    EXPECT_EQ(UNIXNumFonts(), 3);
    const FontNames last = NamesOf(2);
    EXPECT_EQ(last.result, 0);
    EXPECT_EQ(last.number, 2);
    EXPECT_EQ(last.name, "Helvetica-Bold");
    EXPECT_EQ(last.family, "Helvetica");
    EXPECT_EQ(last.suffix, "Bold");
    EXPECT_EQ(NamesOf(1).family, "Courier");
    EXPECT_EQ(NamesOf(1).suffix, "");
    EXPECT_EQ(UNIXGetCharWidth(1, 'a'), 0x9000);
}

TEST(FontsTest, AnEntryWithoutNameKeepsItsPlaceAndCannotBeHad)
{
    const FixedFontList fonts({"A", "", "C"});
    HostContext host;
    host.fonts = &fonts;
    const HostScope scope(&host);
    EXPECT_EQ(UNIXNumFonts(), 3);
    EXPECT_NE(NamesOf(1).result, 0);
    EXPECT_EQ(NamesOf(2).name, "C");
}

TEST(FontsTest, OutsideOfTheListThereIsNothing)
{
    FixedFontList fonts({"A"});
    HostContext host;
    host.fonts = &fonts;
    host.widths = &fonts;
    const HostScope scope(&host);
    EXPECT_NE(NamesOf(-1).result, 0);
    EXPECT_NE(NamesOf(1).result, 0);
    EXPECT_EQ(UNIXGetCharWidth(-1, 'a'), 0);
    EXPECT_EQ(UNIXGetCharWidth(1, 'a'), 0);
}

TEST(FontsTest, WithoutWidthsNoCharacterHasOne)
{
    const FixedFontList fonts({"A"});
    HostContext host;
    host.fonts = &fonts;
    const HostScope scope(&host);
    EXPECT_EQ(UNIXGetCharWidth(0, 'a'), 0);
}

TEST(FontsTest, ANameThatIsNotThereIsItsOwnFamily)
{
    const FixedFontList fonts({"A"});
    HostContext host;
    host.fonts = &fonts;
    const HostScope scope(&host);
    uint8_t family[256];
    uint8_t suffix[256];
    UNIXGetFamilyParentAndSuffix(reinterpret_cast<const uint8_t *>("\7Foo-Bar"), family, 0, suffix);
    EXPECT_EQ(PascalView(family), "Foo");
    EXPECT_EQ(PascalView(suffix), "Bar");
}

TEST(FontsTest, OnlyTheSystemScriptIsAnEnvironment)
{
    HostContext host;
    host.systemScript = 3;
    const HostScope scope(&host);
    EXPECT_EQ(GetEnvirons(kVXSystemScript), 3);
    EXPECT_EQ(GetEnvirons(17), 0);
}

TEST(HostScopeTest, WithoutAHostTheToolboxStillAnswers)
{
    ASSERT_EQ(CurrentHost(), nullptr);
    EXPECT_EQ(GetResource(kVXStringListType, kVXProblemStrings), nullptr);
    EXPECT_NE(ResError(), 0);
    EXPECT_EQ(StringAt(kVXProblemStrings, 1), "");
    EXPECT_EQ(UNIXNumFonts(), 0);
    EXPECT_EQ(GetEnvirons(kVXSystemScript), 0);
    EXPECT_EQ(GetMainDevice()->right, 0);
    EXPECT_EQ(GetNewDialog(kVXAboutDialog, nullptr, nullptr), nullptr);
    EXPECT_EQ(ReportToHost(reinterpret_cast<const uint8_t *>(""), reinterpret_cast<const uint8_t *>(""), 1),
              0);
}

TEST(HostScopeTest, NestsAndDoesNotCrossThreads)
{
    HostContext outer;
    HostContext inner;
    const HostScope outerScope(&outer);
    {
        const HostScope innerScope(&inner);
        EXPECT_EQ(CurrentHost(), &inner);
        std::thread([] { EXPECT_EQ(CurrentHost(), nullptr); }).join();
    }
    EXPECT_EQ(CurrentHost(), &outer);
}

TEST(HostScopeTest, AnExceptionInACallbackIsKeptAndAsksToStop)
{
    HostContext host;
    host.onReport = [](const std::string &, const std::string &) -> bool {
        throw std::runtime_error("first");
    };
    const HostScope scope(&host);
    const auto *empty = reinterpret_cast<const uint8_t *>("");
    EXPECT_EQ(ReportToHost(empty, empty, 1), 1);
    EXPECT_TRUE(HasCallFailed());
    RunCallback([] { throw std::runtime_error("second"); });
    try {
        std::rethrow_exception(host.failure);
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "first");
    }
}

} // namespace
} // namespace vxhost
