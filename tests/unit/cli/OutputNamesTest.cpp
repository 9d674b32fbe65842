// Tests the names that patterns make, and that mistakes which would lose a file are refused.
#include "cli/options/OutputNames.h"

#include "cli/options/CommonOptions.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

const Format *const kPngAlone[] = {FindFormat("png")};

struct NameCase {
    const char *pattern;
    const char *input;
    const char *output;
};

const NameCase kNames[] = {
    {"out.png", "a.vx", "out.png"},
    {"-", "a.vx", "-"},
    {"{stem}.png", "in/a.b.vx", "a.b.png"},
    {"{stem}.png", "in/a.b.vx.gz", "a.b.png"},
    {"{stem}.png", "a.vx.XZ", "a.png"},
    {"{stem}.png", "a.gz", "a.png"},
    {"{stem}.png", ".gz", ".gz.png"}, // which is no extension
    {"{dir}/{stem}.{ext}", "in/deep/a.vx", "in/deep/a.png"},
    {"{dir}/{stem}.{ext}", "a.vx", "./a.png"},
    {"{stem}{stem}", "a.vx", "aa"},
    {"{stem", "a.vx", "{stem"},
    {"}{stem}{", "a.vx", "}a{"},
    {"{stem}.png", "-", "stdin.png"},
    {"{stem}.png", "noextension", "noextension.png"},
    {"{stem}.png", "{dir}.vx", "{dir}.png"},       // what was put in is not looked at again
    {"{relative}/{stem}.png", "in/a.vx", "a.png"}, // nobody named its folder
    {"{number}.png", "a.vx", "1.png"},
    {"{namehash:4}/{namehash:2}-{namehash}.png", "abc",
     "ba78/16-ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad.png"},
    {"no-such-folder/", "a.vx", "no-such-folder/a.png"},
};

TEST(OutputNamesTest, FillTheirPattern)
{
    for (const NameCase &name : kNames)
        EXPECT_EQ(OutputNames(name.pattern, {name.input}, kPngAlone), std::vector<std::string>{name.output})
            << name.pattern;
}

TEST(OutputNamesTest, AreInTheirFolderBelowTheOneThatWasNamed)
{
    const NamedDocument document = {"in/deep/er/a.vx", "deep/er", 7, "0123456789"};
    const Format &png = *FindFormat("png");
    EXPECT_EQ(FillPattern("out/", document, png), "out/deep/er/a.png");
    EXPECT_EQ(FillPattern("{relative}-{number}{hash:1}{hash:3}.{ext}", document, png), "deep/er-70123.png");
    EXPECT_EQ(FillPattern("x/{relative}/y.png", {"in/a.vx", ".", 1, ""}, png), "x/y.png");
}

TEST(OutputNamesTest, HaveNoMoreDigitsThanADigest)
{
    for (const char *pattern :
         {"{hash:0}", "{hash:65}", "{hash:x}", "{hash:}", "{hash:-1}", "{namehash:64}{namehash:1}"})
        EXPECT_THROW(CheckPattern(pattern), UsageError) << pattern;
    for (const char *pattern : {"{hash:64}", "{namehash:32}{namehash:32}{hash:1}", "", "-"})
        EXPECT_NO_THROW(CheckPattern(pattern)) << pattern;
}

// A word that nothing stands for was mistyped: it would be found in the names of a thousand files.
TEST(OutputNamesTest, HaveNoOtherWordsInBraces)
{
    for (const char *pattern :
         {"{other}-{stem}", "{}", "{Stem}", "{ stem}", "{stem:1}", "{number:2}.png", "{{stem}}", "{ink}"})
        EXPECT_THROW(CheckPattern(pattern), UsageError) << pattern;
    try {
        CheckPattern("out/{stam}.png");
        FAIL();
    } catch (const UsageError &error) {
        EXPECT_STREQ(error.what(), "out/{stam}.png: {stam} is not known: give {stem}, {dir}, {relative}, "
                                   "{ext}, {number}, {hash} or {namehash}");
    }
}

TEST(OutputNamesTest, OfAPlateHaveItsInk)
{
    for (const char *ink : {"Brick", "", "{stem}"})
        EXPECT_EQ(OutputNames("{stem}-{ink}.png", {"a.vx"}, kPngAlone, "-o", ink),
                  std::vector{std::string("a-") + ink + ".png"});
}

class OutputNamesOnDisk : public testing::Test
{
  protected:
    void SetUp() override
    {
        folder_ =
            fs::path(testing::TempDir()) /
            ("output-names-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::create_directories(folder_);
        std::ofstream(folder_ / "a.vx") << "a";
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string In(const std::string &name) const { return (folder_ / name).string(); }

    fs::path folder_;
};

TEST_F(OutputNamesOnDisk, AFolderGetsTheStem)
{
    EXPECT_EQ(OutputNames(folder_.string(), {"in/b.vx"}, kPngAlone), std::vector<std::string>{In("b.png")});
}

TEST_F(OutputNamesOnDisk, AnInputIsNotOverwritten)
{
    EXPECT_THROW(OutputNames(In("a.vx"), {In("a.vx")}, kPngAlone), UsageError);
    EXPECT_THROW(OutputNames(In("./{stem}.vx"), {In("a.vx")}, kPngAlone), UsageError);
    fs::create_symlink(folder_ / "a.vx", folder_ / "link.png");
    EXPECT_THROW(OutputNames(In("link.png"), {In("a.vx")}, kPngAlone), UsageError);
    EXPECT_THROW(OutputNames(In("none/../a.vx"), {In("a.vx")}, kPngAlone), UsageError);
    EXPECT_NO_THROW(OutputNames(In("a.png"), {In("a.vx")}, kPngAlone));
}

struct FolderCase {
    const char *pattern;
    const char *folder;
};

const FolderCase kFolders[] = {
    {"", "."},
    {"a.png", "."},
    {"{stem}.png", "."},
    {"pre-{stem}.png", "."},
    {"{dir}/out/{stem}.png", "."},
    {"out/", "out"},
    {"out/a.png", "out"},
    {"out/pre-{stem}.png", "out"},
    {"out/{dir}/x/{stem}.png", "out"},
    {"../out{ext}/a.png", ".."},
    {"/a.png", "/"},
    {"/out/{stem}.png", "/out"},
};

TEST(OutputNamesTest, NameTheirFolder)
{
    for (const FolderCase &folder : kFolders)
        EXPECT_EQ(FolderOf(folder.pattern), folder.folder) << folder.pattern;
}

TEST_F(OutputNamesOnDisk, LieInAFolder)
{
    EXPECT_EQ(FolderOf(folder_.string()), folder_.string()); // it is one, so the stem comes in it
    fs::create_directories(folder_ / "in/deep");
    fs::create_directory(folder_ / "out");
    std::ofstream(folder_ / "out/there.png") << "a";
    fs::create_symlink("../out", folder_ / "in/link");
    fs::create_symlink(folder_ / "out/there.png", folder_ / "in/there.png");
    fs::create_symlink("../out/nowhere.png", folder_ / "in/dangling.png");
    for (const char *loop : {"in/loop.png", "out/loop.png"})
        fs::create_symlink("loop.png", folder_ / loop);
    fs::create_symlink("in", folder_ / "also");
    struct PlaceCase {
        const char *path;
        bool isInside;
    };
    const PlaceCase places[] = {
        {"in/a.png", true},
        {"in/deep/a.png", true},
        {"in/none/a.png", true},
        {"in/deep/../a.png", true},
        {"in/..a.png", true},
        {"also/a.png", true},
        {"out/../also/deep/a.png", true},
        {"in/dangling.png", true}, // it is replaced, and so is the next
        {"in/loop.png", true},
        {"a.png", false},
        {"in", true}, // which is refused for what it is
        {"in2/a.png", false},
        {"in/../a.png", false},
        {"in/none/../../a.png", false},
        {"in/link/a.png", false},
        {"in/link/new/a.png", false},
        {"in/none/../link/new.png", false},
        {"in/none/../link/loop.png", false},
        {"in/there.png", false},
        {"/a.png", false},
    };
    for (const PlaceCase &place : places) {
        const std::string path = place.path[0] == '/' ? place.path : In(place.path);
        EXPECT_EQ(LiesIn(In("in"), path), place.isInside) << path;
        EXPECT_EQ(LiesIn(In("also"), path), place.isInside) << path;
        EXPECT_TRUE(LiesIn("/", path)) << path;
    }
    EXPECT_FALSE(LiesIn("/", In("in/loop.png/a.png"))); // nobody can tell
    EXPECT_TRUE(LiesIn(".", "a.png"));
    EXPECT_TRUE(LiesIn("none", "none/a.png"));
    EXPECT_FALSE(LiesIn("none", "a.png"));
}

TEST_F(OutputNamesOnDisk, HaveOneTextForEachPlace)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    for (const char *path : {"new.png", "./new.png", "none/../new.png"})
        EXPECT_EQ(PlaceOf(path), In("new.png")) << path;
    fs::current_path(before);
    fs::create_symlink("a.vx", folder_ / "link");
    EXPECT_TRUE(IsSameFile(In("link"), In("a.vx")));
    EXPECT_FALSE(IsSameFile(In("link"), In(".")));
    EXPECT_FALSE(IsSameFile(In("none"), In("none")));
}

TEST_F(OutputNamesOnDisk, TwoInputsDoNotShareAnOutput)
{
    EXPECT_THROW(OutputNames("out.png", {"a.vx", "b.vx"}, kPngAlone), UsageError);
    EXPECT_THROW(OutputNames("-", {"a.vx", "b.vx"}, kPngAlone), UsageError);
    EXPECT_THROW(OutputNames("{stem}.png", {"x/a.vx", "y/a.vx"}, kPngAlone), UsageError);
    EXPECT_THROW(OutputNames("{stem}.png", {"a.vx", "a.vx"}, kPngAlone), UsageError);
    EXPECT_NO_THROW(OutputNames("{dir}/{stem}.png", {"x/a.vx", "y/a.vx"}, kPngAlone));
}

TEST(OutputNamesTest, FollowTheFormatsOfEachInput)
{
    const Format *const kTwo[] = {FindFormat("pdf"), FindFormat("svg")};
    EXPECT_EQ(OutputNames("{stem}.{ext}", {"a.vx", "b.vx"}, kTwo),
              (std::vector<std::string>{"a.pdf", "a.svg", "b.pdf", "b.svg"}));
    EXPECT_THROW(OutputNames("{stem}.pdf", {"a.vx"}, kTwo), UsageError);
    EXPECT_THROW(OutputNames("x.{ext}", {"a.vx", "b.vx"}, kTwo), UsageError);
}

} // namespace

} // namespace vxhost
