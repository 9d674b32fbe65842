// Reads a small file that an option names, whatever it is: a pipe that nobody writes to costs no more than the limits allow.
#pragma once

#include <cstddef>
#include <string>

namespace vxhost
{

struct OptionFile {
    std::string option; // "--font-map"
    std::string path;
    const char *tooLong; // what to say of more bytes: "the most that a map may have: ..."
};

// Throws UsageError, or EarlyEnd when it takes longer; 0 seconds: there is no limit.
std::string ReadOptionFile(const OptionFile &file, size_t mostBytes, double seconds);

} // namespace vxhost
