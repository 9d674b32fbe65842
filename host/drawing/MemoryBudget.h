// An upper bound on the bytes that a drawing keeps: documents are hostile, and paths and saves nest as they like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace vxhost
{

// The budget is spent. (A machine without memory is plain std::bad_alloc.)
struct BudgetSpent : std::bad_alloc {
    const char *what() const noexcept override { return "the drawing needs more memory than it may have"; }
};

class MemoryBudget
{
  public:
    explicit MemoryBudget(int64_t bytes) : left_(bytes) {}

    void Take(size_t bytes)
    {
        if (static_cast<int64_t>(bytes) > left_)
            throw BudgetSpent();
        left_ -= static_cast<int64_t>(bytes);
    }
    void Give(size_t bytes) { left_ += static_cast<int64_t>(bytes); }

  private:
    int64_t left_;
};

} // namespace vxhost
