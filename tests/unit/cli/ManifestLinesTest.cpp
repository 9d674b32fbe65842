// Tests the entries that bytes of manifests make, in whatever pieces they come.
#include "cli/options/ManifestLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

namespace
{

using namespace std::string_literals;

// Returns one text for each entry: its line, and what it names or what is wrong with it.
std::vector<std::string> Read(std::string_view bytes, LineEnd end = LineEnd::Newline, size_t piece = SIZE_MAX)
{
    ManifestLines lines("list", end);
    std::vector<std::string> entries;
    const auto takeAll = [&] {
        while (const std::optional<ManifestEntry> entry = lines.Next()) {
            EXPECT_EQ(entry->manifest, "list");
            entries.push_back(std::to_string(entry->line) + " " +
                              (entry->error.empty() ? entry->input : "! " + entry->error));
        }
    };
    for (size_t at = 0; at < bytes.size(); at += std::min(piece, bytes.size())) {
        lines.Add(bytes.substr(at, piece));
        takeAll();
    }
    lines.End();
    takeAll();
    return entries;
}

struct ManifestCase {
    const char *name;
    LineEnd end;
    std::string bytes;
    std::vector<std::string> entries;
};

const std::string kLong(65536, 'x'); // as many as a line may have

const ManifestCase kManifests[] = {
    {"Nothing", LineEnd::Newline, "", {}},
    {"Lines", LineEnd::Newline, "a\n\n \t\r\nb c\r\n\xFF", {"1 a", "4 b c", "5 \xFF"}},
    {"ByteOrderMark",
     LineEnd::Newline,
     "\xEF\xBB\xBF{\"input\":\"a\"}\n\xEF\xBB\xBF"
     "b",
     {"1 a", "2 \xEF\xBB\xBF"
             "b"}},
    {"LastWithoutEnd", LineEnd::Newline, "{\"input\":\"a\"}\n{\"input\":\"b\"}", {"1 a", "2 b"}},
    {"LongestLine", LineEnd::Newline, kLong + "\na", {"1 " + kLong, "2 a"}},
    {"TooLong",
     LineEnd::Newline,
     kLong + "x\na\n" + kLong + kLong + kLong,
     {"1 ! longer than 65536 bytes, the most that a line may have", "2 a",
      "3 ! longer than 65536 bytes, the most that a line may have"}},
    {"TooLongForItsReturn",
     LineEnd::Newline,
     kLong + "\r\na",
     {"1 ! longer than 65536 bytes, the most that a line may have", "2 a"}},
    {"TooLongForItsMark",
     LineEnd::Newline,
     "\xEF\xBB\xBF" + kLong.substr(1) + "\na",
     {"1 ! longer than 65536 bytes, the most that a line may have", "2 a"}},
    {"Drawing",
     LineEnd::Newline,
     "%!PS\nb\n",
     {"0 ! is a drawing, not a manifest: name it without --manifest"}},
    {"DrawingOfOneLine",
     LineEnd::Newline,
     "%!PS\r" + kLong,
     {"0 ! is a drawing, not a manifest: name it without --manifest"}},
    {"WrappedDrawing",
     LineEnd::Newline,
     "\xC5\xD0\xD3\xC6\x1E\0\0\0"s,
     {"0 ! is a drawing, not a manifest: name it without --manifest"}},
    {"LaterMark", LineEnd::Newline, "a\n%!b\n", {"1 a", "2 %!b"}},
    {"Nul",
     LineEnd::Newline,
     "a\nb\0\nc\n"s,
     {"1 a", "2 ! holds a NUL byte, which no line does: give -0 if its names end in NUL"}},
    {"Controls",
     LineEnd::Newline,
     "a\x1F"
     "b\na\x80\xC2\x80\n\ra\n",
     {"1 ! a name with a control character: end names in NUL and give -0, or write JSON", "2 a\x80\xC2\x80",
      "3 ! a name with a control character: end names in NUL and give -0, or write JSON"}},
    {"NotUtf8",
     LineEnd::Newline,
     "{\"input\":\"\xFF\"}",
     {"1 ! not UTF-8, as JSON is: write the name alone"}},
    {"StandardInput",
     LineEnd::Newline,
     "{\"input\":\"-\"}",
     {"1 ! standard input is no document of a batch: name a file, as ./- if it is called so"}},
    {"Names",
     LineEnd::Nul,
     "a\nb\0\0{\"input\":\"c\"}\0\xEF\xBB\xBF \0%!\0\r"s,
     {"1 a\nb", "3 {\"input\":\"c\"}", "4 \xEF\xBB\xBF ", "5 %!", "6 \r"}},
    {"OneNameWithALineEnd", LineEnd::Nul, "a\nb\0"s, {"1 a\nb"}},
    {"LastNameWithALineEnd", LineEnd::Nul, "a\0b\nc"s, {"1 a", "2 b\nc"}},
    {"LinesForNames", LineEnd::Nul, "a\nb\n", {"0 ! has lines, and no NUL: leave -0 out"}},
    {"TooLongAName",
     LineEnd::Nul,
     kLong + "x\0a"s,
     {"1 ! longer than 65536 bytes, the most that a name may have", "2 a"}},
};

class ManifestLinesTest : public testing::TestWithParam<ManifestCase>
{
};

TEST_P(ManifestLinesTest, MakeTheirEntries)
{
    const ManifestCase &manifest = GetParam();
    EXPECT_EQ(Read(manifest.bytes, manifest.end), manifest.entries);
}

TEST_P(ManifestLinesTest, AreTheSameInPieces)
{
    const ManifestCase &manifest = GetParam();
    for (const size_t piece : {1, 2, 7, 65536, 65537})
        EXPECT_EQ(Read(manifest.bytes, manifest.end, piece), manifest.entries) << piece;
}

INSTANTIATE_TEST_SUITE_P(All, ManifestLinesTest, testing::ValuesIn(kManifests),
                         [](const auto &found) { return std::string(found.param.name); });

TEST(ManifestLines, AreHandedOutAsSoonAsTheyEnd)
{
    ManifestLines lines;
    lines.Add("a\nb");
    EXPECT_EQ(lines.Next()->input, "a");
    EXPECT_FALSE(lines.Next());
    lines.Add("c\n");
    EXPECT_EQ(lines.Next()->input, "bc");
    EXPECT_FALSE(lines.IsGivenUp());
    lines.Add("\0\nd\n"s);
    EXPECT_FALSE(lines.Next()->error.empty());
    EXPECT_TRUE(lines.IsGivenUp());
    EXPECT_FALSE(lines.Next());
}

TEST(ManifestLines, TakeAllMembersOfAnObject)
{
    ManifestLines lines;
    lines.Add("{\"id\": 1.0 "
              ",\"input\":\"\\u00e9\",\"output\":\"{stem}\\n\",\"box\":[0,-1.5,\"7\",36],\"pdf-x\":\"x3\","
              "\"id\":-0}\n");
    const ManifestEntry entry = *lines.Next();
    EXPECT_EQ(entry.error, "");
    EXPECT_EQ(entry.id, "-0"); // the later of two
    EXPECT_EQ(entry.input, "\xC3\xA9");
    EXPECT_EQ(entry.output, "{stem}\n");
    EXPECT_EQ(entry.outputOptions.texts.Of("box"), "0,-1.5,7,36");
    EXPECT_EQ(entry.outputOptions.texts.Of("pdf-x"), "x3");
}

} // namespace

} // namespace vxhost
