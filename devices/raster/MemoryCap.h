// What one picture may hold in memory. Whoever allocates by the document's will takes first and gives back
// later; once a taking was refused the picture has failed. What only saves time borrows: it gives back whatever somebody
// else needs to take, and without it the picture is the same.
//
// Threads may take and give at the same time, of a cap of which nobody borrows.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace vxhost::raster
{

// Holds memory that it can do without.
class Borrower
{
  public:
    Borrower() = default;
    Borrower(const Borrower &) = delete;
    Borrower &operator=(const Borrower &) = delete;
    virtual ~Borrower() = default;

    // Calls Return, at once or as soon as what is in use now is so no longer.
    virtual void GiveBack() = 0;
};

class MemoryCap
{
  public:
    explicit MemoryCap(uint64_t limit) : limit_(limit) {}

    // Begins anew. Nothing may be taken or lent.
    void Reset(uint64_t limit)
    {
        limit_ = limit;
        used_ = 0;
        exhausted_ = false;
    }

    bool Take(uint64_t bytes)
    {
        uint64_t used = used_;
        do {
            if (bytes > limit_ - used) {
                exhausted_ = true;
                return false;
            }
        } while (!used_.compare_exchange_weak(used, used + bytes));
        if (borrowed_ > Left())
            borrower_->GiveBack();
        return !exhausted_;
    }
    void Give(uint64_t bytes) { used_ -= bytes; }
    void Fail() { exhausted_ = true; }

    // There may be one borrower. False when there is no room for so much more.
    bool Borrow(uint64_t bytes, Borrower *borrower)
    {
        if (bytes > Left() - std::min(borrowed_, Left()))
            return false;
        borrowed_ += bytes;
        borrower_ = borrower;
        return true;
    }
    void Return(uint64_t bytes) { borrowed_ -= bytes; }

    uint64_t Left() const { return limit_ - used_; }
    bool IsExhausted() const { return exhausted_; }

  private:
    uint64_t limit_;
    std::atomic<uint64_t> used_ = 0;
    std::atomic<bool> exhausted_ = false;
    uint64_t borrowed_ = 0;
    Borrower *borrower_ = nullptr;
};

} // namespace vxhost::raster
