#include "bench/TokenLoop.h"

#include <charconv>
#include <cstring>

namespace vxbench
{

namespace
{

bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int64_t SumOfLine(const char *text, const char *end)
{
    int64_t sum = 0;
    while (text < end) {
        if (IsSpace(*text)) {
            ++text;
            continue;
        }
        const char *word = text;
        while (text < end && !IsSpace(*text))
            ++text;
        double value;
        const auto [stop, error] = std::from_chars(word, text, value, std::chars_format::fixed);
        if (error == std::errc() && stop == text)
            // The sum only keeps the loop alive. NOLINTNEXTLINE(bugprone-incorrect-roundings)
            sum += static_cast<int64_t>(value * 65536.0 + 0.5);
    }
    return sum;
}

} // namespace

int64_t SumOfTokens(std::string_view text)
{
    int64_t sum = 0;
    const char *line = text.data();
    const char *end = line + text.size();
    while (line < end) {
        const auto *lineEnd = static_cast<const char *>(memchr(line, '\n', static_cast<size_t>(end - line)));
        if (lineEnd == nullptr)
            lineEnd = end;
        sum += SumOfLine(line, lineEnd);
        line = lineEnd + 1;
    }
    return sum;
}

} // namespace vxbench
