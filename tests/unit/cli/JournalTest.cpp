// The index of a journal, from lines as runs leave them.
#include "cli/batch/Journal.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace vxhost
{
namespace
{

const std::string kHead = "{\"journal\":\"vx batch\"}\n";

std::string Line(const char *kind, int job, const std::string &more = "")
{
    char digits[17];
    (void)std::snprintf(digits, sizeof digits, "%016x", job);
    return std::string("{\"") + kind + "\":\"" + digits + "\"" + more + "}\n";
}

class JournalIndexTest : public testing::Test
{
  protected:
    // Returns how much of the bytes is whole lines.
    uint64_t Read(const std::string &bytes)
    {
        std::FILE *file = std::tmpfile();
        (void)std::fwrite(bytes.data(), 1, bytes.size(), file);
        (void)std::fflush(file);
        const uint64_t whole = index_.Read(fileno(file));
        (void)std::fclose(file);
        return whole;
    }

    JournalIndex index_;
};

TEST_F(JournalIndexTest, FindsTheLastLineOfEachJob)
{
    const std::string first = kHead + Line("begun", 7) + Line("begun", 3) + Line("done", 3),
                      second = Line("done", 7),
                      more = std::string(300000, 'x'); // longer than what is read at a time
    const std::string bytes = first + second + Line("done", 9, more) + Line("done", 3);
    EXPECT_EQ(Read(bytes), bytes.size());
    EXPECT_EQ(index_.Find(7), first.size());
    EXPECT_EQ(index_.Find(9), first.size() + second.size());
    EXPECT_EQ(index_.Find(3), bytes.size() - Line("done", 3).size());
    EXPECT_FALSE(index_.Find(4));
    EXPECT_EQ(index_.AllDone().size(), 3U);
}

TEST_F(JournalIndexTest, CountsWhatWasBegunInVain)
{
    (void)Read(kHead + Line("begun", 1) + Line("begun", 1) + Line("done", 1) + Line("begun", 1) +
               Line("begun", 2) + Line("begun", 2));
    EXPECT_EQ(index_.BegunInVain(1), 1);
    EXPECT_EQ(index_.BegunInVain(2), 2);
    EXPECT_EQ(index_.BegunInVain(3), 0);
}

TEST_F(JournalIndexTest, LeavesTheTornLineOut)
{
    const std::string whole = kHead + Line("done", 1), torn = Line("done", 2);
    for (size_t length = 0; length < torn.size(); ++length) {
        index_ = {};
        EXPECT_EQ(Read(whole + torn.substr(0, length)), whole.size());
        EXPECT_FALSE(index_.Find(2));
    }
}

TEST_F(JournalIndexTest, PassesOverWhatItDoesNotKnow)
{
    const std::string bytes =
        "\n{\"done\":\"xyz\"}\n{\"done\":\"000000000000000g\"}\n{\"begun\":\"0\nnoise\n";
    EXPECT_EQ(Read(bytes), bytes.size());
    EXPECT_TRUE(index_.AllDone().empty());
}

} // namespace
} // namespace vxhost
