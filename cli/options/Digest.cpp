#include "cli/options/Digest.h"

#include "host/FileReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <nettle/sha2.h>
#include <unistd.h>
#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kReadSize = size_t{256} << 10;

using DigestBytes = std::array<uint8_t, SHA256_DIGEST_SIZE>;
static_assert(kDigestDigits == size_t{2} * SHA256_DIGEST_SIZE);

class Sha256
{
  public:
    Sha256() { sha256_init(&state_); }
    void Add(const void *bytes, size_t size)
    {
        sha256_update(&state_, size, static_cast<const uint8_t *>(bytes));
    }
    DigestBytes Finish()
    {
        DigestBytes digest;
        sha256_digest(&state_, digest.size(), digest.data());
        return digest;
    }

  private:
    sha256_ctx state_;
};

DigestBytes BytesOf(std::string_view bytes)
{
    Sha256 sha;
    sha.Add(bytes.data(), bytes.size());
    return sha.Finish();
}

std::string HexOf(const DigestBytes &digest)
{
    std::string text;
    for (const uint8_t byte : digest)
        text += fmt::format("{:02x}", byte);
    return text;
}

} // namespace

std::string DigestOf(std::string_view bytes)
{
    return HexOf(BytesOf(bytes));
}

uint64_t ShortDigestOf(std::string_view bytes)
{
    const DigestBytes digest = BytesOf(bytes);
    uint64_t number = 0;
    for (size_t i = 0; i < sizeof number; ++i)
        number = number << 8 | digest[i];
    return number;
}

FileDigest DigestOfFile(const std::string &path)
{
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Regular, &error));
    return file.Get() < 0 ? FileDigest{"", 0, error} : DigestOfDescriptor(file.Get());
}

FileDigest DigestOfDescriptor(int descriptor)
{
    return DigestOfRange(descriptor, 0, std::numeric_limits<uint64_t>::max());
}

FileDigest DigestOfRange(int descriptor, uint64_t at, uint64_t size)
{
    FileDigest found;
    Sha256 sha;
    std::vector<std::byte> buffer(kReadSize);
    ssize_t got = 0;
    while ((got = pread(descriptor, buffer.data(), std::min<uint64_t>(buffer.size(), size - found.bytes),
                        static_cast<off_t>(at + found.bytes))) > 0) {
        sha.Add(buffer.data(), static_cast<size_t>(got));
        found.bytes += static_cast<uint64_t>(got);
    }
    if (got < 0)
        found.error = fmt::format("cannot be read, {}: check the disk", SystemText(errno));
    else
        found.digest = HexOf(sha.Finish());
    return found;
}

} // namespace vxhost
