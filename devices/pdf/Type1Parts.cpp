#include "devices/pdf/Type1Parts.h"

#include <algorithm>
#include <array>

namespace vxhost::pdf
{

namespace
{

constexpr char kSegmentMark = '\x80';
constexpr size_t kSegmentHeader = 6;
enum SegmentKind : uint8_t { kText = 1, kBinary = 2 };

constexpr std::string_view kEncryptedStarts = "eexec";
constexpr std::string_view kTrailerEnds = "cleartomark";
constexpr std::string_view kBlanks = " \t\r\n";
constexpr size_t kTrailerZeros = 512;

EmbeddedProgram Joined(std::string clear, std::string_view encrypted)
{
    if (clear.empty() || encrypted.empty())
        return {};
    EmbeddedProgram program;
    program.clearLength = clear.size();
    program.encryptedLength = encrypted.size();
    program.bytes = std::move(clear);
    program.bytes += encrypted;
    return program;
}

// The file is text segments, binary segments, and text again, which is the trailer.
EmbeddedProgram FromSegments(std::string_view file)
{
    std::string clear, encrypted;
    while (file.size() >= kSegmentHeader && file[0] == kSegmentMark) {
        const auto kind = static_cast<uint8_t>(file[1]);
        size_t length = 0;
        for (size_t i = kSegmentHeader; i-- > 2;)
            length = length << 8 | static_cast<uint8_t>(file[i]);
        file.remove_prefix(kSegmentHeader);
        if ((kind != kText && kind != kBinary) || length > file.size())
            break;
        if (kind == kText && !encrypted.empty())
            break;
        (kind == kText ? clear : encrypted) += file.substr(0, length);
        file.remove_prefix(length);
    }
    return Joined(std::move(clear), encrypted);
}

int HexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The text without the zeros and the word that follow the encrypted part.
std::string_view WithoutTrailer(std::string_view rest)
{
    const size_t word = rest.rfind(kTrailerEnds);
    if (word == std::string_view::npos)
        return rest;
    size_t end = word, zeros = 0;
    for (; end > 0 && zeros < kTrailerZeros; --end) {
        if (rest[end - 1] == '0')
            ++zeros;
        else if (kBlanks.find(rest[end - 1]) == std::string_view::npos)
            break;
    }
    return rest.substr(0, end);
}

EmbeddedProgram FromText(std::string_view file)
{
    const size_t word = file.find(kEncryptedStarts);
    if (word == std::string_view::npos)
        return {};
    const size_t start = file.find_first_not_of(kBlanks, word + kEncryptedStarts.size());
    if (start == std::string_view::npos)
        return {};
    std::string encrypted;
    int high = -1;
    for (const char character : WithoutTrailer(file.substr(start))) {
        const int digit = HexDigit(character);
        if (digit < 0)
            continue;
        if (high >= 0)
            encrypted += static_cast<char>(high << 4 | digit);
        high = high >= 0 ? -1 : digit;
    }
    return Joined(std::string(file.substr(0, word + kEncryptedStarts.size())) + "\n", encrypted);
}

} // namespace

bool IsType1(std::string_view file)
{
    if (file.size() > kSegmentHeader && file[0] == kSegmentMark)
        file.remove_prefix(kSegmentHeader);
    return file.starts_with("%!PS-AdobeFont") || file.starts_with("%!FontType1");
}

EmbeddedProgram FindType1Parts(std::string_view file)
{
    if (!IsType1(file))
        return {};
    return file[0] == kSegmentMark ? FromSegments(file) : FromText(file);
}

} // namespace vxhost::pdf
