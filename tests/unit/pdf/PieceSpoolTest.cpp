#include "devices/pdf/FileSpool.h"
#include "devices/pdf/MemorySpool.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

using vxhost::FailureKind;
using vxhost::PdfOptions;
using vxhost::pdf::FileSpool;
using vxhost::pdf::MemorySpool;
using vxhost::pdf::PieceSpool;

namespace
{

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

std::string Taken(PieceSpool &spool, size_t piece)
{
    std::string bytes;
    spool.Take(piece, [&](std::span<const char> part) { bytes.append(part.data(), part.size()); });
    return bytes;
}

void CheckThatEachIsGivenBackOnce(PieceSpool &spool)
{
    const std::string first(1000000, 'a'), second = "b";
    spool.Add(first);
    spool.Add(second);
    ASSERT_EQ(spool.Count(), 2);
    EXPECT_EQ(Taken(spool, 1), second);
    EXPECT_EQ(Taken(spool, 0), first);
    EXPECT_FALSE(spool.FirstFailure());
    EXPECT_EQ(Taken(spool, 0), ""); // not what a hole in a file reads as
    EXPECT_EQ(spool.FirstFailure().kind, FailureKind::SpoolFailed);
}

class PdfFileSpool : public testing::Test
{
  protected:
    int Descriptor() const { return fileno(file_.get()); }
    PdfOptions Options() const
    {
        PdfOptions options;
        options.spool = Descriptor();
        return options;
    }

    std::unique_ptr<std::FILE, FileCloser> file_ = std::unique_ptr<std::FILE, FileCloser>(std::tmpfile());
    FileSpool spool_ = FileSpool(Options());
};

TEST_F(PdfFileSpool, GivesEachPieceBackOnce)
{
    CheckThatEachIsGivenBackOnce(spool_);
}

TEST_F(PdfFileSpool, GivesTheRoomOfAPieceBack)
{
    spool_.Add(std::string(1 << 20, 'a'));
    fsync(Descriptor()); // some file systems take the room only now
    struct stat before = {}, after = {};
    fstat(Descriptor(), &before);
    Taken(spool_, 0);
    fstat(Descriptor(), &after);
    if (after.st_blocks == before.st_blocks)
        GTEST_SKIP() << "this file system has no holes";
    EXPECT_LT(after.st_blocks * 512, 1 << 16);
    EXPECT_GE(before.st_blocks * 512, 1 << 20);
}

TEST_F(PdfFileSpool, SaysThatItsFolderIsNone)
{
    PdfOptions options;
    options.spoolFolder = "/no/such";
    const FileSpool spool(options);
    EXPECT_EQ(spool.FirstFailure().kind, FailureKind::SpoolFailed);
    EXPECT_EQ(spool.FirstFailure().text,
              "cannot keep the page in a temporary file, no such file or directory: name another "
              "folder in --temp-dir");
}

TEST(PdfMemorySpool, GivesEachPieceBackOnce)
{
    MemorySpool spool(1000001);
    CheckThatEachIsGivenBackOnce(spool);
}

TEST(PdfMemorySpool, HoldsNoMoreThanItMay)
{
    MemorySpool spool(3);
    spool.Add(std::string("ab"));
    spool.Add(std::string("cd"));
    EXPECT_EQ(spool.FirstFailure().kind, FailureKind::OutOfMemory);
    EXPECT_EQ(spool.FirstFailure().text,
              "the page takes more than 3 bytes before its file is written: allow more with --max-memory");
    EXPECT_EQ(spool.Count(), 1);
    spool.Clear();
    EXPECT_FALSE(spool.FirstFailure());
    spool.Add(std::string("abc"));
    EXPECT_FALSE(spool.FirstFailure());
    EXPECT_EQ(Taken(spool, 0), "abc");
}

} // namespace
