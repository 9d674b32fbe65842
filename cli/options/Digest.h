// Digests of bytes and of files: SHA-256, in 64 hexadecimal digits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vxhost
{

constexpr size_t kDigestDigits = 64;

std::string DigestOf(std::string_view bytes);

// Returns the first eight bytes of the digest as a number.
uint64_t ShortDigestOf(std::string_view bytes);

struct FileDigest {
    std::string digest;
    uint64_t bytes = 0;
    std::string error; // not empty: why there is none, one line for a person

    bool operator==(const FileDigest &) const = default;
};

// These read a file to its end, from its beginning, or so many bytes from a place on.
FileDigest DigestOfFile(const std::string &path); // a regular one
FileDigest DigestOfDescriptor(int descriptor);
FileDigest DigestOfRange(int descriptor, uint64_t at, uint64_t size);

} // namespace vxhost
