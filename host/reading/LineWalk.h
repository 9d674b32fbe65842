// The lines of a text, as the interpreter takes them: CR or LF ends one, each by itself, and its buffer cuts a longer one
// after every 499 bytes from its start.
#pragma once

#include <cstddef>
#include <string_view>

namespace vxhost
{

constexpr size_t kLineRoom = 499; // bytes of a line that the interpreter's buffer holds, its end included

constexpr bool IsLineEnd(char character)
{
    return character == '\r' || character == '\n';
}

// Returns where the line that starts there ends: at its line end, at the place where it is cut, or at the text's end.
size_t FindLineEnd(std::string_view text, size_t start);

// Returns where the last line end before that place ends, or least, if there is none behind it.
size_t FindLineStart(std::string_view text, size_t least, size_t before);

// Returns where the next line starts.
inline size_t FindNextLine(std::string_view text, size_t lineEnd)
{
    return lineEnd + (lineEnd < text.size() && IsLineEnd(text[lineEnd]) ? 1 : 0);
}

class LineWalk
{
  public:
    explicit LineWalk(std::string_view text, size_t start = 0) : text_(text), next_(start) {}

    // Goes to the next line; false at the text's end.
    bool Next()
    {
        if (next_ >= text_.size())
            return false;
        start_ = next_;
        end_ = FindLineEnd(text_, start_);
        next_ = FindNextLine(text_, end_);
        return true;
    }

    std::string_view Line() const { return text_.substr(start_, end_ - start_); } // without its end
    size_t Start() const { return start_; }
    size_t End() const { return end_; }
    size_t NextStart() const { return next_; }

  private:
    std::string_view text_;
    size_t start_ = 0, end_ = 0, next_;
};

} // namespace vxhost
