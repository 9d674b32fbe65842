#include "cli/options/FontChoice.h"

#include "cli/options/CommonOptions.h"
#include "cli/report/Decimal.h"
#include "host/FileReading.h"
#include "host/reading/Utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMaxLine = 1024;
constexpr size_t kMaxRows = 10000;

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void ReadMapBytes(const std::string &path, double seconds, HeldBytes *bytes)
{
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Pipes, &error));
    if (file.Get() < 0)
        throw UsageError(fmt::format("--font-map {}: {}", path, error));
    switch (bytes->ReadAll(file.Get(), {kMaxLine * kMaxRows, seconds})) {
    case ReadEnd::Whole:
        return;
    case ReadEnd::Failed:
        throw UsageError(fmt::format("--font-map {}: cannot be read, {}", path, SystemText(errno)));
    case ReadEnd::TooLong:
        throw UsageError(
            fmt::format("--font-map {}: longer than {} bytes, the most that a map may have: leave "
                        "out what no document needs",
                        path, kMaxLine * kMaxRows));
    case ReadEnd::TooLate:
        throw LimitError(fmt::format("--font-map {}: not read to its end after {} s: allow more with "
                                     "--max-time, or see what writes it",
                                     path, Decimal(seconds)));
    }
}

} // namespace

std::map<std::string, std::string> ReadFontMap(const std::string &path, double seconds)
{
    HeldBytes bytes;
    ReadMapBytes(path, seconds, &bytes);
    std::string_view rest(reinterpret_cast<const char *>(bytes.Get().data()), bytes.Get().size());
    std::map<std::string, std::string> served;
    for (size_t number = 1; !rest.empty(); ++number) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::string_view text = Trimmed(line.substr(0, line.find('#')));
        if (text.empty())
            continue;
        const size_t equals = text.find('=');
        const std::string_view asked = Trimmed(text.substr(0, equals));
        const std::string_view font =
            equals == std::string_view::npos ? "" : Trimmed(text.substr(equals + 1));
        if (asked.empty() || font.empty() || line.size() > kMaxLine || number > kMaxRows)
            throw UsageError(fmt::format("{}: line {} is \"{}\": write ASKED = FONT, both PostScript names",
                                         path, number, Printable(text, 60)));
        served[std::string(asked)] = font;
    }
    return served;
}

} // namespace vxhost
