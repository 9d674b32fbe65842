#include "cli/options/JsonMembers.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace vxhost
{

namespace
{

// Goes through a text. Every Pass and Take returns whether it found what it is for; if not, At says where that showed.
class Scanner
{
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    size_t At() const { return at_; }
    bool IsAtEnd() const { return at_ == text_.size(); }

    void SkipSpace()
    {
        while (!IsAtEnd() && (text_[at_] == ' ' || text_[at_] == '\t'))
            ++at_;
    }

    // Takes the character, and the space before it.
    bool Take(char wanted)
    {
        SkipSpace();
        return TakeNow(wanted);
    }

    bool TakeKey(std::string_view *key)
    {
        SkipSpace();
        const size_t start = at_;
        const bool isString = PassString();
        *key = text_.substr(start, at_ - start);
        return isString && Take(':');
    }

    // Passes over one value, with all that is nested in it.
    bool PassValue()
    {
        std::string ends; // the brackets that close what is open, the innermost last
        std::string_view key;
        while (true) {
            if (Take('{')) {
                if (!Take('}')) {
                    ends += '}';
                    if (!TakeKey(&key))
                        return false;
                    continue;
                }
            } else if (Take('[')) {
                if (!Take(']')) {
                    ends += ']';
                    continue;
                }
            } else if (!PassScalar()) {
                return false;
            }
            while (!ends.empty() && Take(ends.back()))
                ends.pop_back();
            if (ends.empty())
                return true;
            if (!Take(',') || (ends.back() == '}' && !TakeKey(&key)))
                return false;
        }
    }

  private:
    bool TakeNow(char wanted)
    {
        const bool isThere = !IsAtEnd() && text_[at_] == wanted;
        at_ += isThere ? 1 : 0;
        return isThere;
    }

    bool PassScalar()
    {
        for (const std::string_view word : {"true", "false", "null"}) {
            if (text_.substr(at_).starts_with(word)) {
                at_ += word.size();
                return true;
            }
        }
        return !IsAtEnd() && text_[at_] == '"' ? PassString() : PassNumber();
    }

    // Finds the end; which characters and escapes may stand in a string, the JSON library knows.
    bool PassString()
    {
        const size_t start = at_;
        if (!TakeNow('"'))
            return false;
        while (!IsAtEnd() && text_[at_] != '"')
            at_ += text_[at_] == '\\' && at_ + 1 < text_.size() ? 2 : 1;
        if (TakeNow('"') && nlohmann::json::accept(text_.substr(start, at_ - start)))
            return true;
        at_ = start;
        return false;
    }

    bool PassNumber()
    {
        (void)TakeNow('-'); // a sign may be there
        if (!TakeNow('0') && !PassDigits())
            return false;
        if (TakeNow('.') && !PassDigits())
            return false;
        if (!TakeNow('e') && !TakeNow('E'))
            return true;
        (void)(TakeNow('+') || TakeNow('-'));
        return PassDigits();
    }

    bool PassDigits()
    {
        const size_t start = at_;
        while (!IsAtEnd() && text_[at_] >= '0' && text_[at_] <= '9')
            ++at_;
        return at_ > start;
    }

    std::string_view text_;
    size_t at_ = 0;
};

bool TakeMembers(Scanner *scanner, std::string_view text, std::vector<JsonMember> *members)
{
    if (!scanner->Take('{'))
        return false;
    if (scanner->Take('}'))
        return true;
    do {
        std::string_view key;
        if (!scanner->TakeKey(&key))
            return false;
        scanner->SkipSpace();
        const size_t start = scanner->At();
        if (!scanner->PassValue())
            return false;
        members->push_back(
            {nlohmann::json::parse(key).get<std::string>(), text.substr(start, scanner->At() - start)});
    } while (scanner->Take(','));
    return scanner->Take('}');
}

} // namespace

std::optional<std::vector<JsonMember>> ReadJsonMembers(std::string_view text, size_t *badByte)
{
    Scanner scanner(text);
    std::vector<JsonMember> members;
    const bool isObject = TakeMembers(&scanner, text, &members);
    scanner.SkipSpace();
    if (isObject && scanner.IsAtEnd())
        return members;
    *badByte = scanner.At() + 1;
    return std::nullopt;
}

} // namespace vxhost
