// One lock guards what is posted and done; batches are large, so that it is seldom asked for. A thread goes on with lanes that
// it had before, whose rows are in its cache, and takes another's when it has none to do, that which is farthest behind. The
// thread that posts works too before it waits.
#include "jobs/ThreadCrew.h"

#include <algorithm>
#include <malloc.h>
#include <memory>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kCaller = 0; // the number of its thread; the others have those from 1 on

} // namespace

ThreadCrew::~ThreadCrew()
{
    {
        const Lock lock(mutex_);
        isOver_ = true;
    }
    hasWork_.notify_all();
    for (const pthread_t thread : threads_)
        pthread_join(thread, nullptr);
}

void ThreadCrew::Start(size_t size)
{
    mallopt(M_ARENA_MAX,
            1); // the threads allocate little, and an arena each would count against the limit of memory
    pthread_attr_t attributes;
    if (size <= 1 || pthread_attr_init(&attributes) != 0)
        return;
    const std::unique_ptr<pthread_attr_t, int (*)(pthread_attr_t *)> owner(&attributes, pthread_attr_destroy);
    pthread_attr_setstacksize(&attributes, kStackBytes);
    threads_.reserve(size - 1);
    for (pthread_t thread = {};
         threads_.size() + 1 < size && pthread_create(&thread, &attributes, Run, this) == 0;)
        threads_.push_back(thread);
    Lock lock(mutex_);
    hasProgress_.wait(lock, [this] { return running_ == threads_.size(); });
}

void *ThreadCrew::Run(void *crew)
{
    static_cast<ThreadCrew *>(crew)->WorkAlong();
    return nullptr;
}

void ThreadCrew::WorkAlong()
{
    Lock lock(mutex_);
    const size_t thread = ++running_;
    hasProgress_.notify_all();
    while (!isOver_) {
        if (Lane *lane = FindLane(thread))
            WorkOn(lane, &lock);
        else
            hasWork_.wait(lock);
    }
}

// Returns the lane that the thread is to work on next, one of its own if it can; null: there is none.
ThreadCrew::Lane *ThreadCrew::FindLane(size_t thread)
{
    Lane *found = nullptr;
    const auto rank = [thread](const Lane &lane) { return std::pair(lane.thread != thread, lane.done); };
    for (Lane &lane : lanes_) {
        if (!lane.isBusy && lane.done < posted_ && (found == nullptr || rank(lane) < rank(*found)))
            found = &lane;
    }
    if (found == nullptr || thrown_ != nullptr)
        return nullptr;
    found->thread = thread;
    return found;
}

// Lets go of the lock for the time of the work.
void ThreadCrew::WorkOn(Lane *lane, Lock *lock)
{
    const auto number = static_cast<size_t>(lane - lanes_.data());
    lane->isBusy = true;
    lock->unlock();
    std::exception_ptr thrown;
    try {
        work_(number, lane->done % batches_);
    } catch (...) {
        thrown = std::current_exception();
    }
    lock->lock();
    lane->isBusy = false;
    ++lane->done;
    if (thrown != nullptr)
        thrown_ = std::move(thrown);
    hasProgress_.notify_all();
    if (lane->done < posted_) // the thread that posts may leave it to others
        hasWork_.notify_one();
}

bool ThreadCrew::IsAnyBusy() const
{
    return std::ranges::any_of(lanes_, &Lane::isBusy);
}

size_t ThreadCrew::DoneByAll() const
{
    return std::ranges::min(lanes_, {}, &Lane::done).done;
}

void ThreadCrew::WaitUntilDone(size_t batches, Lock *lock)
{
    while (thrown_ == nullptr && DoneByAll() < batches) {
        if (Lane *lane = FindLane(kCaller))
            WorkOn(lane, lock);
        else
            hasProgress_.wait(*lock);
    }
    if (thrown_ == nullptr)
        return;
    hasProgress_.wait(*lock, [this] { return !IsAnyBusy(); });
    std::rethrow_exception(thrown_);
}

void ThreadCrew::Begin(size_t lanes, size_t batches, Work work)
{
    const Lock lock(mutex_);
    lanes_.assign(lanes, {});
    batches_ = batches;
    posted_ = 0;
    work_ = std::move(work);
    thrown_ = nullptr;
}

size_t ThreadCrew::Post()
{
    Lock lock(mutex_);
    ++posted_;
    hasWork_.notify_all();
    if (posted_ >= batches_)
        WaitUntilDone(posted_ - batches_ + 1, &lock);
    return posted_ % batches_;
}

void ThreadCrew::Finish()
{
    Lock lock(mutex_);
    WaitUntilDone(posted_, &lock);
}

void ThreadCrew::Stop() noexcept
{
    Lock lock(mutex_);
    posted_ = 0;
    hasProgress_.wait(lock, [this] { return !IsAnyBusy(); });
    lanes_.clear();
    work_ = nullptr;
}

} // namespace vxhost
