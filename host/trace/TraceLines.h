// The trace as plain text: one call a line, the name first, then its arguments with a blank between them.
//
//   curveto 1 2 3.5 4 5 -0.33333
//   setdash 0 [3 1.5]
//   show 0 | Helvetica [12 0 0 -12] 72 700 placement 1 (Sch\366n)
//
// Numbers are the shortest decimals that give the same 16.16 number.
#pragma once

#include "host/trace/TraceTable.h"

namespace vxhost
{

class TraceLines final : public TraceWriter
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
    void AppendEscaped(std::string_view text);
};

} // namespace vxhost
