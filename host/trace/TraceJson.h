// The trace as JSON lines: {"call":"moveto","args":[1,2.5]}.
//
// A list is an array. A text record is an object; its "font", "style" and "text" hold one character from U+0000
// to U+00FF for each byte, so that a program gets the document's own bytes back.
#pragma once

#include "host/trace/TraceTable.h"

namespace vxhost
{

class TraceJson final : public TraceWriter
{
  public:
    using TraceWriter::TraceWriter;

    void BeginCall(std::string_view name) override;
    void AddFixed(Fixed value) override;
    void AddInteger(int32_t value) override;
    void AddList(std::span<const Fixed> values) override;
    void AddText(std::string_view text) override;
    void AddName(std::string_view utf8) override;
    void AddRecord(const ZRKTextRecord &record) override;
    void EndCall() override;

  private:
    void NextArgument();
    void AppendNumbers(std::span<const Fixed> values);
    void AppendString(std::string_view bytes);
};

} // namespace vxhost
