// What a batch is to do, from documents that are named and manifests that are read as they come.
#include "cli/options/Manifest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vxhost
{
namespace
{

namespace fs = std::filesystem;

class ManifestReaderTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "vx-manifest-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }

    void TearDown() override { fs::remove_all(folder_); }

    std::string Path(const std::string &name) const { return (folder_ / name).string(); }

    std::string Write(const std::string &name, const std::string &bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    fs::path folder_;
};

// "line input" or "line ! error", without the folder.
std::string TextOf(const ManifestEntry &entry)
{
    return std::to_string(entry.line) + " " + (entry.error.empty() ? entry.input : "! " + entry.error);
}

// All, read on whenever there is none.
std::vector<std::string> ReadAll(ManifestReader *reader)
{
    std::vector<std::string> entries;
    while (true) {
        if (const std::optional<ManifestEntry> entry = reader->Next())
            entries.push_back(TextOf(*entry));
        else if (reader->AtEnd())
            return entries;
        else
            reader->Read();
    }
}

using Entries = std::vector<std::string>;

TEST_F(ManifestReaderTest, TakesAllInTheirOrder)
{
    const std::string one = Write("one", "a\nb"), two = Write("two", "{\"input\":\"d\"}\n"),
                      none = Write("none", "");
    ManifestReader reader({{one, SourceKind::Manifest},
                           {"c"},
                           {none, SourceKind::Manifest},
                           {two, SourceKind::Manifest},
                           {"e"}});
    EXPECT_FALSE(reader.AtEnd());
    EXPECT_EQ(ReadAll(&reader), (Entries{"1 a", "2 b", "0 c", "1 d", "0 e"}));
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_FALSE(reader.Next());
}

TEST_F(ManifestReaderTest, SaysWhereEachWasNamed)
{
    const std::string one = Write("one", "\na\n");
    ManifestReader reader({{one, SourceKind::Manifest}, {"b"}});
    reader.Read();
    reader.Read();
    EXPECT_EQ(reader.Next()->manifest, one);
    reader.Read();
    reader.Read();
    EXPECT_EQ(reader.Next()->manifest, "");
}

// Whatever is in it.
TEST_F(ManifestReaderTest, OpensNoDocument)
{
    const std::string one = Write("one", "a\nb\n");
    ManifestReader reader({{one}});
    EXPECT_EQ(ReadAll(&reader), Entries{"0 " + one});
}

TEST_F(ManifestReaderTest, EndsLinesAsItIsTold)
{
    const std::string one = Write("one", std::string("a\nb\0c\0", 6));
    ManifestReader reader({{one, SourceKind::Manifest, LineEnd::Nul}});
    EXPECT_EQ(ReadAll(&reader), (Entries{"1 a\nb", "2 c"}));
}

TEST_F(ManifestReaderTest, TellsWhatCannotBeReadAndGoesOn)
{
    fs::create_directory(Path("folder"));
    const std::string drawing = Write("drawing", "%!PS\n" + std::string(200000, 'x')),
                      last = Write("last", "z\n");
    ManifestReader reader({{Path("none"), SourceKind::Manifest},
                           {Path("folder"), SourceKind::Manifest},
                           {drawing, SourceKind::Manifest},
                           {last, SourceKind::Manifest}});
    EXPECT_EQ(ReadAll(&reader),
              (Entries{"0 ! no such file: check the name", "0 ! is a directory: name a manifest in it",
                       "0 ! is a drawing, not a manifest: name it without --manifest", "1 z"}));
}

TEST_F(ManifestReaderTest, ReadsAPipeAsItComes)
{
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    const int writer =
        open(Path("pipe").c_str(), O_RDWR | O_CLOEXEC); // so that there is somebody at both ends
    ManifestReader reader({{Path("pipe"), SourceKind::Manifest}});
    EXPECT_EQ(reader.Descriptor(), -1);
    reader.Read();
    EXPECT_GE(reader.Descriptor(), 0);
    reader.Read(); // nothing is there, and nobody waits
    EXPECT_FALSE(reader.Next());
    ASSERT_EQ(write(writer, "a\nb", 3), 3);
    reader.Read();
    EXPECT_EQ(TextOf(*reader.Next()), "1 a");
    EXPECT_FALSE(reader.Next());
    EXPECT_FALSE(reader.AtEnd());
    ASSERT_EQ(write(writer, "c\n", 2), 2);
    reader.Read();
    EXPECT_EQ(TextOf(*reader.Next()), "2 bc");
    ASSERT_EQ(write(writer, "d", 1), 1);
    reader.Read();
    EXPECT_FALSE(reader.Next());
    close(writer);
    reader.Read();
    EXPECT_EQ(TextOf(*reader.Next()), "3 d");
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_EQ(reader.Descriptor(), -1);
}

TEST_F(ManifestReaderTest, KnowsItsManifestsByAnyName)
{
    const std::string one = Write("one", "a\n"), document = Write("b", "");
    fs::create_symlink("one", Path("link"));
    fs::create_hard_link(one, Path("other"));
    ManifestReader reader({{one, SourceKind::Manifest}, {document}});
    for (const bool isRead : {false, true}) {
        EXPECT_TRUE(reader.Includes(one));
        EXPECT_TRUE(reader.Includes(Path("link")));
        EXPECT_TRUE(reader.Includes(Path("other")));
        EXPECT_FALSE(reader.Includes(document));
        EXPECT_FALSE(reader.Includes(Path("none")));
        EXPECT_EQ(reader.AtEnd(), isRead);
        (void)ReadAll(&reader);
    }
}

} // namespace
} // namespace vxhost
