// Writes markup to a sink through one buffer: what has been written is not kept.
//
// Nothing here knows which elements there are; a caller writes tags as they stand and only values through the methods
// that format or escape them.
#pragma once

#include "devices/vector/Numbers.h"
#include "host/ByteSink.h"
#include "host/drawing/Path.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace vxhost::svg
{

class XmlWriter
{
  public:
    explicit XmlWriter(ByteSink sink) : sink_(std::move(sink)) {}

    void Markup(std::string_view text)
    {
        if (text.size() > Room())
            return MarkupInParts(text);
        std::memcpy(at_, text.data(), text.size());
        at_ += text.size();
    }
    void Number(double value)
    {
        Reserve(kMaxNumber);
        at_ = WriteNumber(value, at_);
    }
    // Writes "x y", behind the letter `before` if there is one.
    void Coordinates(Point point, char before = 0)
    {
        Reserve(2 * kMaxNumber + 2);
        if (before != 0)
            *at_++ = before;
        at_ = WriteNumber(point.x, at_);
        *at_++ = ' ';
        at_ = WriteNumber(point.y, at_);
    }
    // " name="value"".
    void Attribute(std::string_view name, double value);
    void Attribute(std::string_view name, std::string_view value); // escaped
    // " transform="matrix(…)"".
    void Transform(const Matrix &matrix);

    // A character that XML does not allow becomes U+FFFD, as does what is not UTF-8.
    void Escaped(std::string_view utf8);
    void Character(char32_t character);
    void Base64(std::span<const std::byte> bytes);

    // From here on what is written is held back, until Release: something may be inserted. Returns the place, which is never 0.
    size_t Hold();
    // The place must be one that Hold returned, moved on by what has been inserted before it.
    void Insert(size_t place, std::string_view text);
    void Release();
    size_t HeldBytes() const { return held_.size(); }

    // Hands the rest over. Returns the failure if something could not be written.
    Failure Finish();

  private:
    size_t Room() const { return static_cast<size_t>(buffer_.data() + buffer_.size() - at_); }
    void Reserve(size_t bytes)
    {
        if (Room() < bytes)
            Flush();
    }
    void Flush();
    void MarkupInParts(std::string_view text);

    void HandOver(std::span<const char> text);

    ByteSink sink_;
    Failure failure_;
    bool isHolding_ = false;
    std::string held_; // comes before what is in the buffer
    std::array<char, size_t{1} << 16> buffer_;
    char *at_ = buffer_.data();
};

} // namespace vxhost::svg
