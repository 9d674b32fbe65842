// The tokens of one line, as the interpreter cuts them.
//
// A line is what the interpreter takes at a time, with or without its end. Hex strings alone go over lines: whoever reads
// lines one after the other hands the state on.
#pragma once

#include <vx/Types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

enum class TokenKind : uint8_t {
    Integer,
    Fixed,
    String, // with its parentheses
    Name,   // with its "/" or "//"
    Operator,
    ArrayBegin,
    ArrayEnd,
    Brace, // opens or closes a procedure: means nothing
    HexBegin,
    HexData, // as much as stands together
    HexEnd,
    Comment,   // up to the line's end
    Malformed, // up to the line's end: the interpreter gives up here
    End,
};

struct Token {
    TokenKind kind = TokenKind::End;
    size_t begin = 0, end = 0; // in the line
};

class LineTokens
{
  public:
    // showsHidden: the setup section has not ended, and an operator behind "%_" counts.
    explicit LineTokens(std::string_view line, bool isInHex = false, bool showsHidden = false)
        : line_(line), isInHex_(isInHex), showsHidden_(showsHidden)
    {
    }

    Token Next();
    bool IsInHex() const { return isInHex_; }

  private:
    Token Take(TokenKind kind, size_t end);
    Token TakeRest(TokenKind kind) { return Take(kind, line_.size()); }
    Token TakeComment();
    Token TakeString();
    Token TakeHexData();
    Token TakeWord();
    size_t FindDelimiter(size_t from) const;

    std::string_view line_;
    size_t at_ = 0;
    bool isInHex_;
    bool showsHidden_;
};

bool IsTokenDelimiter(char character); // white space and ( ) < > [ ] { } / %
bool IsTokenSpace(char character);

// Each returns what the text is to the interpreter as a number; nullopt: it is none. An integer counts as a Fixed, shifted up, and wraps.
std::optional<int32_t> IntegerOfToken(std::string_view text);
std::optional<Fixed> FixedOfToken(std::string_view text);

// The bytes that a String token or a run of HexData means, escapes undone.
std::string StringBytes(std::string_view token);
std::string HexBytes(std::string_view token);

} // namespace vxhost
