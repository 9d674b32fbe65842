// Knows what each operator wants, and says what it has instead.
//
// One table, for people: the plug-in decides what is malformed.
#pragma once

#include "host/reading/OperandStack.h"

#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

// Returns why an operator cannot have these operands; empty: nothing is wrong with them. Some operators are others in the
// setup section.
std::string ExplainOperands(std::string_view name, const OperandStack &stack, bool isInSetup);

// Returns why the interpreter gives up at a token that is no operator; empty: it need not.
std::string ExplainToken(const Token &token, std::string_view line, bool isInHex, const OperandStack &stack);

struct OperandRule {
    std::string_view name;
    std::string_view wants; // a letter an operand; "|" between two choices
};
std::span<const OperandRule> OperandRules(bool isInSetup);

} // namespace vxhost
