#include "host/trace/TraceJson.h"

#include "host/JsonText.h"
#include "host/drawing/FixedText.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

void TraceJson::BeginCall(std::string_view name)
{
    line_ += "{\"call\":\"";
    line_ += name;
    line_ += "\",\"args\":[";
}

void TraceJson::NextArgument()
{
    if (line_.back() != '[')
        line_ += ',';
}

void TraceJson::AddFixed(Fixed value)
{
    NextArgument();
    AppendFixedText(&line_, value);
}

void TraceJson::AddInteger(int32_t value)
{
    NextArgument();
    line_ += std::to_string(value);
}

void TraceJson::AddList(std::span<const Fixed> values)
{
    NextArgument();
    AppendNumbers(values);
}

void TraceJson::AddText(std::string_view text)
{
    NextArgument();
    AppendString(text);
}

void TraceJson::AddName(std::string_view utf8)
{
    NextArgument();
    line_ += EscapeControls(nlohmann::json(utf8).dump());
}

void TraceJson::AddRecord(const ZRKTextRecord &record)
{
    NextArgument();
    line_ += "{\"font\":";
    AppendString(RecordName(record.fontName));
    if (record.styleName != nullptr) {
        line_ += ",\"style\":";
        AppendString(RecordName(record.styleName));
    }
    line_ += ",\"matrix\":";
    const Fixed glyphMatrix[] = {record.a, record.b, record.c, record.d};
    AppendNumbers(glyphMatrix);
    line_ += ",\"position\":";
    const Fixed position[] = {record.x, record.y};
    AppendNumbers(position);
    line_ += ",\"placement\":";
    line_ += std::to_string(record.placement);
    if (record.spacing != nullptr) {
        line_ += ",\"spacingKind\":";
        line_ += std::to_string(record.spacingKind);
        line_ += ",\"spacing\":";
        const Fixed vectors[] = {record.spacing[0].x, record.spacing[0].y, record.spacing[1].x,
                                 record.spacing[1].y};
        AppendNumbers(vectors);
    }
    line_ += ",\"text\":";
    AppendString(RecordText(record));
    line_ += '}';
}

void TraceJson::EndCall()
{
    line_ += "]}";
    EmitLine();
}

void TraceJson::AppendNumbers(std::span<const Fixed> values)
{
    line_ += '[';
    for (const Fixed value : values)
        AddFixed(value);
    line_ += ']';
}

void TraceJson::AppendString(std::string_view bytes)
{
    std::string utf8;
    for (const char character : bytes) {
        const auto byte = static_cast<uint8_t>(character);
        if (byte < 0x80) {
            utf8 += character;
            continue;
        }
        utf8 += static_cast<char>(0xC0 | (byte >> 6));
        utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
    line_ += EscapeControls(nlohmann::json(utf8).dump());
}

} // namespace vxhost
