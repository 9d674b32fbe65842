// Changes documents so that most of them stay documents: whole lines come, go and trade places, operands and operators
// become others, and so do the bytes at the end that say how the host behaves. The
// library's own mutations of bytes come on top.
#include "fuzz/HostileHost.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);

namespace
{

// Defines kLines, the distinct lines of the samples and of the tests' documents, and kOperators, every operator.
#include "LineBank.inc"

// Numbers at which arithmetic of 16 and 32 bits, counts and codes turn.
constexpr const char *kNumbers[] = {
    "0",           "1",           "-1",          "2",     "3",     "7",       "8",     "255",   "256",
    "499",         "500",         "501",         "32767", "32768", "-32768",  "65535", "65536", "2147483647",
    "-2147483648", "4294967296",  "99999999999", "0.5",   "-0.5",  "0.00001", ".",     "-",     "1.",
    ".9999999999", "32767.99999", "50",          "100",   "13",    "1e5",     "16#FF", "- 5",   "360",
};

using Random = std::minstd_rand;

size_t Below(Random &random, size_t count)
{
    return count == 0 ? 0 : random() % count;
}

template <typename List>
std::string Any(Random &random, const List &list)
{
    return std::string(*(std::begin(list) + static_cast<ptrdiff_t>(Below(random, std::size(list)))));
}

bool IsLineEnd(char byte)
{
    return byte == '\n' || byte == '\r';
}

std::vector<std::string> SplitLines(std::string_view text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (!IsLineEnd(text[i]))
            continue;
        lines.emplace_back(text.substr(start, i + 1 - start));
        start = i + 1;
    }
    if (start < text.size())
        lines.emplace_back(text.substr(start));
    return lines;
}

struct Word {
    size_t begin, end;
};

std::vector<Word> FindWords(const std::string &line)
{
    std::vector<Word> words;
    for (size_t i = 0; i < line.size();) {
        const size_t begin = line.find_first_not_of(" \t\r\n", i);
        if (begin == std::string::npos)
            break;
        const size_t end = std::min(line.find_first_of(" \t\r\n", begin), line.size());
        words.push_back({begin, end});
        i = end;
    }
    return words;
}

void ChangeWord(Random &random, std::string &line)
{
    const std::vector<Word> words = FindWords(line);
    if (words.empty())
        return;
    const bool takesLast = random() % 3 == 0;
    const Word word = takesLast ? words.back() : words[Below(random, words.size())];
    const std::string other = takesLast ? Any(random, kOperators) : Any(random, kNumbers);
    line.replace(word.begin, word.end - word.begin, random() % 16 == 0 ? "" : other);
}

void ChangeLines(Random &random, std::vector<std::string> &lines)
{
    const size_t at = Below(random, lines.size() + 1);
    const auto place = lines.begin() + static_cast<ptrdiff_t>(at);
    const size_t rest = lines.size() - at;
    switch (random() % 8) {
    case 0:
    case 1:
        lines.insert(place, Any(random, kLines) + (random() % 8 == 0 ? "\r" : "\n"));
        return;
    case 2:
        if (rest > 0)
            lines.erase(place, place + static_cast<ptrdiff_t>(1 + Below(random, std::min<size_t>(rest, 8))));
        return;
    case 3: {
        const size_t count = Below(random, std::min<size_t>(rest, 16) + 1);
        const std::vector<std::string> copy(place, place + static_cast<ptrdiff_t>(count));
        const size_t to = Below(random, lines.size() + 1);
        lines.insert(lines.begin() + static_cast<ptrdiff_t>(to), copy.begin(), copy.end());
        return;
    }
    case 4:
        if (rest > 0)
            std::swap(*place, lines[Below(random, lines.size())]);
        return;
    default:
        if (rest > 0)
            ChangeWord(random, *place);
        return;
    }
}

// Gives the same document another behaviour. A byte that is no text, as 0, sets that off from the document.
size_t ChangeBehaviour(Random &random, uint8_t *data, size_t size, size_t maxSize)
{
    constexpr size_t kBytes = sizeof(vxfuzz::Behaviour);
    const size_t length = vxfuzz::Input(data, size).document.size();
    if (length + kBytes > maxSize)
        return size;
    const bool hasBytes = length < size;
    for (size_t i = 0; i < kBytes; ++i) {
        if (!hasBytes || random() % 4 == 0)
            data[length + i] = static_cast<uint8_t>(random() % 2 == 0 ? 0 : random() >> 8);
    }
    return length + kBytes;
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed)
{
    Random random(seed + 1);
    if (random() % 4 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    if (random() % 8 == 0)
        return ChangeBehaviour(random, data, size, maxSize);
    std::vector<std::string> lines = SplitLines({reinterpret_cast<const char *>(data), size});
    for (size_t changes = 1 + Below(random, 4); changes > 0; --changes)
        ChangeLines(random, lines);
    size_t length = 0;
    for (const std::string &line : lines) {
        const size_t count = std::min(line.size(), maxSize - length);
        std::memcpy(data + length, line.data(), count);
        length += count;
    }
    return length;
}

// Joins the beginning of one document and the end of the other, whole lines of both.
extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t *first, size_t firstSize, const uint8_t *second,
                                            size_t secondSize, uint8_t *out, size_t maxSize, unsigned seed)
{
    Random random(seed + 1);
    const std::vector<std::string> head = SplitLines({reinterpret_cast<const char *>(first), firstSize});
    const std::vector<std::string> tail = SplitLines({reinterpret_cast<const char *>(second), secondSize});
    std::string both;
    for (size_t i = 0, end = Below(random, head.size() + 1); i < end; ++i)
        both += head[i];
    for (size_t i = Below(random, tail.size() + 1); i < tail.size(); ++i)
        both += tail[i];
    const size_t length = std::min(both.size(), maxSize);
    std::memcpy(out, both.data(), length);
    return length;
}
