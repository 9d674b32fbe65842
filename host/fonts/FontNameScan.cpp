#include "host/fonts/FontNameScan.h"

#include <algorithm>
#include <charconv>

namespace vxhost
{

namespace
{

constexpr size_t kMaxNameLength = 80; // the plug-in's buffer holds no more
constexpr size_t kMaxReach = 16384;   // bytes from a name to its operator: an encoding may stand between
constexpr std::string_view kBlanks = {" \t\r\n\f\0", 6};
constexpr std::string_view kDelimiters = {" \t\r\n\f\0()[]{}/%", 14};

// What stands between the first literal name and the operator.
struct Operands {
    std::string_view firstName;
    std::string_view lastName;
    std::vector<int> numbers;
    std::string_view operation;
};

std::string_view TakeToken(std::string_view *text)
{
    const size_t length = std::min(text->find_first_of(kDelimiters), text->size());
    const std::string_view token = text->substr(0, length);
    text->remove_prefix(length);
    return token;
}

// text starts with "/". False when what follows is not operands and an operator.
bool ReadOperands(std::string_view *text, Operands *operands)
{
    constexpr size_t kMostNumbers = 8;
    int depth = 0;
    while (true) {
        text->remove_prefix(std::min(text->find_first_not_of(kBlanks), text->size()));
        if (text->empty())
            return false;
        const char character = text->front();
        if (character == '[' || character == ']') {
            depth += character == '[' ? 1 : -1;
            text->remove_prefix(1);
        } else if (character == '/') {
            text->remove_prefix(1);
            const std::string_view name = TakeToken(text);
            if (depth > 0)
                continue; // a glyph's name in an encoding
            operands->firstName = operands->lastName.empty() ? name : operands->lastName;
            operands->lastName = name;
        } else if (kDelimiters.find(character) != std::string_view::npos) {
            return false;
        } else {
            const std::string_view token = TakeToken(text);
            int number = 0;
            const char first = token.front();
            if ((first >= '0' && first <= '9') || first == '-' || first == '+' || first == '.') {
                (void)std::from_chars(token.data(), token.data() + token.size(), number); // 0 will do
                if (depth == 0 && operands->numbers.size() < kMostNumbers)
                    operands->numbers.push_back(number);
            } else {
                operands->operation = token;
                return depth == 0;
            }
        }
    }
}

void AddReencoded(const Operands &operands, std::vector<AskedFont> *fonts)
{
    std::string_view name = operands.firstName;
    if (name.starts_with('_'))
        name.remove_prefix(1);
    AskedFont *font = AddAskedFont(name, fonts);
    if (font == nullptr)
        return;
    font->isReencoded = true;
    constexpr size_t kScriptPlace = 1;
    constexpr int kScripts = 4;
    if (operands.numbers.size() > kScriptPlace && operands.numbers[kScriptPlace] >= 0 &&
        operands.numbers[kScriptPlace] < kScripts)
        font->script = static_cast<Script>(operands.numbers[kScriptPlace]);
}

} // namespace

AskedFont *AddAskedFont(std::string_view name, std::vector<AskedFont> *fonts)
{
    name = name.substr(0, std::min(name.find('\0'), kMaxNameLength));
    if (name.empty())
        return nullptr;
    const auto found = std::ranges::find(*fonts, name, &AskedFont::name);
    if (found != fonts->end())
        return &*found;
    if (fonts->size() == kMaxAskedFonts)
        return nullptr;
    fonts->push_back({std::string(name), false, {}});
    return &fonts->back();
}

std::vector<AskedFont> ScanFontNames(const Document &document)
{
    std::vector<AskedFont> fonts;
    const std::span<const std::byte> bytes = document.Bytes();
    std::string_view rest(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    size_t left = 0;
    while (!rest.empty()) {
        if (const size_t read = bytes.size() - rest.size(); read - left >= Document::kReadAtOnce) {
            document.Leave(left, read);
            left = read;
        }
        const std::string_view next = rest.substr(0, Document::kReadAtOnce);
        const size_t slash = next.find('/');
        rest.remove_prefix(std::min(slash, next.size()));
        if (slash == std::string_view::npos)
            continue;
        std::string_view reach = rest.substr(0, kMaxReach);
        Operands operands;
        const bool isWhole = ReadOperands(&reach, &operands);
        rest.remove_prefix(static_cast<size_t>(reach.data() - rest.data()));
        if (!isWhole)
            continue;
        if (operands.operation == "TZ")
            AddReencoded(operands, &fonts);
        else if ((operands.operation == "Tf" || operands.operation == "z") && !operands.lastName.empty())
            (void)AddAskedFont(operands.lastName.substr(1), &fonts); // a full list takes no more
    }
    return fonts;
}

} // namespace vxhost
