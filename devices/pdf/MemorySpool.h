// A spool in memory, for a program that has no files.
#pragma once

#include "devices/pdf/PieceSpool.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vxhost::pdf
{

class MemorySpool final : public PieceSpool
{
  public:
    explicit MemorySpool(uint64_t most) : most_(most) {} // bytes that it may hold

    void Clear() override;
    void Add(std::span<const char> piece) override;
    size_t Count() const override { return pieces_.size(); }
    void Take(size_t piece, const std::function<void(std::span<const char>)> &take) override;
    const Failure &FirstFailure() const override { return failure_; }

  private:
    uint64_t most_;
    uint64_t held_ = 0;
    std::vector<std::optional<std::vector<char>>> pieces_; // nothing: taken
    Failure failure_;
};

} // namespace vxhost::pdf
