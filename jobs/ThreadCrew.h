// A crew of threads. They are made at once, before there is work for them, and wait for it.
#pragma once

#include "devices/raster/Crew.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace vxhost
{

class ThreadCrew final : public Crew
{
  public:
    static constexpr size_t kStackBytes = size_t{256} << 10; // of each thread

    ThreadCrew() = default;
    ~ThreadCrew() override; // ends the threads

    // Makes threads, so that there are so many with the caller's, or fewer where no more can be had. All of them run when it
    // returns, in need of nothing but memory and locks.
    void Start(size_t size);

    size_t Size() const override { return threads_.size() + 1; }
    void Begin(size_t lanes, size_t batches, Work work) override;
    size_t Post() override;
    void Finish() override;
    void Stop() noexcept override;

  private:
    struct Lane {
        size_t done = 0; // batches
        bool isBusy = false;
        size_t thread = 0; // that worked on it last, in whose cache its rows are
    };
    using Lock = std::unique_lock<std::mutex>;

    static void *Run(void *crew);
    void WorkAlong();
    Lane *FindLane(size_t thread);
    void WorkOn(Lane *lane, Lock *lock);
    bool IsAnyBusy() const;
    size_t DoneByAll() const;
    void WaitUntilDone(size_t batches, Lock *lock);

    std::vector<pthread_t> threads_;

    std::mutex mutex_; // of all that follows
    std::condition_variable hasWork_, hasProgress_;
    std::vector<Lane> lanes_;
    size_t batches_ = 0, posted_ = 0;
    Work work_;
    std::exception_ptr thrown_;
    size_t running_ = 0; // threads
    bool isOver_ = false;
};

} // namespace vxhost
