#include "devices/pdf/PieceSpool.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

using vxhost::pdf::PieceSpool;

namespace
{

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

class PdfPieceSpool : public testing::Test
{
  protected:
    int Descriptor() const { return fileno(file_.get()); }
    std::string Taken(size_t piece)
    {
        std::string bytes;
        spool_->Take(piece, [&](std::span<const char> part) { bytes.append(part.data(), part.size()); });
        return bytes;
    }

    std::unique_ptr<std::FILE, FileCloser> file_ = std::unique_ptr<std::FILE, FileCloser>(std::tmpfile());
    std::unique_ptr<PieceSpool> spool_ = std::make_unique<PieceSpool>(Descriptor());
};

TEST_F(PdfPieceSpool, GivesEachPieceBackOnce)
{
    const std::string first(1000000, 'a'), second = "b";
    spool_->Add(first);
    spool_->Add(second);
    ASSERT_EQ(spool_->Count(), 2);
    EXPECT_EQ(Taken(1), second);
    EXPECT_EQ(Taken(0), first);
    EXPECT_FALSE(spool_->FirstFailure());
    EXPECT_EQ(Taken(0), ""); // not the zeros that a hole in a file reads as
    EXPECT_EQ(spool_->FirstFailure().kind, vxhost::FailureKind::SpoolFailed);
}

TEST_F(PdfPieceSpool, GivesTheRoomOfAPieceBack)
{
    spool_->Add(std::string(1 << 20, 'a'));
    fsync(Descriptor()); // some file systems give out the room only here
    struct stat before = {}, after = {};
    fstat(Descriptor(), &before);
    Taken(0);
    fstat(Descriptor(), &after);
    if (after.st_blocks == before.st_blocks)
        GTEST_SKIP() << "this file system has no holes";
    EXPECT_LT(after.st_blocks * 512, 1 << 16);
    EXPECT_GE(before.st_blocks * 512, 1 << 20);
}

} // namespace
