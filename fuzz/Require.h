// Ends the fuzzer when something does not hold that must hold of every input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vxfuzz
{

// Ends the program where it does not hold, so that the fuzzer keeps the input; otherwise is what is wrong then.
inline void Require(bool holds, const char *otherwise)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", otherwise);
    std::abort();
}

inline void Require(bool holds, const std::string &otherwise)
{
    Require(holds, otherwise.c_str());
}

} // namespace vxfuzz
