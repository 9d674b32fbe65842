#include "host/reading/OperandRules.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kMostElements = 256;

// n a number, i a whole one, s a string, l a name, a an array of numbers, v any array, ? anything.
// "*" before them: others may lie below, and are not looked at. "~": if there are more or fewer, nothing happens.
// An operator that is not here takes whatever there is.
constexpr OperandRule kRules[] = {
    {"m", "nn"},        {"l", "nn"},
    {"L", "nn"},        {"c", "nnnnnn"},
    {"C", "nnnnnn"},    {"v", "nnnn"},
    {"V", "nnnn"},      {"y", "nnnn"},
    {"Y", "nnnn"},      {"h", ""},
    {"H", ""},          {"U", ""},
    {"u", ""},          {"N", ""},
    {"n", ""},          {"f", ""}, // in a gradient instance it takes whatever there is
    {"F", ""},          {"s", ""},
    {"S", ""},          {"b", ""},
    {"B", ""},          {"W", ""},
    {"q", ""},          {"Q", ""},
    {"*u", ""},         {"*U", ""},
    {"*w", ""},         {"*W", ""},
    {"w", "~n"},        {"j", "i"},
    {"J", "i"},         {"M", "n"},
    {"d", "an"},        {"A", "?"},
    {"D", "?"},         {"i", "?"},
    {"g", "n"},         {"G", "n"},
    {"k", "nnnn"},      {"K", "nnnn"},
    {"x", "nnnnsn"},    {"X", "nnnnsn"},
    {"O", "i"},         {"R", "i"},
    {"Lb", "*innnnnn"}, {"To", "i"},
    {"Tp", "nnnnnnn"},  {"Tf", "ln|lnnn"},
    {"Tx", "s|sn"},     {"Tj", "s|sn"},
    {"TS", "s|sn"},     {"T~", "s|sn"},
    {"Tc", "n"},        {"Tw", "n"},
    {"Ts", "n"},        {"Tk", "in"},
    {"Tt", "*n"},       {"Tz", "n|nn"},
    {"Tl", "nn"},       {"Ta", "i"},
    {"TA", "n"},        {"Tr", "i"},
    {"Tm", "nnnnnn"},   {"Td", "nn"},
    {"TR", "nnnnnn"},   {"TZ", "*lliii|*lliiiv"},
    {"Tv", "i"},        {"TV", "i"},
    {"Ty", "i"},        {"z", "lnnni"},
    {"BB", "i"},        {"Bg", "isnnnnnnnnnn"},
    {"Bc", "nnnnnn"}, // before "Bg" any six will do
    {"Bm", "nnnnnn"}, // as well
    {"Bh", "nnnn"},
};

// Of gradients, the setup section has these and none of the others.
constexpr OperandRule kSetupRules[] = {
    {"Bd", "sii"}, {"Bs", "*inn"}, // what lies below is its colour, and may be wrong
};

// One of the choices of a rule.
struct Choice {
    std::string_view wants;
    bool isLoose = false; // others may lie below
};

bool MayHave(char wanted, const Operand &operand)
{
    switch (wanted) {
    case 'n':
        return operand.kind == OperandKind::Integer || operand.kind == OperandKind::Fixed;
    case 'i':
        return operand.kind == OperandKind::Integer;
    case 's':
        return operand.kind == OperandKind::String;
    case 'l':
        return operand.kind == OperandKind::Name;
    case 'a':
        return operand.kind == OperandKind::Array && operand.hasOnlyNumbers &&
               operand.elements <= kMostElements;
    case 'v':
        return operand.kind == OperandKind::Array;
    default:
        return true;
    }
}

std::string_view NameOfWanted(char wanted)
{
    switch (wanted) {
    case 'n':
        return "number";
    case 'i':
        return "whole number";
    case 's':
        return "string";
    case 'l':
        return "name";
    case 'a':
    case 'v':
        return "array";
    default:
        return "operand";
    }
}

std::string DescribeOperand(const Operand &operand)
{
    switch (operand.kind) {
    case OperandKind::Integer:
        return "a whole number";
    case OperandKind::Fixed:
        return "a number with a fraction";
    case OperandKind::String:
        return "a string";
    case OperandKind::Name:
        return "a name";
    case OperandKind::ImmediateName:
        return "a name behind \"//\"";
    case OperandKind::Array:
        return !operand.hasOnlyNumbers ? "an array that has other things than numbers"
                                       : "an array of " + std::to_string(operand.elements) +
                                             " numbers, and may have " + std::to_string(kMostElements);
    default:
        return "hex data";
    }
}

// Returns "4 numbers, 1 string and 1 number".
std::string DescribeWanted(const Choice &choice)
{
    std::vector<std::string> parts;
    for (size_t at = 0; at < choice.wants.size();) {
        const char wanted = choice.wants[at];
        const size_t end = std::min(choice.wants.find_first_not_of(wanted, at), choice.wants.size());
        std::string part = std::to_string(end - at);
        part.append(" ").append(NameOfWanted(wanted)).append(end - at == 1 ? "" : "s");
        parts.push_back(part);
        at = end;
    }
    std::string text = choice.isLoose ? "at least " : parts.empty() ? "no operands" : "";
    for (size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return text;
}

std::vector<Choice> ChoicesOf(std::string_view wants)
{
    std::vector<Choice> choices;
    for (bool isLast = false; !isLast;) {
        const size_t end = std::min(wants.find('|'), wants.size());
        isLast = end == wants.size();
        const bool isLoose = wants.starts_with('*');
        choices.push_back({wants.substr(isLoose ? 1 : 0, end - (isLoose ? 1 : 0)), isLoose});
        wants.remove_prefix(isLast ? end : end + 1);
    }
    return choices;
}

bool HasCount(const Choice &choice, std::span<const Operand> operands)
{
    return choice.isLoose ? operands.size() >= choice.wants.size() : operands.size() == choice.wants.size();
}

// Returns the first operand that the choice cannot have; none: it has what it wants.
size_t FindWrong(const Choice &choice, std::span<const Operand> operands)
{
    for (size_t i = 0; i < choice.wants.size(); ++i) {
        const size_t at = operands.size() - choice.wants.size() + i;
        if (!MayHave(choice.wants[i], operands[at]))
            return at;
    }
    return std::string_view::npos;
}

std::string ExplainRule(std::string_view wants, std::span<const Operand> operands)
{
    const bool isLenient = wants.starts_with('~');
    const std::vector<Choice> choices = ChoicesOf(wants.substr(isLenient ? 1 : 0));
    std::string wanted, wrong;
    for (const Choice &choice : choices) {
        wanted += (wanted.empty() ? "" : ", or ") + DescribeWanted(choice);
        if (!HasCount(choice, operands))
            continue;
        const size_t at = FindWrong(choice, operands);
        if (at == std::string_view::npos)
            return "";
        wrong = std::string(", but operand ").append(std::to_string(at + 1)) + " is " +
                DescribeOperand(operands[at]);
    }
    if (wrong.empty() && isLenient)
        return "";
    if (wrong.empty())
        wrong = std::string(", has ").append(operands.empty() ? "none" : std::to_string(operands.size()));
    return " wants " + wanted + wrong;
}

} // namespace

std::span<const OperandRule> OperandRules(bool isInSetup)
{
    return isInSetup ? std::span<const OperandRule>(kSetupRules) : kRules;
}

std::string ExplainOperands(std::string_view name, const OperandStack &stack, bool isInSetup)
{
    const std::string quoted = std::string("\"").append(name).append("\"");
    const auto find = [name](std::span<const OperandRule> rules) {
        const auto found = std::ranges::find(rules, name, &OperandRule::name);
        return found == rules.end() ? nullptr : &*found;
    };
    const OperandRule *rule =
        isInSetup && name.starts_with('B') && name.size() == 2 ? find(kSetupRules) : find(kRules);
    if (rule == nullptr)
        return "";
    const std::string why = ExplainRule(rule->wants, stack.Operands());
    if (why.empty() || !stack.HasOpen(OperandKind::OpenArray))
        return why.empty() ? "" : quoted + why;
    // The setup section may have a "[" that the interpreter drops.
    return isInSetup ? "" : quoted + " stands behind a \"[\" that no \"]\" ends";
}

std::string ExplainToken(const Token &token, std::string_view line, bool isInHex, const OperandStack &stack)
{
    switch (token.kind) {
    case TokenKind::ArrayEnd:
        return stack.HasOpen(OperandKind::OpenArray) ? "" : "\"]\" without \"[\"";
    case TokenKind::Malformed:
        break;
    default:
        return stack.IsFull() ? "more than " + std::to_string(OperandStack::kMost) + " operands" : "";
    }
    const char first = line[token.begin];
    if (first == '(')
        return "a string without its \")\" on the same line";
    if (first == ')')
        return "\")\" without \"(\"";
    if (first == '>')
        return "\">\" without \"<\"";
    if (first == '<')
        return "\"<\" inside of hex data";
    if (!isInHex)
        return "";
    return std::isxdigit(static_cast<unsigned char>(first)) != 0
               ? "hex data with half a byte"
               : "a character in hex data that is no hex digit";
}

} // namespace vxhost
