#include "cli/batch/FileLock.h"

#include <cerrno>
#include <chrono>
#include <sys/file.h>
#include <thread>

namespace vxhost
{

namespace
{

constexpr int kTries = 100;
constexpr std::chrono::milliseconds kPause(20);

} // namespace

bool LockForRun(int descriptor)
{
    for (int i = 0; i < kTries; ++i) {
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
            return true; // where there are no locks, nobody else has one
        std::this_thread::sleep_for(kPause);
    }
    return false;
}

} // namespace vxhost
