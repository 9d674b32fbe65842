// The font table: names without their suffixes, defaults, substitutions, widths.
#include "plugin/fonts/UnixFont.h"

#include "host/fonts/FixedFontList.h"
#include "host/toolbox/HostContext.h"
#include "plugin/body/ParseContext.h"
#include "tests/support/CaseName.h"
#include "tests/unit/input/HeapForTests.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;
using vxhost::FixedFontList;
using vxhost::HostContext;
using vxhost::HostScope;

using Strings = std::vector<std::string>;

// The numbers of the lists.
constexpr int16_t kJapaneseDefaults = 16100;
constexpr int16_t kOtherDefaults = 16101;
constexpr int16_t kReplaced = 16200;
constexpr int16_t kReplacing = 16201;
constexpr int16_t kEncodings = 16300;
constexpr int16_t kOrientations = 16301;

// A host of these fonts and lists, and the table that the plug-in makes of it.
class FontTables
{
  public:
    explicit FontTables(const Strings &fonts) : fonts_(fonts), scope_(&host)
    {
        host.fonts = &fonts_;
        host.widths = &fonts_;
        host.stringLists[kEncodings] = {"-RKSJ", "-Roman"};
        host.stringLists[kOrientations] = {"-H", "-V"};
        record_.memory = &heap.procs;
    }
    ~FontTables()
    {
        ReleaseFontTable(&record_, &table);
        EXPECT_EQ(heap.live, 0);
    }
    FontTables(const FontTables &) = delete;
    FontTables &operator=(const FontTables &) = delete;

    bool Initialize() { return InitializeFontTable(&record_, &table); }
    bool InitializeSuffixes() { return InitializeSuffixTables(&record_, &table); }

    HostContext host;
    HeapForTests heap;
    FontTable table = {};

  private:
    FixedFontList fonts_;
    const HostScope scope_;
    HostCallRecord record_ = {};
};

TEST(InitializeFontTableTest, HasAnEntryForEveryHostFont)
{
    FontTables fonts({"Helvetica", "Times-Roman"});
    ASSERT_TRUE(fonts.Initialize());
    ASSERT_EQ(fonts.table.entryCount, 2);
    EXPECT_STREQ(fonts.table.entries[0].postScriptName, "Helvetica");
    EXPECT_STREQ(fonts.table.entries[0].familyName, "Helvetica");
    EXPECT_EQ(fonts.table.entries[0].fontNumber, 0);
    EXPECT_EQ(fonts.table.entries[0].flags, 0);
    EXPECT_STREQ(fonts.table.entries[1].postScriptName, "Times-Roman");
    EXPECT_STREQ(fonts.table.entries[1].familyName, "Times");
    EXPECT_EQ(fonts.table.entries[1].fontNumber, 1);
    EXPECT_EQ(fonts.table.encodingSuffixCount, 2);
    EXPECT_STREQ(fonts.table.encodingSuffix[1], "-Roman");
    EXPECT_EQ(fonts.table.orientationSuffixCount, 2);
    EXPECT_STREQ(fonts.table.orientationSuffix[0], "-H");
    EXPECT_EQ(fonts.heap.live, 5) << "the entries and four suffixes";
}

TEST(InitializeFontTableTest, AFontWithoutANameKeepsItsPlace)
{
    FontTables fonts({"", "Courier", ""});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_EQ(fonts.table.entryCount, 3);
    EXPECT_EQ(PSNameSearchFontTable("Courier", &fonts.table), 1);
}

// The host writes the number of such a font too.
TEST(InitializeFontTableTest, AFontWithoutANameStaysUnfilled)
{
    FontTables fonts({"Courier", ""});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_STREQ(fonts.table.entries[1].familyName, "");
    EXPECT_STREQ(fonts.table.entries[1].postScriptName, "");
    EXPECT_EQ(fonts.table.entries[1].fontNumber, 0);
}

TEST(InitializeFontTableTest, LongNamesAreWhole)
{
    const std::string name(255, 'n');
    FontTables fonts({name});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_EQ(fonts.table.entries[0].postScriptName, name);
    EXPECT_EQ(PSNameSearchFontTable(name.c_str(), &fonts.table), 0);
}

TEST(InitializeFontTableTest, FailsWithoutAnyName)
{
    FontTables none({});
    EXPECT_FALSE(none.Initialize());
    FontTables unnamed({"", ""});
    EXPECT_FALSE(unnamed.Initialize());
}

struct SuffixListCase {
    const char *name;
    Strings encodings, orientations;
    bool result;
};

class SuffixLists : public testing::TestWithParam<SuffixListCase>
{
};

TEST_P(SuffixLists, AreTakenWholeOrRefused)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kEncodings] = GetParam().encodings;
    fonts.host.stringLists[kOrientations] = GetParam().orientations;
    EXPECT_EQ(fonts.Initialize(), GetParam().result);
}

const SuffixListCase kSuffixLists[] = {
    {"None", {}, {}, true},
    {"FourEncodings", {"-A", "-B", "-C", "-D"}, {}, true},
    {"FiveEncodings", {"-A", "-B", "-C", "-D", "-E"}, {}, false},
    {"TwoOrientations", {}, {"-H", "-V"}, true},
    {"ThreeOrientations", {}, {"-H", "-V", "-W"}, false},
    {"AnEmptyEncoding", {"-A", ""}, {}, false},
    {"AnEmptyOrientation", {"-A"}, {"", "-V"}, false},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, SuffixLists, testing::ValuesIn(kSuffixLists), CaseName());

TEST(InitializeFontTableTest, FailsAtEveryAllocationWithoutALeak)
{
    for (uint32_t n = 0; n < 5; ++n) {
        FontTables fonts({"Helvetica"}); // its destructor checks that nothing is live
        fonts.heap.refused = 1u << n;
        EXPECT_FALSE(fonts.Initialize()) << "without block " << n;
    }
}

TEST(ReleaseFontTableTest, LeavesAnEmptyTable)
{
    FontTables fonts({"Helvetica"});
    ASSERT_TRUE(fonts.Initialize());
    HostCallRecord record = {};
    record.memory = &fonts.heap.procs;
    ReleaseFontTable(&record, &fonts.table);
    EXPECT_EQ(fonts.heap.live, 0);
    EXPECT_EQ(PSNameSearchFontTable("Helvetica", &fonts.table), kNoFont);
}

struct StripCase {
    const char *name, *written, *withoutOrientation, *withoutEncoding;
};

class Suffixes : public testing::TestWithParam<StripCase>
{
};

TEST_P(Suffixes, AreCutAndTheRestIsZero)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kEncodings] = {"-83pv-RKSJ", "-RKSJ"};
    ASSERT_TRUE(fonts.Initialize());
    const auto expectCut = [&](void (*cut)(char *, const FontTable *), const char *expected) {
        char name[kFontNameSize] = {};
        strncpy(name, GetParam().written, sizeof name - 1);
        cut(name, &fonts.table);
        EXPECT_STREQ(name, expected);
        for (size_t i = strlen(expected); i < sizeof name; ++i)
            EXPECT_EQ(name[i], 0) << i;
    };
    expectCut(RemoveOrientationSuffix, GetParam().withoutOrientation);
    expectCut(RemoveEncodingSuffix, GetParam().withoutEncoding);
}

const StripCase kStrips[] = {
    {"NoSuffix", "Ryumin", "Ryumin", "Ryumin"},
    {"AnOrientation", "Ryumin-V", "Ryumin", "Ryumin-V"},
    {"TheSecondOfTheList", "Ryumin-RKSJ", "Ryumin-RKSJ", "Ryumin"},
    {"TheFirstOfTheListIsTriedFirst", "Ryumin-83pv-RKSJ", "Ryumin-83pv-RKSJ", "Ryumin"},
    {"BothKindsAreCutApart", "Ryumin-RKSJ-H", "Ryumin-RKSJ", "Ryumin"},
    {"EverythingFromTheSuffixOnGoes", "Ryumin-Heavy", "Ryumin", "Ryumin-Heavy"},
    {"TheFirstOccurrenceCuts", "A-VB-VC", "A", "A-VB-VC"},
    // -H is the first of the list, though -V comes first in the name.
    {"TheListsOrderCountsNotTheNames", "A-VB-HC", "A-VB", "A-VB-HC"},
    {"AtTheStartItIsNone", "-Vertical", "-Vertical", "-Vertical"},
    {"AtTheStartAndAgainItCutsAtTheLaterPlace", "-Vert-Vert", "-Vert", "-Vert-Vert"},
    {"AtTheStartTheNextOfTheListIsTried", "-H-V", "-H", "-H-V"},
    {"TheSuffixAlone", "-V", "-V", "-V"},
    {"AnEmptyName", "", "", ""},
    {"CaseMatters", "Ryumin-v", "Ryumin-v", "Ryumin-v"},
    {"ASingleByteBeforeTheSuffix", "x-V", "x", "x-V"},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, Suffixes, testing::ValuesIn(kStrips), CaseName());

struct SearchCase {
    const char *name, *wanted;
    int16_t index;
};

class Searches : public testing::TestWithParam<SearchCase>
{
};

TEST_P(Searches, FindTheFirstEqualName)
{
    FontTables fonts(
        {"Helvetica", "Ryumin-V", "Ryumin-H", "Ryumin-RKSJ-H", "GothicBBB-RKSJ", "GothicBBB", "-Vx"});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_EQ(PSNameSearchFontTable(GetParam().wanted, &fonts.table), GetParam().index);
}

const SearchCase kSearches[] = {
    {"ThePlainName", "Helvetica", 0},
    {"CaseMatters", "helvetica", -1},
    {"APrefixIsNotEnough", "Helvetic", -1},
    {"ALongerNameIsAnother", "HelveticaNeue", -1},
    {"AnOrientationDoesNotMatter", "Helvetica-V", 0},
    {"TheFirstEntryWins", "Ryumin", 1},
    {"TheFirstEntryWinsThoughALaterOneIsTheSame", "Ryumin-RKSJ-H", 1},
    {"AnEncodingDoesNotMatter", "GothicBBB-RKSJ-V", 4},
    {"OrientationIsStrippedBeforeEncoding", "GothicBBB-H-RKSJ", 4},
    {"ASuffixAtTheStartBelongsToTheName", "-Vx", 6},
    {"NotASuffixlessName", "x", -1},
    {"TheEmptyName", "", -1},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, Searches, testing::ValuesIn(kSearches), CaseName());

// What the index must find: the first entry, one by one, that is equal once both are stripped.
int16_t SearchOneByOne(const std::string &wanted, const FontTable *table)
{
    const auto stripped = [table](const char *name) {
        char copy[kFontNameSize] = {};
        strncpy(copy, name, sizeof copy - 1);
        RemoveOrientationSuffix(copy, table);
        RemoveEncodingSuffix(copy, table);
        return std::string(copy);
    };
    const std::string name = stripped(wanted.c_str());
    for (int32_t i = 0; i < table->entryCount; ++i) {
        if (table->entries[i].postScriptName[0] != 0 && stripped(table->entries[i].postScriptName) == name)
            return static_cast<int16_t>(i);
    }
    return kNoFont;
}

// Names are made of few parts, so that many are equal, have suffixes inside, or are suffixes themselves.
TEST(PSNameSearchFontTableTest, FindsWhatASearchOneByOneFinds)
{
    constexpr const char *kParts[] = {"", "A", "B", "-", "-H", "-V", "-RKSJ", "-Roman", "Mincho", "x"};
    uint32_t state = 1;
    const auto randomName = [&] {
        std::string name;
        for (int parts = 4; parts > 0; --parts) {
            state = state * 1664525u + 1013904223u;
            name += kParts[(state >> 16) % std::size(kParts)];
        }
        return name;
    };
    Strings names;
    for (int i = 0; i < 3000; ++i)
        names.push_back(randomName());
    FontTables fonts(names);
    ASSERT_TRUE(fonts.Initialize());
    int found = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string wanted = randomName() + (i % 2 == 0 ? "" : "y");
        const int16_t expected = SearchOneByOne(wanted, &fonts.table);
        EXPECT_EQ(PSNameSearchFontTable(wanted.c_str(), &fonts.table), expected) << wanted;
        found += expected != kNoFont ? 1 : 0;
    }
    EXPECT_GT(found, 1000);
    EXPECT_LT(found, 3900);
}

TEST(PSNameSearchFontTableTest, AnEmptyTableHasNoFont)
{
    const FontTable table = {};
    EXPECT_EQ(PSNameSearchFontTable("Helvetica", &table), kNoFont);
}

TEST(PSNameSearchFontTableTest, LeavesTheNameAlone)
{
    FontTables fonts({"Ryumin-V"});
    ASSERT_TRUE(fonts.Initialize());
    const char name[] = "Ryumin-H";
    EXPECT_EQ(PSNameSearchFontTable(name, &fonts.table), 0);
    EXPECT_STREQ(name, "Ryumin-H");
    EXPECT_STREQ(fonts.table.entries[0].postScriptName, "Ryumin-V");
}

TEST(PSNameSearchFontTableTest, TakesNamesThatFillTheirBuffer)
{
    FontTables fonts({std::string(255, 'n')});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_EQ(PSNameSearchFontTable(std::string(1000, 'm').c_str(), &fonts.table), kNoFont);
}

TEST(ComparePostScriptNameTest, IgnoresBothKindsOfSuffix)
{
    FontTables fonts({"Helvetica"});
    ASSERT_TRUE(fonts.Initialize());
    EXPECT_TRUE(ComparePostScriptName("Ryumin-RKSJ-H", "Ryumin-V", &fonts.table));
    EXPECT_TRUE(ComparePostScriptName("Ryumin", "Ryumin", &fonts.table));
    EXPECT_FALSE(ComparePostScriptName("Ryumin", "ryumin", &fonts.table));
    EXPECT_FALSE(ComparePostScriptName("Ryumin", "Gothic", &fonts.table));
    EXPECT_FALSE(ComparePostScriptName("-V", "", &fonts.table));
}

struct DefaultCase {
    const char *name;
    int32_t systemScript;
    Strings japanese, others;
    std::vector<int32_t> defaults; // by script
};

class DefaultFonts : public testing::TestWithParam<DefaultCase>
{
};

TEST_P(DefaultFonts, AreTheFirstOfTheListThatTheHostHas)
{
    FontTables fonts({"Helvetica", "Courier", "Ryumin-V"});
    fonts.host.systemScript = GetParam().systemScript;
    fonts.host.stringLists[kJapaneseDefaults] = GetParam().japanese;
    fonts.host.stringLists[kOtherDefaults] = GetParam().others;
    ASSERT_TRUE(fonts.Initialize());
    InitializeDefaultFont(&fonts.table);
    for (size_t script = 0; script < 4; ++script)
        EXPECT_EQ(fonts.table.defaultFont[script], GetParam().defaults[script]) << script;
}

const DefaultCase kDefaults[] = {
    {"OfARomanSystem", 0, {"Ryumin"}, {"Geneva", "Courier", "Helvetica"}, {1, -1, -1, -1}},
    {"OfAJapaneseSystem", 1, {"Osaka", "Ryumin"}, {"Courier"}, {-1, 2, -1, -1}},
    {"OfAChineseSystem", 2, {"Ryumin"}, {"Helvetica"}, {-1, -1, 0, -1}},
    {"OfAKoreanSystem", 3, {"Ryumin"}, {"Helvetica"}, {-1, -1, -1, 0}},
    {"OfAnotherSystem", 25, {"Ryumin"}, {"Helvetica"}, {0, -1, -1, -1}},
    {"NoneOfTheList", 0, {"Ryumin"}, {"Geneva", "Monaco"}, {-1, -1, -1, -1}},
    {"NoList", 0, {"Ryumin"}, {}, {-1, -1, -1, -1}},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, DefaultFonts, testing::ValuesIn(kDefaults), CaseName());

// As many strings as a list can count.
const Strings kLongestList(32767, "x");

TEST(DefaultFontTest, TheLongestListEnds)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kOtherDefaults] = kLongestList;
    ASSERT_TRUE(fonts.Initialize());
    InitializeDefaultFont(&fonts.table);
    EXPECT_EQ(fonts.table.defaultFont[kScriptRoman], kNoFont);
}

TEST(GetValidPostScriptNameTest, FallsBackOnTheScriptsDefaultThenOnTheName)
{
    FontTables fonts({"Helvetica", "Ryumin-V"});
    fonts.host.stringLists[kOtherDefaults] = {"Helvetica"};
    ASSERT_TRUE(fonts.Initialize());
    InitializeDefaultFont(&fonts.table);
    EXPECT_STREQ(GetValidPostScriptName("Ryumin-H", kScriptRoman, false, &fonts.table), "Ryumin-V");
    EXPECT_STREQ(GetValidPostScriptName("Geneva", kScriptRoman, false, &fonts.table), "Helvetica");
    EXPECT_STREQ(GetValidPostScriptName("Geneva", kScriptRoman, true, &fonts.table), "Helvetica");
    EXPECT_STREQ(GetValidPostScriptName("Osaka", kScriptJapanese, false, &fonts.table), "Osaka");
}

TEST(GetValidPostScriptNameTest, ScriptsBeyondTheFourHaveNoDefault)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kOtherDefaults] = {"Helvetica"};
    ASSERT_TRUE(fonts.Initialize());
    InitializeDefaultFont(&fonts.table);
    for (const int script : {4, -1, 32767, -32768})
        EXPECT_STREQ(GetValidPostScriptName("Geneva", static_cast<int16_t>(script), false, &fonts.table),
                     "Geneva");
}

struct ReplacementCase {
    const char *name, *face;
    bool replaced;
    const char *result;
};

class Replacements : public testing::TestWithParam<ReplacementCase>
{
};

TEST_P(Replacements, GoByTheTwoLists)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kReplaced] = {"Swiss", "Dutch", "Swiss"};
    fonts.host.stringLists[kReplacing] = {"Helvetica", "Times", "Univers"};
    char name[kFontNameSize] = {};
    strncpy(name, GetParam().face, sizeof name - 1);
    EXPECT_EQ(SubstituteFaceName(name), GetParam().replaced);
    EXPECT_STREQ(name, GetParam().result);
}

const ReplacementCase kReplacements[] = {
    {"TheFirstMatchCounts", "Swiss", true, "Helvetica"},
    {"TheSameIndexOfTheOtherList", "Dutch", true, "Times"},
    {"AnotherNameStays", "Helvetica", false, "Helvetica"},
    {"CaseMatters", "swiss", false, "swiss"},
    {"APrefixStays", "Swi", false, "Swi"},
    {"AnEmptyNameStays", "", false, ""},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, Replacements, testing::ValuesIn(kReplacements), CaseName());

TEST(SubstituteFaceNameTest, WithoutListsNothingIsReplaced)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kReplaced] = {};
    char name[kFontNameSize] = "Swiss";
    EXPECT_FALSE(SubstituteFaceName(name));
    EXPECT_STREQ(name, "Swiss");
}

TEST(SubstituteFaceNameTest, TheLongestListEnds)
{
    FontTables fonts({"Helvetica"});
    fonts.host.stringLists[kReplaced] = kLongestList;
    char name[kFontNameSize] = "Swiss";
    EXPECT_FALSE(SubstituteFaceName(name));
    EXPECT_STREQ(name, "Swiss");
}

struct MacNameCase {
    const char *name, *font, *result;
};

class MacNames : public testing::TestWithParam<MacNameCase>
{
};

TEST_P(MacNames, KeepWhatFollowsTheirSign)
{
    uint8_t name[kFontNameSize] = {};
    name[0] = static_cast<uint8_t>(strlen(GetParam().font));
    memcpy(name + 1, GetParam().font, name[0]);
    MacFontPostScriptFontName(name);
    EXPECT_EQ(name[0], strlen(GetParam().result));
    EXPECT_STREQ(reinterpret_cast<const char *>(name + 1), GetParam().result);
}

const MacNameCase kMacNames[] = {
    {"TheSignStays", "Family$Rest", "$Rest"},     {"TheFirstSignCounts", "a$b$c", "$b$c"},
    {"TheSignAtTheStart", "$Rest", "$Rest"},      {"TheSignAtTheEnd", "Family$", "$"},
    {"WithoutASignItIsLeft", "Family", "Family"}, {"NothingIsLeft", "", ""},
};
INSTANTIATE_TEST_SUITE_P(UnixFont, MacNames, testing::ValuesIn(kMacNames), CaseName());

TEST(MacFontPostScriptFontNameTest, BytesBehindTheLengthDoNotCount)
{
    uint8_t name[kFontNameSize] = "\006Family$Rest";
    MacFontPostScriptFontName(name);
    EXPECT_EQ(name[0], 6);
    EXPECT_STREQ(reinterpret_cast<const char *>(name + 1), "Family");
}

TEST(MacFontPostScriptFontNameTest, TheLongestNameHasNoRoomForATerminator)
{
    uint8_t name[kFontNameSize] = {};
    name[0] = 255;
    memset(name + 1, 'n', 255);
    MacFontPostScriptFontName(name);
    EXPECT_EQ(name[0], 255);
    EXPECT_EQ(name[255], 'n');
}

// A context with fonts whose widths tell the font and the code, and how often one was asked for.
struct FontsWithWidths {
    explicit FontsWithWidths(const Strings &names) : list(names)
    {
        list.widthOf = [this](int16_t number, int16_t character) {
            ++asked;
            return number * 1000 + character;
        };
        fonts.host.fonts = &list;
        fonts.host.widths = &list;
        EXPECT_TRUE(fonts.Initialize());
        context->text.fonts = fonts.table;
    }

    FixedFontList list;
    FontTables fonts{{}};
    int asked = 0;
    std::unique_ptr<ParseContext> context = std::make_unique<ParseContext>();
    Fixed widths[kCharacterCodes] = {};
};

TEST(GetCharacterWidthTableTest, AsksTheHostForEveryCode)
{
    FontsWithWidths fonts({"Helvetica", "Courier-V"});
    EXPECT_TRUE(GetCharacterWidthTable("Courier", fonts.widths, fonts.context.get()));
    for (int code = 0; code < kCharacterCodes; ++code)
        EXPECT_EQ(fonts.widths[code], 1000 + code);
}

TEST(GetCharacterWidthTableTest, AsksOnceForEachFont)
{
    FontsWithWidths fonts({"Helvetica", "Courier"});
    for (const char *name : {"Courier", "Helvetica", "Courier", "Helvetica"})
        EXPECT_TRUE(GetCharacterWidthTable(name, fonts.widths, fonts.context.get()));
    EXPECT_EQ(fonts.asked, 2 * kCharacterCodes);
    EXPECT_EQ(fonts.widths[size_t{'a'}], 'a');
}

// More fonts than there are places for their widths, so that some have to leave and come back.
TEST(GetCharacterWidthTableTest, NeverGivesOneFontTheWidthsOfAnother)
{
    constexpr int kFonts = 3 * kKnownFontCount;
    Strings names;
    for (int i = 0; i < kFonts; ++i)
        names.push_back("Font" + std::to_string(i));
    FontsWithWidths fonts(names);
    for (int i = 0; i < 5 * kFonts; ++i) {
        const int font = i * 7 % kFonts;
        const std::string &name = names[static_cast<size_t>(font)];
        EXPECT_TRUE(GetCharacterWidthTable(name.c_str(), fonts.widths, fonts.context.get()));
        EXPECT_EQ(fonts.widths[0], font * 1000);
        EXPECT_EQ(fonts.widths[255], font * 1000 + 255);
        EXPECT_EQ(fonts.context->text.doubleByteWidth, font * 1000 + 0x81);
    }
}

TEST(GetCharacterWidthTableTest, IsAllZeroForANameThatNoFontServes)
{
    const std::unique_ptr<ParseContext> context = std::make_unique<ParseContext>();
    FontTables fonts({"Helvetica"});
    ASSERT_TRUE(fonts.Initialize());
    context->text.fonts = fonts.table;
    Fixed widths[kCharacterCodes];
    memset(widths, 0x55, sizeof widths);
    EXPECT_TRUE(GetCharacterWidthTable("Geneva", widths, context.get()));
    for (const Fixed width : widths)
        EXPECT_EQ(width, 0);
}

uint8_t AnswerYes(const uint8_t *, const uint8_t *, int32_t)
{
    return 1;
}
uint8_t AnswerNo(const uint8_t *, const uint8_t *, int32_t)
{
    return 0;
}

TEST(ConfirmFontSubstitutionTest, IsTrueUnlessTheUserWantsToStop)
{
    HostContext host;
    const HostScope scope(&host);
    ParseContext context = {};
    EXPECT_TRUE(ConfirmFontSubstitution(&context)) << "nobody to ask";
    context.problemProc = AnswerNo;
    EXPECT_TRUE(ConfirmFontSubstitution(&context));
    context.problemProc = AnswerYes;
    EXPECT_FALSE(ConfirmFontSubstitution(&context));
}

} // namespace
