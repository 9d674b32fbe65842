// Names of outputs from patterns, and the mistakes that would lose a file.
#include "cli/OutputNames.h"

#include "cli/CommonOptions.h"

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

constexpr Format kPngAlone[] = {Format::Png};

struct NameCase {
    const char *pattern;
    const char *input;
    const char *output;
};

const NameCase kNames[] = {
    {"out.png", "a.vx", "out.png"},
    {"-", "a.vx", "-"},
    {"{stem}.png", "in/a.b.vx", "a.b.png"},
    {"{dir}/{stem}.{ext}", "in/deep/a.vx", "in/deep/a.png"},
    {"{dir}/{stem}.{ext}", "a.vx", "./a.png"},
    {"{stem}{stem}", "a.vx", "aa"},
    {"{other}-{stem}", "a.vx", "{other}-a"},
    {"{stem}.png", "-", "stdin.png"},
    {"{stem}.png", "noextension", "noextension.png"},
    {"{stem}.png", "{dir}.vx", "{dir}.png"}, // what was put in is not looked at again
    {"no-such-folder/", "a.vx", "no-such-folder/a.png"},
};

TEST(OutputNamesTest, FillTheirPattern)
{
    for (const NameCase &name : kNames)
        EXPECT_EQ(OutputNames(name.pattern, {name.input}, kPngAlone), std::vector<std::string>{name.output})
            << name.pattern;
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
    EXPECT_NO_THROW(OutputNames(In("a.png"), {In("a.vx")}, kPngAlone));
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
    constexpr Format kTwo[] = {Format::Pdf, Format::Svg};
    EXPECT_EQ(OutputNames("{stem}.{ext}", {"a.vx", "b.vx"}, kTwo),
              (std::vector<std::string>{"a.pdf", "a.svg", "b.pdf", "b.svg"}));
    EXPECT_THROW(OutputNames("{stem}.pdf", {"a.vx"}, kTwo), UsageError);
    EXPECT_THROW(OutputNames("x.{ext}", {"a.vx", "b.vx"}, kTwo), UsageError);
}

} // namespace

} // namespace vxhost
