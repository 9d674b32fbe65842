#include "host/trace/TraceLines.h"

#include "host/drawing/FixedText.h"

namespace vxhost
{

void TraceLines::BeginCall(std::string_view name)
{
    line_ += name;
}

void TraceLines::AddFixed(Fixed value)
{
    line_ += ' ';
    AppendFixedText(&line_, value);
}

void TraceLines::AddInteger(int32_t value)
{
    line_ += ' ';
    line_ += std::to_string(value);
}

void TraceLines::AddList(std::span<const Fixed> values)
{
    line_ += " [";
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            line_ += ' ';
        AppendFixedText(&line_, values[i]);
    }
    line_ += ']';
}

void TraceLines::AddText(std::string_view text)
{
    line_ += ' ';
    AppendEscaped(text);
}

// In parentheses, since a name may have blanks. It is UTF-8, of which nothing but ASCII is escaped.
void TraceLines::AddName(std::string_view utf8)
{
    line_ += " (";
    for (const char character : utf8) {
        if (static_cast<uint8_t>(character) < 0x80)
            AppendEscaped({&character, 1});
        else
            line_ += character;
    }
    line_ += ')';
}

void TraceLines::AddRecord(const ZRKTextRecord &record)
{
    line_ += " |";
    AddText(RecordName(record.fontName));
    if (record.styleName != nullptr) {
        line_ += " style";
        AddText(RecordName(record.styleName));
    }
    const Fixed glyphMatrix[] = {record.a, record.b, record.c, record.d};
    AddList(glyphMatrix);
    AddFixed(record.x);
    AddFixed(record.y);
    line_ += " placement";
    AddInteger(record.placement);
    if (record.spacing != nullptr) {
        line_ += " spacing";
        AddInteger(record.spacingKind);
        const Fixed vectors[] = {record.spacing[0].x, record.spacing[0].y, record.spacing[1].x,
                                 record.spacing[1].y};
        AddList(vectors);
    }
    line_ += " (";
    AppendEscaped(RecordText(record));
    line_ += ')';
}

void TraceLines::EndCall()
{
    EmitLine();
}

void TraceLines::AppendEscaped(std::string_view text)
{
    for (const char character : text) {
        const auto byte = static_cast<uint8_t>(character);
        if (byte >= 0x20 && byte <= 0x7E && byte != '(' && byte != ')' && byte != '\\') {
            line_ += character;
            continue;
        }
        line_ += '\\';
        for (const int shift : {6, 3, 0})
            line_ += static_cast<char>('0' + ((byte >> shift) & 7));
    }
}

} // namespace vxhost
