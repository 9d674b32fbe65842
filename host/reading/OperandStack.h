// The operands that wait for their operator, as the interpreter counts them, and where they stand. In the setup section it
// drops some of the "[", which are not dropped here.
#pragma once

#include "host/reading/Blanks.h"
#include "host/reading/LineTokens.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vxhost
{

enum class OperandKind : uint8_t {
    Integer,
    Fixed,
    String,
    Name,
    ImmediateName,
    Array,
    OpenArray, // a "[" whose "]" is still to come
    OpenHex,   // a "<" whose ">" is still to come
    HexData,
};

struct Operand {
    OperandKind kind = OperandKind::Integer;
    size_t elements = 0; // of an array
    bool hasOnlyNumbers = true;
};

class OperandStack
{
  public:
    static constexpr size_t kMost = 500; // brackets and elements of arrays count too

    // Takes a token of the line that starts there. An operator takes all operands away.
    void Take(const Token &token, std::string_view line, size_t lineStart);

    std::span<const Operand> Operands() const { return operands_; }
    bool HasOpen(OperandKind kind) const;
    bool IsFull() const { return taken_ >= kMost; }
    // Returns the ranges where the operands stand, one a line.
    std::span<const ByteRange> Places() const { return places_; }

  private:
    void Push(OperandKind kind);
    void EndArray();
    void EndHex();
    void Clear();

    std::vector<Operand> operands_;
    std::vector<ByteRange> places_;
    size_t placedLine_ = 0; // where the line of the last place starts
    size_t taken_ = 0;
};

} // namespace vxhost
