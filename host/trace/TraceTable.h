// The procedure table that records calls instead of drawing: each call becomes one sequence on a TraceWriter.
//
// Owns the table, which the plug-in may change during a parse, and what each entry is called. How a call looks
// is the writer's business.
#pragma once

#include <vx/Procs.h>
#include <vx/TextRecord.h>
#include <vx/Types.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

// Takes each finished line, without a line end.
struct LineSink {
    void (*line)(void *to, std::string_view text) = nullptr;
    void *to = nullptr;
};

// Builds one line: BeginCall, then the arguments in order, then EndCall.
class TraceWriter
{
  public:
    explicit TraceWriter(LineSink sink) : sink_(sink) {}
    TraceWriter(const TraceWriter &) = delete;
    TraceWriter &operator=(const TraceWriter &) = delete;
    virtual ~TraceWriter() = default;

    virtual void BeginCall(std::string_view name) = 0;
    virtual void AddFixed(Fixed value) = 0;
    virtual void AddInteger(int32_t value) = 0;
    virtual void AddList(std::span<const Fixed> values) = 0;
    virtual void AddText(std::string_view text) = 0;
    virtual void AddName(std::string_view utf8) = 0;
    virtual void AddRecord(const ZRKTextRecord &record) = 0;
    virtual void EndCall() = 0;

  protected:
    void EmitLine()
    {
        sink_.line(sink_.to, line_);
        line_.clear();
    }

    std::string line_; // keeps its storage from call to call

  private:
    LineSink sink_;
};

class TraceTable
{
  public:
    explicit TraceTable(TraceWriter *writer);
    TraceTable(const TraceTable &) = delete;
    TraceTable &operator=(const TraceTable &) = delete;

    // What a parse is given; both live as long as this object.
    ZRKProcs *Procs() { return &procs_; }
    void *Drawing() { return writer_; }

    void Report(int number);
    void Finish(int result); // the last line

  private:
    TraceWriter *writer_;
    ZRKProcs procs_;
};

// A record's text and a name, both cut at a bound: nonsense in a record costs no more than that.
std::string_view RecordText(const ZRKTextRecord &record);
std::string_view RecordName(const char *name);

} // namespace vxhost
