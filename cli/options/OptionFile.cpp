#include "cli/options/OptionFile.h"

#include "cli/options/CommonOptions.h"
#include "host/FileReading.h"
#include "library/Decimal.h"

#include <fmt/format.h>

#include <cerrno>

namespace vxhost
{

std::string ReadOptionFile(const OptionFile &file, size_t mostBytes, double seconds)
{
    const std::string named = fmt::format("{} {}", file.option, file.path);
    std::string error;
    const Descriptor opened(OpenToRead(file.path, FileKinds::Pipes, &error));
    if (opened.Get() < 0)
        throw UsageError(fmt::format("{}: {}", named, error));
    HeldBytes bytes;
    switch (bytes.ReadAll(opened.Get(), {mostBytes, seconds})) {
    case ReadEnd::Failed:
        throw UsageError(fmt::format("{}: cannot be read, {}", named, SystemText(errno)));
    case ReadEnd::TooLong:
        throw UsageError(fmt::format("{}: longer than {} bytes, {}", named, mostBytes, file.tooLong));
    case ReadEnd::TooLate:
        throw EarlyEnd(Status::LimitHit,
                       fmt::format("{}: not read to its end after {} s: allow more with --max-time, or see "
                                   "what writes it",
                                   named, Decimal(seconds)));
    default:
        return {reinterpret_cast<const char *>(bytes.Get().data()), bytes.Get().size()};
    }
}

} // namespace vxhost
