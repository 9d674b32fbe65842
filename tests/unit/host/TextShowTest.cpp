// Text records as shapes: where each glyph lands, with a font whose characters are as wide as their digit says.
#include "host/drawing/DrawingTable.h"

#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

constexpr Fixed kOne = 0x10000;

// '1' to '9' are that many tenths of an em wide, a space is half an em. Each glyph is a corner: one tenth of an em along
// the baseline, two up. A byte from 0x80 begins a character of two bytes, an em wide. Upright ones are three times as
// wide.
class FakeGlyphs final : public GlyphSource
{
  public:
    std::string strings; // the fonts of the strings begun

    const TextFont *OpenFont(std::string_view fontName) override
    {
        return fontName == font_.asked ? &font_ : nullptr;
    }
    void BeginString(std::string_view fontName, bool isNew) override
    {
        strings += std::string(fontName) + (isNew ? ";" : " again;");
    }
    Glyph Next(std::span<const uint8_t> text, bool isUpright) override
    {
        const uint8_t byte = text.front();
        Glyph glyph;
        glyph.bytes = byte >= 0x80 ? 2 : 1;
        glyph.glyph = byte + (isUpright ? 1000U : 0U);
        glyph.character = byte;
        glyph.advance = byte >= 0x80 ? 1 : byte == ' ' ? 0.5 : (byte - '0') / 10.0;
        outline_.verbs = {Verb::Move, Verb::Line, Verb::Line, Verb::Close};
        outline_.points = {{0, 0}, {isUpright ? 0.3 : 0.1, 0}, {0, 0.2}};
        glyph.outline = byte == ' ' ? nullptr : &outline_;
        glyph.outlineNumber = byte;
        return glyph;
    }
    std::vector<FontUse> FontsUsed() const override { return {}; }

  private:
    TextFont font_ = {"Fake", "Served", nullptr, 0};
    Path outline_;
};

class TextShowTest : public testing::Test
{
  protected:
    // A record of size 10, upright text, at the end of the chain.
    ZRKTextRecord &Add(const std::string &text, double x, double y, int32_t placement)
    {
        texts_.push_back(text);
        ZRKTextRecord record = {};
        record.fontName = "Fake";
        record.text = reinterpret_cast<const uint8_t *>(texts_.back().data());
        record.length = static_cast<int32_t>(text.size());
        record.a = 10 * kOne;
        record.d = -10 * kOne;
        record.x = static_cast<Fixed>(x * kOne);
        record.y = static_cast<Fixed>(y * kOne);
        record.placement = placement;
        records_.push_back(record);
        if (records_.size() > 1)
            records_[records_.size() - 2].next = &records_.back();
        return records_.back();
    }

    std::string Show(int32_t mode)
    {
        device_.calls.clear();
        auto show = reinterpret_cast<ZRKShowProc>(table_.Procs()->entry[kZRKShow]);
        show(table_.Reference(), records_.empty() ? nullptr : &records_.front(), mode);
        records_.clear();
        return device_.calls;
    }

    RecordingDevice device_;
    FakeGlyphs glyphs_;
    Drawing drawing_{&device_};
    DrawingTable table_{&drawing_, &glyphs_};
    std::deque<std::string> texts_;
    std::deque<ZRKTextRecord> records_;
};

TEST_F(TextShowTest, AdvancesByTheWidths)
{
    Add("24", 100, 50, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill), "fill M100 50 L101 50 L100 52 Z M102 50 L103 50 L102 52 Z");
}

TEST_F(TextShowTest, ContinuesWhereThePreviousTextEnded)
{
    Add("25", 100, 50, kZRKPlaceAt);
    Show(0);
    Add("1", 900, 900, kZRKContinue);
    EXPECT_EQ(Show(kZRKShowFill), "fill M107 50 L108 50 L107 52 Z");
}

TEST_F(TextShowTest, MovesFromWhereThePreviousTextEnded)
{
    Add("5", 100, 50, kZRKPlaceAt);
    Add("1", 1, -3, kZRKMoveBy);
    EXPECT_EQ(Show(kZRKShowFill), "fill M100 50 L101 50 L100 52 Z; fill M106 47 L107 47 L106 49 Z");
}

TEST_F(TextShowTest, TheEndIsNoPartOfTheGraphicsState)
{
    drawing_.Save();
    Add("5", 100, 50, kZRKPlaceAt);
    Show(0);
    drawing_.Restore();
    Add("1", 0, 0, kZRKContinue);
    EXPECT_EQ(Show(kZRKShowFill), "fill M105 50 L106 50 L105 52 Z");
}

TEST_F(TextShowTest, ThePagesMatrixAppliesToAll)
{
    drawing_.Concat({2, 0, 0, 2, 10, 0});
    Add("4", 1, 1, kZRKPlaceAt);
    Add("4", 1, 0, kZRKMoveBy);
    EXPECT_EQ(Show(kZRKShowFill), "fill M12 2 L14 2 L12 6 Z; fill M22 2 L24 2 L22 6 Z");
}

TEST_F(TextShowTest, SpacingComesAfterACharacterAndAtASpace)
{
    const FixedPoint spacing[] = {{kOne, 0}, {7 * kOne, 0}};
    ZRKTextRecord &record = Add("2 2", 0, 0, kZRKPlaceAt | kZRKHasCharacterSpacing | kZRKHasWordSpacing);
    record.spacing = &spacing[0];
    record.spacingKind = kZRKCharacterSpacing | kZRKWordSpacing;
    // 2 + 1, then 7 + 5 + 1.
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L1 0 L0 2 Z M16 0 L17 0 L16 2 Z");
}

TEST_F(TextShowTest, SpacingWithoutItsFlagIsNotRead)
{
    const FixedPoint spacing[] = {{kOne, 0}, {7 * kOne, 0}};
    ZRKTextRecord &record = Add("22", 0, 0, kZRKPlaceAt | kZRKHasWordSpacing);
    record.spacing = &spacing[0];
    record.spacingKind = kZRKCharacterSpacing;
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L1 0 L0 2 Z M2 0 L3 0 L2 2 Z");
}

TEST_F(TextShowTest, ACharacterOfTwoBytesIsOneGlyph)
{
    Add("\x81\x40"
        "1",
        0, 0, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L1 0 L0 2 Z M10 0 L11 0 L10 2 Z");
}

TEST_F(TextShowTest, AHalfCharacterAtTheEndEndsTheText)
{
    Add("\x81", 0, 0, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L1 0 L0 2 Z");
}

TEST_F(TextShowTest, UprightTextGoesDownTheColumn)
{
    Add("\x81\x40", 0, 0, kZRKPlaceAt | kZRKUprightInColumn);
    Add("\x81\x40", 0, 0, kZRKContinue | kZRKUprightInColumn);
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L3 0 L0 2 Z; fill M0 -10 L3 -10 L0 -8 Z");
}

TEST_F(TextShowTest, ASidewaysGlyphFollowsItsMatrix)
{
    ZRKTextRecord &record = Add("51", 0, 0, kZRKPlaceAt);
    record.a = 0;
    record.b = record.c = -10 * kOne; // a quarter clockwise: along the text is down, up is to the right
    record.d = 0;
    EXPECT_EQ(Show(kZRKShowFill), "fill M0 0 L0 -1 L2 0 Z M0 -5 L0 -6 L2 -5 Z");
}

TEST_F(TextShowTest, FillComesBeforeStroke)
{
    drawing_.SetLineWidth(3);
    Add("2", 0, 0, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill | kZRKShowStroke), "fill M0 0 L1 0 L0 2 Z; stroke M0 0 L1 0 L0 2 Z width 3");
}

TEST_F(TextShowTest, TheChainClipsAsOne)
{
    Add("2", 0, 0, kZRKPlaceAt);
    Add("3", 0, 0, kZRKContinue);
    EXPECT_EQ(Show(kZRKShowClip), "clip M0 0 L1 0 L0 2 Z M2 0 L3 0 L2 2 Z");
}

TEST_F(TextShowTest, BlanksClipEverything)
{
    Add(" ", 0, 0, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowClip), "clip");
}

// Contours keep their direction, so that overlapping glyphs of one clip never cut holes into each other.
TEST_F(TextShowTest, MirroredGlyphsAreDrawnFromTheirOtherEnd)
{
    Add("2", 0, 0, kZRKPlaceAt).a = -10 * kOne;
    EXPECT_EQ(Show(kZRKShowClip), "clip M0 2 L-1 0 L0 0 Z");
}

TEST_F(TextShowTest, ADeviceThatPaintsGlyphsGetsEachByItself)
{
    device_.paintsGlyphs = true;
    drawing_.SetGray(0.5);
    Add("2 4", 100, 50, kZRKPlaceAt);
    Add("1", 1, -3, kZRKMoveBy);
    EXPECT_EQ(Show(kZRKShowFill), "glyphs 10 0 0 10 0 0 gray 0.5; "
                                  "glyph 50 M0 0 L0.1 0 L0 0.2 Z at 100 50; "
                                  "glyph 52 M0 0 L0.1 0 L0 0.2 Z at 107 50; "
                                  "glyphs 10 0 0 10 0 0 gray 0.5; "
                                  "glyph 49 M0 0 L0.1 0 L0 0.2 Z at 112 47");
}

// A stroke stands on the fill of all of its characters, and a text that clips is one shape.
TEST_F(TextShowTest, OnlyWhatIsJustFilledIsPaintedGlyphByGlyph)
{
    device_.paintsGlyphs = true;
    constexpr int32_t kModes[] = {kZRKShowStroke, kZRKShowFill | kZRKShowStroke, kZRKShowFill | kZRKShowClip};
    for (const int32_t mode : kModes) {
        Add("2", 100, 50, kZRKPlaceAt);
        EXPECT_EQ(Show(mode).find("glyph"), std::string::npos) << mode;
    }
    Add("  ", 100, 50, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill), "");
}

TEST_F(TextShowTest, TheCurrentPathStays)
{
    drawing_.MoveTo({5, 5});
    drawing_.LineTo({6, 6});
    Add("2", 0, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    drawing_.Fill();
    EXPECT_EQ(device_.calls, "fill M0 0 L1 0 L0 2 Z; fill M5 5 L6 6");
    EXPECT_EQ(drawing_.GetCounts().fills, 1u);
    EXPECT_EQ(drawing_.GetCounts().shows, 1u);
}

TEST_F(TextShowTest, RecordsThatShareANameAreOneString)
{
    const std::string first = "Fake", second = "Fake";
    Add("1", 0, 0, kZRKPlaceAt).fontName = first.c_str();
    Add("1", 0, 0, kZRKPlaceAt).fontName = first.c_str();
    Add("1", 0, 0, kZRKPlaceAt).fontName = second.c_str();
    Show(kZRKShowFill);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;");
}

TEST_F(TextShowTest, AStringThatIsPaintedAndClipsIsOneString)
{
    Add("12", 5, 5, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("34", 8, 5, kZRKPlaceAt);
    Show(kZRKShowFill);
    // As a clip the first is placed character by character, and the second goes on behind it: 5 + 1 + 2.
    Add("1", 5, 5, kZRKPlaceAt);
    Add("2", 6, 5, kZRKPlaceAt);
    const std::string other = "Fake";
    Add("34", 0, 0, kZRKContinue).fontName = other.c_str();
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;Fake again;Fake again;");
}

TEST_F(TextShowTest, AShadowBelowAClipIsAStringOfItsOwn)
{
    Add("12", 6, 4, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("12", 5, 5, kZRKPlaceAt);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;");
}

// The characters of "46" are 10 wide together. Lines that are centred or aligned to the right are moved back before they
// are painted, and the clip is not.
TEST_F(TextShowTest, AnAlignedStringIsOneString)
{
    for (const double back : {5.0, 10.0}) {
        Add("46", 50 - back, 5, kZRKPlaceAt);
        Show(kZRKShowFill | kZRKShowStroke);
        Add("46", 50, 5, kZRKPlaceAt);
        Show(kZRKShowClip);
    }
    EXPECT_EQ(glyphs_.strings, "Fake;Fake again;Fake;Fake again;");
}

// The line runs up the page, so that it is moved back downwards.
TEST_F(TextShowTest, AnAlignedStringOfATurnedLineIsOneString)
{
    const auto addTurned = [this](double y) {
        ZRKTextRecord &record = Add("46", 5, y, kZRKPlaceAt);
        record.a = record.d = 0;
        record.b = record.c = 10 * kOne;
    };
    addTurned(40);
    Show(kZRKShowFill);
    addTurned(50);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake again;");
}

// In a clip the rise of a string that goes on is where the next one begins, and rises once more: 3, then 3 + 3. What is
// painted rises from the line each time.
TEST_F(TextShowTest, RaisedStringsThatGoOnAreOneEach)
{
    Add("2", 0, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("3", 2, 3, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("4", 5, 3, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("5", 9, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    const std::string names[] = {"Fake", "Fake", "Fake", "Fake"}; // one for each string
    Add("2", 0, 0, kZRKPlaceAt).fontName = names[0].c_str();
    Add("3", 0, 3, kZRKMoveBy).fontName = names[1].c_str();
    Add("4", 0, 3, kZRKMoveBy).fontName = names[2].c_str();
    Add("5", 0, 0, kZRKContinue).fontName = names[3].c_str();
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;Fake;Fake;Fake again;Fake again;Fake again;Fake again;");
}

// The rise of a column is painted to one side of it and clips on the other.
TEST_F(TextShowTest, ARaisedColumnIsOneString)
{
    Add("\x81\x40", 52, 5, kZRKPlaceAt | kZRKUprightInColumn);
    Show(kZRKShowFill);
    Add("\x81\x40", 48, 5, kZRKPlaceAt | kZRKUprightInColumn);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake again;");
}

// A column whose first character has two bytes clips in pieces of two, of which the last may hold the closing NUL.
TEST_F(TextShowTest, ANulBehindAColumnIsNoPartOfIt)
{
    const std::string text("\x81\x40"
                           "5\0",
                           4);
    Add(text.substr(0, 2), 50, 5, kZRKPlaceAt | kZRKUprightInColumn);
    Add(text.substr(2, 1), 50, -5, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add(text.substr(0, 2), 50, 5, kZRKPlaceAt | kZRKUprightInColumn);
    Add(text.substr(2, 2), 50, -5, kZRKPlaceAt | kZRKUprightInColumn);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake again;");
}

// The first string of the clip goes on from the one before it, which was painted alone: the clip begins behind what was
// painted last.
TEST_F(TextShowTest, AClipThatGoesOnFromPaintedText)
{
    Add("2", 0, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("3", 2, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("4", 5, 0, kZRKPlaceAt);
    Show(kZRKShowFill);
    const std::string names[] = {"Fake", "Fake"};
    Add("3", 0, 0, kZRKContinue).fontName = names[0].c_str();
    Add("4", 0, 0, kZRKContinue).fontName = names[1].c_str();
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;Fake;Fake again;Fake again;");
}

// The same word, clipped alone, then painted and clipped, then painted alone.
TEST_F(TextShowTest, ClippedAndPaintedOneAfterTheOther)
{
    Add("46", 20, 5, kZRKPlaceAt);
    Show(kZRKShowFill | kZRKShowStroke);
    Add("46", 30, 5, kZRKPlaceAt);
    Show(kZRKShowFill);
    const std::string names[] = {"Fake", "Fake"};
    Add("46", 10, 5, kZRKPlaceAt).fontName = names[0].c_str();
    Add("46", 0, 0, kZRKContinue).fontName = names[1].c_str();
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;Fake;Fake again;");
}

// One word on each of two lines, the first painted, the second clipped.
TEST_F(TextShowTest, TheSameWordOnTheNextLineIsAnother)
{
    Add("46", 20, 17, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("46", 20, 5, kZRKPlaceAt);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;");
}

TEST_F(TextShowTest, TheSameWordFartherBackIsAnother)
{
    Add("46", 20, 5, kZRKPlaceAt);
    Show(kZRKShowFill);
    Add("46", 45, 5, kZRKPlaceAt);
    Show(kZRKShowClip);
    EXPECT_EQ(glyphs_.strings, "Fake;Fake;");
}

TEST_F(TextShowTest, AClipTakesAStringBackOnce)
{
    Add("12", 5, 5, kZRKPlaceAt);
    Show(kZRKShowFill);
    for (int i = 0; i < 2; ++i) {
        Add("12", 5, 5, kZRKPlaceAt);
        Show(kZRKShowClip);
    }
    EXPECT_EQ(glyphs_.strings, "Fake;Fake again;Fake;");
}

TEST_F(TextShowTest, ANegativeLengthIsEmpty)
{
    Add("2", 0, 0, kZRKPlaceAt).length = -1;
    EXPECT_EQ(Show(kZRKShowFill), "");
}

TEST(TextShowMemory, AClipIsBounded)
{
    RecordingDevice device;
    FakeGlyphs glyphs;
    Drawing drawing(&device, 1000);
    TextShow show(&drawing, &glyphs);
    const std::string text(100, '1');
    ZRKTextRecord record = {};
    record.fontName = "Fake";
    record.text = reinterpret_cast<const uint8_t *>(text.data());
    record.length = 100;
    record.placement = kZRKPlaceAt;
    EXPECT_THROW(show.Show(&record, kZRKShowClip), BudgetSpent);
}

// A device that sets text itself.
class GlyphRunTest : public TextShowTest
{
  protected:
    GlyphRunTest() { device_.canShow = "Fake"; }
};

TEST_F(GlyphRunTest, GetsGlyphsWithTheirPlacesAndWidths)
{
    Add("2 4", 100, 50, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill), "text fill Served 10 0 0 10 50@100,50+0.2 32@102,50+0.5 52@107,50+0.4");
}

TEST_F(GlyphRunTest, RecordsOfOneFontAndMatrixAreOneRun)
{
    Add("2", 100, 50, kZRKPlaceAt);
    Add("3", 7, 0, kZRKMoveBy);
    Add("4", 0, 0, kZRKContinue).a = 20 * kOne;
    EXPECT_EQ(Show(kZRKShowFill), "text fill Served 10 0 0 10 50@100,50+0.2 51@109,50+0.3; "
                                  "text fill Served 20 0 0 10 52@112,50+0.4");
}

TEST_F(GlyphRunTest, UprightCharactersAreARunOfAColumn)
{
    Add("5", 100, 50, kZRKPlaceAt | kZRKUprightInColumn);
    EXPECT_EQ(Show(kZRKShowFill), "text fill Served 10 0 0 10 column 1053@100,50+0.5");
}

TEST_F(GlyphRunTest, StrokesHaveTheLineWidthOfThePage)
{
    drawing_.SetLineWidth(3);
    drawing_.SetGray(0.5);
    Add("2", 100, 50, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowFill | kZRKShowStroke),
              "text fill stroke Served 10 0 0 10 50@100,50+0.2 width 3 gray 0.5");
}

TEST_F(GlyphRunTest, AChainThatClipsComesAsAWhole)
{
    drawing_.Save();
    Add("2", 100, 50, kZRKPlaceAt);
    Add("3", 0, 0, kZRKContinue).a = 20 * kOne;
    EXPECT_EQ(Show(kZRKShowClip),
              "save; text clip Served 10 0 0 10 50@100,50+0.2 Served 20 0 0 10 51@102,50+0.3");
    drawing_.Restore();
}

TEST_F(GlyphRunTest, AChainThatClipsIsOfOneKind)
{
    Add("2", 100, 50, kZRKPlaceAt);
    Add("3", 0, 0, kZRKContinue).fontName = "Other";
    EXPECT_EQ(Show(kZRKShowClip), "clip M100 50 L101 50 L100 52 Z M102 50 L103 50 L102 52 Z");
}

TEST_F(GlyphRunTest, OtherFontsStayShapes)
{
    Add("2", 100, 50, kZRKPlaceAt);
    Add("3", 0, 0, kZRKContinue).fontName = "Other";
    EXPECT_EQ(Show(kZRKShowFill), "text fill Served 10 0 0 10 50@100,50+0.2; fill M102 50 L103 50 L102 52 Z");
}

TEST_F(GlyphRunTest, AnEmptyChainClipsEverything)
{
    EXPECT_EQ(Show(kZRKShowClip), "clip");
    Add("", 1, 1, kZRKPlaceAt);
    EXPECT_EQ(Show(kZRKShowClip), "clip");
}

TEST_F(GlyphRunTest, WithoutAModeItOnlyMoves)
{
    Add("2", 100, 50, kZRKPlaceAt);
    EXPECT_EQ(Show(0), "");
    Add("3", 0, 0, kZRKContinue);
    EXPECT_EQ(Show(kZRKShowFill), "text fill Served 10 0 0 10 51@102,50+0.3");
}

} // namespace
} // namespace vxhost
