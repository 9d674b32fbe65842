// Numbers for tests, the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace vxtest
{

class Random
{
  public:
    explicit Random(uint32_t seed) : engine_(seed) {}
    // Evenly from 0 to count - 1.
    size_t Below(size_t count) { return engine_() % count; }

  private:
    std::mt19937 engine_;
};

} // namespace vxtest
