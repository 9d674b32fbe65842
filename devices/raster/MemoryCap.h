// What one picture may hold in memory. Whoever allocates by the document's will takes first and gives back
// later; once a taking was refused the picture has failed.
#pragma once

#include <cstdint>

namespace vxhost::raster
{

class MemoryCap
{
  public:
    explicit MemoryCap(uint64_t limit) : limit_(limit) {}

    bool Take(uint64_t bytes)
    {
        if (bytes > Left())
            exhausted_ = true;
        else
            used_ += bytes;
        return !exhausted_;
    }
    void Give(uint64_t bytes) { used_ -= bytes; }
    void Fail() { exhausted_ = true; }

    uint64_t Left() const { return limit_ - used_; }
    bool IsExhausted() const { return exhausted_; }

  private:
    uint64_t limit_;
    uint64_t used_ = 0;
    bool exhausted_ = false;
};

} // namespace vxhost::raster
