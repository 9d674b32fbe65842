#include "devices/pdf/PdfText.h"

#include <algorithm>
#include <charconv>

namespace vxhost::pdf
{

namespace
{

constexpr std::string_view kWhite(" \n\r\t\f\0", 6), kDelimiters = "()<>[]{}/%";
constexpr std::string_view kReference = " 0 R";
constexpr size_t kMostNesting = 200;

bool IsRegular(char character)
{
    return kWhite.find(character) == std::string_view::npos &&
           kDelimiters.find(character) == std::string_view::npos;
}

// Returns the length of a string in parentheses; npos: it does not end.
size_t LengthOfString(std::string_view text)
{
    size_t depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '(')
            ++depth;
        else if (text[i] == ')' && --depth == 0)
            return i + 1;
    }
    return std::string_view::npos;
}

size_t LengthOfWord(std::string_view text, size_t from)
{
    while (from < text.size() && IsRegular(text[from]))
        ++from;
    return from;
}

// Returns the length of the token that the text begins with; npos: none does. A reference is one.
size_t LengthOfToken(std::string_view text)
{
    if (text.empty())
        return std::string_view::npos;
    if (text.starts_with("<<") || text.starts_with(">>"))
        return 2;
    switch (text[0]) {
    case '(':
        return LengthOfString(text);
    case '<': {
        const size_t end = text.find('>');
        return end == std::string_view::npos ? end : end + 1;
    }
    case '[':
    case ']':
        return 1;
    case '/':
        return LengthOfWord(text, 1);
    default:
        break;
    }
    const size_t length = LengthOfWord(text, 0);
    if (length == 0)
        return std::string_view::npos;
    const bool isNumber = std::all_of(text.begin(), text.begin() + static_cast<ptrdiff_t>(length),
                                      [](char character) { return character >= '0' && character <= '9'; });
    const std::string_view rest = text.substr(length);
    const bool isReference = isNumber && rest.starts_with(kReference) &&
                             (rest.size() == kReference.size() || !IsRegular(rest[kReference.size()]));
    return isReference ? length + kReference.size() : length;
}

void SkipWhite(std::string_view *text)
{
    text->remove_prefix(std::min(text->find_first_not_of(kWhite), text->size()));
}

// Calls use(token, white space before it) for each token of a value, and takes it off the text. False: there is no whole value.
template <class Use>
bool TakeTokens(std::string_view *text, const Use &use)
{
    std::string open; // '[' and '<', the innermost last
    do {
        const std::string_view before = *text;
        SkipWhite(text);
        const size_t length = LengthOfToken(*text);
        if (length == std::string_view::npos)
            return false;
        const std::string_view token = text->substr(0, length);
        text->remove_prefix(length);
        use(token, before.substr(0, before.size() - text->size() - length));
        if (token == "[" || token == "<<")
            open += token[0];
        if (token == "]" || token == ">>") {
            if (open.empty() || open.back() != (token == "]" ? '[' : '<'))
                return false;
            open.pop_back();
        }
    } while (!open.empty() && open.size() <= kMostNesting);
    return open.empty();
}

} // namespace

std::optional<std::string_view> TakeValue(std::string_view *text)
{
    SkipWhite(text);
    const std::string_view from = *text;
    if (!TakeTokens(text, [](std::string_view, std::string_view) {}))
        return std::nullopt;
    return from.substr(0, from.size() - text->size());
}

std::optional<Entries> EntriesOf(std::string_view dictionary)
{
    if (!dictionary.starts_with("<<") || !dictionary.ends_with(">>") || dictionary.size() < 4)
        return std::nullopt;
    std::string_view inside = dictionary.substr(2, dictionary.size() - 4);
    Entries entries;
    for (SkipWhite(&inside); !inside.empty(); SkipWhite(&inside)) {
        const std::optional<std::string_view> key = TakeValue(&inside);
        const std::optional<std::string_view> value = key ? TakeValue(&inside) : std::nullopt;
        if (!value || !key->starts_with('/'))
            return std::nullopt;
        entries.emplace_back(*key, *value);
    }
    return entries;
}

std::string_view ValueOf(const Entries &entries, std::string_view key)
{
    const auto found =
        std::ranges::find_if(entries, [&](const auto &entry) { return entry.first.substr(1) == key; });
    return found == entries.end() ? std::string_view() : found->second;
}

uint32_t ReferredTo(std::string_view value)
{
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    const auto digits = static_cast<size_t>(end - value.data());
    return error == std::errc() && value.substr(digits) == kReference ? number : 0;
}

std::optional<std::string> Renumbered(std::string_view value, const MapNumber &map)
{
    std::string renumbered;
    bool isMapped = true;
    const bool isWhole = TakeTokens(&value, [&](std::string_view token, std::string_view white) {
        renumbered += white;
        const uint32_t number = ReferredTo(token);
        const std::optional<Reference> reference = number > 0 ? map(number) : std::nullopt;
        isMapped = isMapped && (number == 0 || reference);
        renumbered += reference ? ValueOf(*reference) : std::string(token);
    });
    return isWhole && isMapped && value.empty() ? std::optional(std::move(renumbered)) : std::nullopt;
}

} // namespace vxhost::pdf
