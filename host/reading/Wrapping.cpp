#include "host/reading/Wrapping.h"

#include "host/reading/HeaderScan.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMaxLines = size_t{64} << 10; // bytes of text before the drawing
constexpr int kMaxDepth = 3;                   // records in records
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\n\f";

// Reads a number of that many bytes, the first of them the highest.
uint32_t BigEndian(std::string_view file, size_t at, size_t bytes)
{
    uint32_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
        value = value << 8 | static_cast<uint8_t>(file[at + i]);
    return value;
}

// The bytes from there on, of which there are as many as the record says, or fewer.
std::optional<std::string_view> Part(std::string_view file, uint32_t offset, uint32_t size)
{
    if (offset >= file.size() || size == 0)
        return std::nullopt;
    return file.substr(offset, size);
}

// The record is a header of 128 bytes, with the name of the file and the sizes of its two forks; the data come behind it.
std::optional<std::string_view> FindInMacBinary(std::string_view file)
{
    constexpr size_t kHeaderSize = 128, kName = 1, kZero = 74, kOtherZero = 82, kDataSize = 83;
    constexpr uint32_t kMaxName = 63;
    if (file.size() <= kHeaderSize || file[0] != 0 || file[kZero] != 0 || file[kOtherZero] != 0)
        return std::nullopt;
    const uint32_t nameLength = BigEndian(file, kName, 1);
    if (nameLength < 1 || nameLength > kMaxName)
        return std::nullopt;
    return Part(file, kHeaderSize, BigEndian(file, kDataSize, 4));
}

// The record has a magic number, a version, and entries of which each says where its part of the file lies.
std::optional<std::string_view> FindInAppleRecord(std::string_view file, uint32_t magic)
{
    constexpr size_t kHeaderSize = 26, kCount = 24, kEntrySize = 12;
    constexpr uint32_t kDataFork = 1;
    if (file.size() < kHeaderSize || BigEndian(file, 0, 4) != magic)
        return std::nullopt;
    const uint32_t count = BigEndian(file, kCount, 2);
    for (uint32_t i = 0; i < count && kHeaderSize + (i + 1) * kEntrySize <= file.size(); ++i) {
        const size_t entry = kHeaderSize + i * kEntrySize;
        if (BigEndian(file, entry, 4) == kDataFork)
            return Part(file, BigEndian(file, entry + 4, 4), BigEndian(file, entry + 8, 4));
    }
    return std::nullopt;
}

// Returns the first line that begins so, behind lines of text.
std::optional<size_t> FindFirstLine(std::string_view text, Beginning begins)
{
    text = text.substr(0, kMaxLines + kDocumentPrefix.size());
    const auto isText = [](char character) {
        const auto byte = static_cast<uint8_t>(character);
        return byte >= 0x20 || kBlanks.find(character) != std::string_view::npos;
    };
    for (size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        if (begins(rest))
            return at;
        const size_t end = rest.find_first_of("\r\n");
        if (end == std::string_view::npos || !std::ranges::all_of(rest.substr(0, end), isText))
            return std::nullopt;
        at += end + 1;
    }
    return std::nullopt;
}

// Takes one record from around the bytes; false where there is none.
bool OpenRecord(std::string_view *bytes, std::string *names)
{
    constexpr uint32_t kAppleSingle = 0x00051600, kAppleDouble = 0x00051607;
    const std::pair<const char *, std::optional<std::string_view>> records[] = {
        {"AppleSingle", FindInAppleRecord(*bytes, kAppleSingle)},
        {"AppleDouble", FindInAppleRecord(*bytes, kAppleDouble)},
        {"MacBinary", FindInMacBinary(*bytes)}}; // last: it has no magic number
    for (const auto &[name, part] : records) {
        if (!part)
            continue;
        AddWrapping(name, names);
        *bytes = *part;
        return true;
    }
    return false;
}

void SkipLines(Beginning begins, std::string_view *bytes, std::string *names)
{
    if (bytes->starts_with(kByteOrderMark)) {
        bytes->remove_prefix(kByteOrderMark.size());
        AddWrapping("a byte-order mark", names);
    }
    if (begins(*bytes))
        return;
    const std::optional<size_t> line = FindFirstLine(*bytes, begins);
    if (!line || *line == 0)
        return;
    const bool isBlank = bytes->substr(0, *line).find_first_not_of(kBlanks) == std::string_view::npos;
    AddWrapping(isBlank ? "blank lines" : "other lines before it", names);
    bytes->remove_prefix(*line);
}

} // namespace

void AddWrapping(std::string_view inner, std::string *names)
{
    names->append(names->empty() || inner.empty() ? "" : ", ").append(inner);
}

bool BeginsDrawing(std::string_view bytes)
{
    return bytes.starts_with(kDocumentPrefix) || bytes.starts_with(kEpsSignature);
}

std::optional<Wrapping> FindWrapped(std::span<const std::byte> file, Beginning begins)
{
    const std::string_view whole(reinterpret_cast<const char *>(file.data()), file.size());
    std::string_view bytes = whole;
    Wrapping wrapping;
    for (int depth = 0; depth < kMaxDepth && !begins(bytes) && OpenRecord(&bytes, &wrapping.names); ++depth)
        continue;
    SkipLines(begins, &bytes, &wrapping.names);
    if (!begins(bytes))
        return std::nullopt;
    if (bytes.starts_with(kDocumentPrefix) && bytes.ends_with('\0')) {
        bytes.remove_suffix(bytes.size() - 1 - bytes.find_last_not_of('\0'));
        AddWrapping("NULs at its end", &wrapping.names);
    }
    wrapping.offset = static_cast<size_t>(bytes.data() - whole.data());
    wrapping.size = bytes.size();
    return wrapping;
}

Wrapping FindDrawing(std::span<const std::byte> file)
{
    return FindWrapped(file, BeginsDrawing).value_or(Wrapping{0, file.size(), ""});
}

} // namespace vxhost
