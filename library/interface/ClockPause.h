// Says when it is time to look at a clock again. A look costs more than most steps, in a browser above all: where steps are quick, it
// is taken at few of them.
#pragma once

#include <algorithm>
#include <chrono>

namespace vxhost
{

class ClockPause
{
  public:
    static constexpr unsigned kMost = 32; // steps without a look
    static constexpr std::chrono::microseconds kQuick = std::chrono::microseconds(200); // that they may take

    bool IsOver() { return ++steps_ >= length_; }
    // Is told of each look how long ago the last one was.
    void Begin(std::chrono::steady_clock::duration sinceLast)
    {
        length_ = sinceLast < kQuick ? std::min(length_ * 2, kMost) : 1;
        steps_ = 0;
    }

  private:
    unsigned length_ = 1, steps_ = 0;
};

} // namespace vxhost
