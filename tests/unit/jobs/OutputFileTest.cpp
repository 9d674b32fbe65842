// An output from its making to its place, and each way in which it does not get there.
#include "jobs/OutputFile.h"

#include "tests/unit/jobs/JobsFolder.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{
namespace
{

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

class OutputFileTest : public JobsFolder
{
  protected:
    std::unique_ptr<OutputFile> Create(const std::string &path, FileKinds kinds = FileKinds::All)
    {
        fault_ = {};
        return OutputFile::Create(path, {kinds}, &fault_);
    }

    // The kind of what keeps it from being made.
    FaultKind WhyNot(const std::string &path, FileKinds kinds = FileKinds::All)
    {
        EXPECT_EQ(Create(path, kinds), nullptr);
        return fault_.kind;
    }

    std::string MakePipe()
    {
        EXPECT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
        return Path("pipe");
    }

    Fault fault_;
};

bool WriteTo(const OutputFile &file, std::string_view bytes)
{
    return WriteAll(file.Descriptor(), bytes);
}

mode_t ModeOf(const std::string &path)
{
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST_F(OutputFileTest, IsThereWhenItIsCommitted)
{
    const auto file = Create(Path("a"));
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(WriteTo(*file, "whole"));
    EXPECT_FALSE(fs::exists(Path("a")));
    EXPECT_FALSE(file->Commit());
    EXPECT_EQ(Read("a"), "whole");
    EXPECT_EQ(Names(), Paths{"a"});
}

TEST_F(OutputFileTest, ThatIsGivenUpLeavesWhatWasThere)
{
    Write("old", "old");
    for (const char *name : {"old", "new"}) {
        const auto file = Create(Path(name));
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(WriteTo(*file, "half"));
    }
    EXPECT_EQ(Names(), Paths{"old"});
    EXPECT_EQ(Read("old"), "old");
}

TEST_F(OutputFileTest, ThatIsEmptiedBeginsAnew)
{
    const auto file = Create(Path("a"));
    EXPECT_TRUE(WriteTo(*file, "a long beginning"));
    file->Empty();
    EXPECT_TRUE(WriteTo(*file, "end"));
    EXPECT_FALSE(file->Commit());
    EXPECT_EQ(Read("a"), "end");
}

TEST_F(OutputFileTest, HasThePermissionsOfTheFileThatItReplaces)
{
    Write("a", "old");
    ASSERT_EQ(chmod(Path("a").c_str(), 0640), 0);
    const auto file = Create(Path("a"));
    EXPECT_TRUE(WriteTo(*file, "new"));
    EXPECT_FALSE(file->Commit());
    EXPECT_EQ(Read("a"), "new");
    EXPECT_EQ(ModeOf(Path("a")), 0640U);
    const mode_t mask = umask(027);
    const auto other = Create(Path("b"));
    umask(mask);
    EXPECT_FALSE(other->Commit());
    EXPECT_EQ(ModeOf(Path("b")), 0640U);
    EXPECT_EQ(Names(), (Paths{"a", "b"}));
}

TEST_F(OutputFileTest, IsWrittenThroughALink)
{
    fs::create_directory(Path("folder"));
    Write("folder/target", "old");
    fs::create_symlink("folder/target", Path("link"));
    const auto file = Create(Path("link"));
    EXPECT_TRUE(WriteTo(*file, "new"));
    EXPECT_FALSE(file->Commit());
    EXPECT_TRUE(fs::is_symlink(Path("link")));
    EXPECT_EQ(Read("folder/target"), "new");
    EXPECT_EQ(Names(), (Paths{"folder", "link"}));
}

TEST_F(OutputFileTest, GoesToThePlaceOfALinkThatLeadsNowhere)
{
    fs::create_symlink("nowhere", Path("link"));
    const auto file = Create(Path("link"));
    EXPECT_TRUE(WriteTo(*file, "new"));
    EXPECT_FALSE(file->Commit());
    EXPECT_EQ(Read("link"), "new");
}

TEST_F(OutputFileTest, MakesItsFoldersWhenItIsAskedTo)
{
    const auto file = OutputFile::Create(Path("new/deep/a"), {FileKinds::All, true}, &fault_);
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(file->Commit());
    EXPECT_TRUE(fs::exists(Path("new/deep/a")));
    EXPECT_EQ(OutputFile::Create(Path("new/deep/a/b/c"), {FileKinds::All, true}, &fault_), nullptr);
    EXPECT_EQ(fault_.kind, FaultKind::NoFolder);
}

TEST_F(OutputFileTest, DoesNotReplaceWhatWasWrittenSinceATime)
{
    fs::create_directory(Path("folder"));
    for (const bool isEarlier : {false, true}) {
        const auto first = Create(Path("folder/a"));
        ASSERT_NE(first, nullptr);
        EXPECT_FALSE(first->Commit());
        timespec since = {};
        ASSERT_EQ(clock_gettime(CLOCK_REALTIME_COARSE, &since), 0);
        since.tv_sec += isEarlier ? -100 : 100;
        const auto second = OutputFile::Create(Path("folder/a"), {FileKinds::All, false, since}, &fault_);
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->Commit().kind, isEarlier ? FaultKind::OutputTaken : FaultKind::None);
        const auto other = OutputFile::Create(Path(isEarlier ? "folder/b" : "folder/c"),
                                              {FileKinds::All, false, since}, &fault_);
        ASSERT_NE(other, nullptr);
        EXPECT_FALSE(other->Commit());
    }
}

TEST_F(OutputFileTest, IsNoFolder)
{
    EXPECT_EQ(WhyNot(folder_.string()), FaultKind::OutputIsFolder);
}

TEST_F(OutputFileTest, NeedsItsFolder)
{
    EXPECT_EQ(WhyNot(Path("none/a")), FaultKind::NoFolder);
    EXPECT_EQ(fault_.error, ENOENT);
    Write("file", "");
    EXPECT_EQ(WhyNot(Path("file/a")), FaultKind::NoFolder);
    EXPECT_EQ(fault_.error, ENOTDIR);
    EXPECT_EQ(Names(), Paths{"file"});
}

TEST_F(OutputFileTest, MayBeNoSpecialFileWhereThatIsSaid)
{
    EXPECT_EQ(WhyNot(MakePipe(), FileKinds::Regular), FaultKind::OutputIsSpecial);
    EXPECT_EQ(fault_.text, "a pipe");
    EXPECT_EQ(WhyNot("/dev/null", FileKinds::Pipes), FaultKind::OutputIsSpecial);
    EXPECT_EQ(fault_.text, "a device");
}

TEST_F(OutputFileTest, NeedsTheReaderOfAPipe)
{
    EXPECT_EQ(WhyNot(MakePipe()), FaultKind::NobodyReads);
}

TEST_F(OutputFileTest, GoesThroughAPipe)
{
    const std::string pipe = MakePipe();
    const Descriptor reader(open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const auto file = Create(pipe);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(WriteTo(*file, "whole"));
    char bytes[9];
    EXPECT_EQ(read(reader.Get(), bytes, sizeof bytes), -1); // nothing before it is whole
    EXPECT_FALSE(file->Commit());
    EXPECT_EQ(read(reader.Get(), bytes, sizeof bytes), 5);
    EXPECT_EQ(std::string(bytes, 5), "whole");
    EXPECT_EQ(Names(), Paths{"pipe"});
}

TEST_F(OutputFileTest, TellsThatItsReaderLeft)
{
    std::signal(SIGPIPE, SIG_IGN);
    const std::string pipe = MakePipe();
    std::unique_ptr<OutputFile> file;
    {
        const Descriptor reader(open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        file = Create(pipe);
    }
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(WriteTo(*file, "whole"));
    EXPECT_EQ(file->Commit().kind, FaultKind::ReaderLeft);
}

TEST_F(OutputFileTest, ThatIsKeptFirstNeedsATemporaryFolder)
{
    const char *present = std::getenv("TMPDIR");
    const std::string before = present == nullptr ? "" : present;
    setenv("TMPDIR", Path("none").c_str(), 1);
    EXPECT_EQ(WhyNot("/dev/null"), FaultKind::NoTemporaryFile);
    EXPECT_EQ(fault_.text, Path("none"));
    EXPECT_EQ(fault_.error, ENOENT);
    if (present == nullptr)
        unsetenv("TMPDIR");
    else
        setenv("TMPDIR", before.c_str(), 1);
}

TEST_F(OutputFileTest, IsNotWrittenWhereItMayNotBe)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write anywhere";
    Write("mine", "");
    ASSERT_EQ(chmod(Path("mine").c_str(), 0400), 0);
    EXPECT_EQ(WhyNot(Path("mine")), FaultKind::CannotWrite);
    fs::create_directory(Path("closed"));
    ASSERT_EQ(chmod(Path("closed").c_str(), 0500), 0);
    EXPECT_EQ(WhyNot(Path("closed/a")), FaultKind::CannotWrite);
    EXPECT_EQ(fault_.error, EACCES);
}

TEST_F(OutputFileTest, WithANameThatIsTooLongIsToldOf)
{
    const auto file = Create(Path(std::string(300, 'x')));
    if (file != nullptr) // where a file can be without a name until then
        fault_ = file->Commit();
    EXPECT_EQ(fault_.kind, FaultKind::CannotWrite);
    EXPECT_EQ(fault_.error, ENAMETOOLONG);
    EXPECT_EQ(Names(), Paths());
}

// Somebody makes the folder's name a file's while the output is written.
TEST_F(OutputFileTest, WhoseFolderIsGoneIsToldOf)
{
    fs::create_directory(Path("folder"));
    const auto file = Create(Path("folder/a"));
    ASSERT_NE(file, nullptr);
    fs::remove_all(Path("folder"));
    Write("folder", "");
    EXPECT_EQ(file->Commit().kind, FaultKind::NoFolder);
    EXPECT_EQ(Names(), Paths{"folder"});
}

TEST_F(OutputFileTest, TheLaterOfTwoStays)
{
    const auto one = Create(Path("a")), two = Create(Path("a"));
    EXPECT_TRUE(WriteTo(*one, "one"));
    EXPECT_TRUE(WriteTo(*two, "two"));
    EXPECT_FALSE(two->Commit());
    EXPECT_FALSE(one->Commit());
    EXPECT_EQ(Read("a"), "one");
    EXPECT_EQ(Names(), Paths{"a"});
}

} // namespace
} // namespace vxhost
