#include "devices/svg/XmlWriter.h"

#include "devices/vector/XmlText.h"
#include "host/reading/Utf8.h"

#include <algorithm>

namespace vxhost::svg
{

void XmlWriter::HandOver(std::span<const char> text)
{
    if (!failure_ && !text.empty())
        failure_ = sink_(std::as_bytes(text));
}

void XmlWriter::Flush()
{
    if (isHolding_)
        held_.append(buffer_.data(), at_);
    else
        HandOver({buffer_.data(), at_});
    at_ = buffer_.data();
}

size_t XmlWriter::Hold()
{
    isHolding_ = true;
    return held_.size() + static_cast<size_t>(at_ - buffer_.data()) + 1;
}

void XmlWriter::Insert(size_t place, std::string_view text)
{
    const size_t at = place - 1;
    if (at >= held_.size() && text.size() <= Room()) {
        char *to = buffer_.data() + (at - held_.size());
        std::copy_backward(to, at_, at_ + text.size());
        std::ranges::copy(text, to);
        at_ += text.size();
        return;
    }
    Flush();
    held_.insert(at, text);
}

void XmlWriter::Release()
{
    isHolding_ = false;
    HandOver(held_);
    held_.clear();
}

void XmlWriter::MarkupInParts(std::string_view text)
{
    while (!text.empty()) {
        Reserve(1);
        const std::string_view part = text.substr(0, std::min(text.size(), Room()));
        Markup(part);
        text.remove_prefix(part.size());
    }
}

void XmlWriter::Attribute(std::string_view name, double value)
{
    Markup(" ");
    Markup(name);
    Markup("=\"");
    Number(value);
    Markup("\"");
}

void XmlWriter::Attribute(std::string_view name, std::string_view value)
{
    Markup(" ");
    Markup(name);
    Markup("=\"");
    Escaped(value);
    Markup("\"");
}

void XmlWriter::Transform(const Matrix &matrix)
{
    Markup(" transform=\"matrix(");
    for (const double factor : {matrix.a, matrix.b, matrix.c, matrix.d}) {
        Reserve(kMaxNumber + 1);
        at_ = WriteFactor(factor, at_);
        *at_++ = ' ';
    }
    Coordinates({matrix.tx, matrix.ty});
    Markup(")\"");
}

void XmlWriter::Escaped(std::string_view utf8)
{
    while (!utf8.empty())
        Character(TakeCharacter(&utf8));
}

void XmlWriter::Character(char32_t character)
{
    Reserve(kMaxXmlCharacter);
    at_ += WriteXmlCharacter(character, at_);
}

void XmlWriter::Base64(std::span<const std::byte> bytes)
{
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t three = 0;
        for (size_t k = 0; k < 3; ++k)
            three = three << 8 | (k < count ? std::to_integer<uint32_t>(bytes[i + k]) : 0);
        Reserve(4);
        for (size_t k = 0; k < 4; ++k)
            *at_++ = k <= count ? kDigits[three >> (18 - 6 * k) & 0x3F] : '=';
    }
}

Failure XmlWriter::Finish()
{
    Release();
    Flush();
    return failure_;
}

} // namespace vxhost::svg
