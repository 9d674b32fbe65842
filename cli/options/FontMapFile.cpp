#include "cli/options/FontMapFile.h"

#include "cli/options/CommonOptions.h"
#include "host/FileReading.h"
#include "library/Decimal.h"

#include <fmt/format.h>

#include <cerrno>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMaxMapBytes = kMaxMapLine * kMaxMapRows;

void ReadMapBytes(const std::string &path, double seconds, HeldBytes *bytes)
{
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Pipes, &error));
    if (file.Get() < 0)
        throw UsageError(fmt::format("--font-map {}: {}", path, error));
    switch (bytes->ReadAll(file.Get(), {kMaxMapBytes, seconds})) {
    case ReadEnd::Whole:
        return;
    case ReadEnd::Failed:
        throw UsageError(fmt::format("--font-map {}: cannot be read, {}", path, SystemText(errno)));
    case ReadEnd::TooLong:
        throw UsageError(
            fmt::format("--font-map {}: longer than {} bytes, the most that a map may have: leave "
                        "out what no document needs",
                        path, kMaxMapBytes));
    case ReadEnd::TooLate:
        throw EarlyEnd(Status::LimitHit,
                       fmt::format("--font-map {}: not read to its end after {} s: allow more with "
                                   "--max-time, or see what writes it",
                                   path, Decimal(seconds)));
    }
}

} // namespace

FontMap ReadFontMapFile(const std::string &path, double seconds)
{
    HeldBytes bytes;
    ReadMapBytes(path, seconds, &bytes);
    return ReadFontMap({reinterpret_cast<const char *>(bytes.Get().data()), bytes.Get().size()}, path);
}

} // namespace vxhost
