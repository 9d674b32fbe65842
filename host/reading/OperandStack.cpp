#include "host/reading/OperandStack.h"

#include <algorithm>

namespace vxhost
{

namespace
{

bool IsNumber(const Operand &operand)
{
    return operand.kind == OperandKind::Integer || operand.kind == OperandKind::Fixed;
}

} // namespace

void OperandStack::Take(const Token &token, std::string_view line, size_t lineStart)
{
    const std::string_view text = line.substr(token.begin, token.end - token.begin);
    switch (token.kind) {
    case TokenKind::Integer:
        Push(OperandKind::Integer);
        break;
    case TokenKind::Fixed:
        Push(OperandKind::Fixed);
        break;
    case TokenKind::String:
        Push(OperandKind::String);
        break;
    case TokenKind::Name:
        Push(text.starts_with("//") ? OperandKind::ImmediateName : OperandKind::Name);
        break;
    case TokenKind::ArrayBegin:
        Push(OperandKind::OpenArray);
        break;
    case TokenKind::ArrayEnd:
        EndArray();
        break;
    case TokenKind::HexBegin:
        Push(OperandKind::OpenHex);
        break;
    case TokenKind::HexData:
        Push(OperandKind::HexData);
        break;
    case TokenKind::HexEnd:
        EndHex();
        break;
    case TokenKind::Operator:
        Clear();
        return;
    default:
        return;
    }
    if (places_.empty() || placedLine_ != lineStart)
        places_.push_back({lineStart + token.begin, 0});
    placedLine_ = lineStart;
    places_.back().end = lineStart + token.end;
}

bool OperandStack::HasOpen(OperandKind kind) const
{
    return std::ranges::any_of(operands_, [kind](const Operand &operand) { return operand.kind == kind; });
}

void OperandStack::Push(OperandKind kind)
{
    // The interpreter gives up at the first that is too many.
    if (taken_++ < kMost)
        operands_.push_back({kind});
}

void OperandStack::EndArray()
{
    Operand array = {OperandKind::Array};
    for (; !operands_.empty() && operands_.back().kind != OperandKind::OpenArray; operands_.pop_back()) {
        ++array.elements;
        array.hasOnlyNumbers = array.hasOnlyNumbers && IsNumber(operands_.back());
    }
    if (!operands_.empty())
        operands_.back() = array;
}

void OperandStack::EndHex()
{
    while (!operands_.empty() && operands_.back().kind == OperandKind::HexData)
        operands_.pop_back();
    if (!operands_.empty())
        operands_.back() = {OperandKind::String};
}

void OperandStack::Clear()
{
    operands_.clear();
    places_.clear();
    taken_ = 0;
}

} // namespace vxhost
