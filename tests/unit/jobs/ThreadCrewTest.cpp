// Threads that work in lanes: each lane has its batches in order, whoever works, and nothing of a batch that is not posted.
#include "jobs/ThreadCrew.h"

#include <atomic>
#include <barrier>
#include <gtest/gtest.h>
#include <new>
#include <numeric>
#include <set>
#include <thread>

namespace vxhost
{
namespace
{

constexpr size_t kSizes[] = {1, 2, 3, 8, 64};

struct LaneLog {
    std::vector<int> seen;
    std::atomic<int> inside = 0;
};

TEST(ThreadCrewTest, GivesEachLaneEachBatchInOrder)
{
    constexpr size_t kLanes = 7, kBatches = 3;
    constexpr int kPosts = 500;
    for (const size_t size : kSizes) {
        ThreadCrew crew;
        crew.Start(size);
        ASSERT_LE(crew.Size(), size);
        for (int page = 0; page < 2; ++page) {
            std::vector<LaneLog> lanes(kLanes);
            std::vector<int> batches(kBatches);
            std::atomic<int> crowded = 0;
            crew.Begin(kLanes, kBatches, [&](size_t lane, size_t batch) {
                crowded += lanes[lane].inside++;
                lanes[lane].seen.push_back(batches[batch]);
                --lanes[lane].inside;
            });
            size_t batch = 0;
            for (int post = 0; post < kPosts; ++post) {
                batches[batch] = post; // nobody looks at it any more
                batch = crew.Post();
                if (post % 100 == 0)
                    crew.Finish();
            }
            crew.Finish();
            std::vector<int> all(kPosts);
            std::iota(all.begin(), all.end(), 0);
            for (const LaneLog &lane : lanes)
                EXPECT_EQ(lane.seen, all) << size << " threads";
            EXPECT_EQ(crowded, 0);
            crew.Stop();
        }
    }
}

TEST(ThreadCrewTest, HasAllOfItsThreadsAtWork)
{
    constexpr size_t kThreads = 4;
    ThreadCrew crew;
    crew.Start(kThreads);
    ASSERT_EQ(crew.Size(), kThreads);
    std::barrier<> allAtOnce(kThreads);
    std::mutex mutex;
    std::set<std::thread::id> ids;
    crew.Begin(kThreads, 2, [&](size_t, size_t) {
        allAtOnce.arrive_and_wait();
        const std::lock_guard lock(mutex);
        ids.insert(std::this_thread::get_id());
    });
    (void)crew.Post();
    crew.Finish();
    EXPECT_EQ(ids.size(), kThreads);
    EXPECT_TRUE(ids.contains(std::this_thread::get_id()));
    crew.Stop();
}

TEST(ThreadCrewTest, ThrowsWhatTheWorkThrows)
{
    for (const size_t size : kSizes) {
        ThreadCrew crew;
        crew.Start(size);
        std::atomic<bool> fails = true;
        std::atomic<int> inside = 0;
        crew.Begin(5, 2, [&](size_t lane, size_t) {
            ++inside;
            if (lane == 3 && fails) {
                --inside;
                throw std::bad_alloc();
            }
            --inside;
        });
        (void)crew.Post();
        EXPECT_THROW(crew.Finish(), std::bad_alloc);
        EXPECT_EQ(inside, 0); // nobody works any more
        EXPECT_THROW(crew.Finish(), std::bad_alloc);
        EXPECT_THROW(
            {
                for (int i = 0; i < 4; ++i)
                    (void)crew.Post();
            },
            std::bad_alloc);
        crew.Stop();
        fails = false; // the next page is another one
        std::atomic<int> done = 0;
        crew.Begin(5, 2, [&](size_t, size_t) { ++done; });
        (void)crew.Post();
        crew.Finish();
        EXPECT_EQ(done, 5);
        crew.Stop();
    }
}

TEST(ThreadCrewTest, StopsInTheMidst)
{
    for (const size_t size : kSizes) {
        ThreadCrew crew;
        crew.Start(size);
        auto alive = std::make_unique<std::atomic<int>>(0);
        crew.Begin(16, 4, [&](size_t, size_t) {
            ++*alive;
            std::this_thread::yield();
            ++*alive;
        });
        for (int i = 0; i < 3; ++i)
            (void)crew.Post();
        crew.Stop();
        const int after = *alive;
        EXPECT_EQ(after % 2, 0);
        std::this_thread::yield();
        EXPECT_EQ(*alive, after);
        alive.reset(); // no work is left that would look at it
    }
}

} // namespace
} // namespace vxhost
