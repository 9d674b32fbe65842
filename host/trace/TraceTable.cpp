#include "host/trace/TraceTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace vxhost
{

namespace
{

constexpr int32_t kMaxDashValues = 4096;
constexpr int32_t kMaxTextLength = 0xFFFF;
constexpr size_t kMaxNameLength = 255;

constexpr const char *kEntryNames[kZRKProcCount] = {
    "newpath",    "moveto",      "entry2",        "lineto",       "curveto",      "curveto-from-current",
    "closepath",  "clip",        "entry8",        "entry9",       "gsave",        "grestore",
    "translate",  "entry13",     "concat",        "entry15",      "setlinewidth", "setdash",
    "setlinecap", "setlinejoin", "setmiterlimit", "entry21",      "setgray",      "entry23",
    "entry24",    "entry25",     "entry26",       "setcmykcolor", "entry28",      "entry29",
    "entry30",    "entry31",     "entry32",       "setoverprint", "entry34",      "entry35",
    "fill",       "entry37",     "stroke",        "image",        "show",         "comment",
};

TraceWriter &Begin(void *drawing, int entry)
{
    auto &writer = *static_cast<TraceWriter *>(drawing);
    writer.BeginCall(kEntryNames[entry]);
    return writer;
}

void AddPoint(TraceWriter &writer, const FixedPoint *point)
{
    writer.AddFixed(point->x);
    writer.AddFixed(point->y);
}

template <int kEntry>
void TracePlain(void *drawing)
{
    Begin(drawing, kEntry).EndCall();
}

template <int kEntry, typename... Points>
void TracePoints(void *drawing, Points... points)
{
    TraceWriter &writer = Begin(drawing, kEntry);
    (AddPoint(writer, points), ...);
    writer.EndCall();
}

template <int kEntry, typename... Values>
void TraceFixed(void *drawing, Values... values)
{
    TraceWriter &writer = Begin(drawing, kEntry);
    (writer.AddFixed(values), ...);
    writer.EndCall();
}

template <int kEntry>
void TraceInteger(void *drawing, int32_t value)
{
    TraceWriter &writer = Begin(drawing, kEntry);
    writer.AddInteger(value);
    writer.EndCall();
}

void TraceConcat(void *drawing, const FixedMatrix *matrix, int32_t how)
{
    TraceWriter &writer = Begin(drawing, kZRKConcat);
    for (Fixed value : {matrix->a, matrix->b, matrix->c, matrix->d, matrix->tx, matrix->ty})
        writer.AddFixed(value);
    if (how != 0)
        writer.AddInteger(how);
    writer.EndCall();
}

void TraceSetDash(void *drawing, Fixed phase, int32_t count, const Fixed *values)
{
    TraceWriter &writer = Begin(drawing, kZRKSetDash);
    writer.AddFixed(phase);
    writer.AddList({values, static_cast<size_t>(std::clamp(count, 0, kMaxDashValues))});
    writer.EndCall();
}

void TraceShow(void *drawing, const ZRKTextRecord *first, int32_t mode)
{
    TraceWriter &writer = Begin(drawing, kZRKShow);
    writer.AddInteger(mode);
    for (const ZRKTextRecord *record = first; record != nullptr; record = record->next)
        writer.AddRecord(*record);
    writer.EndCall();
}

void TraceComment(void *drawing, uint32_t signature, const char *text, int32_t length)
{
    TraceWriter &writer = Begin(drawing, kZRKComment);
    writer.AddText({text, static_cast<size_t>(std::clamp(length, 0, kMaxTextLength))});
    if (signature != kZRKPathComment)
        writer.AddInteger(static_cast<int32_t>(signature));
    writer.EndCall();
}

template <typename Proc>
void SetEntry(ZRKProcs *procs, int entry, Proc proc)
{
    procs->entry[entry] = reinterpret_cast<ZRKProc>(proc);
}

// Every entry gets a procedure, also those that no plug-in is known to call: the table must have no holes.
template <int... kEntries>
void SetPlainEntries(ZRKProcs *procs, std::integer_sequence<int, kEntries...>)
{
    (SetEntry(procs, kEntries, &TracePlain<kEntries>), ...);
}

} // namespace

TraceTable::TraceTable(TraceWriter *writer) : writer_(writer), procs_()
{
    procs_.version = kZRKProcsVersion;
    procs_.count = kZRKProcCount;
    SetPlainEntries(&procs_, std::make_integer_sequence<int, kZRKProcCount>());

    using Point = const FixedPoint *;
    SetEntry<ZRKMoveToProc>(&procs_, kZRKMoveTo, TracePoints<kZRKMoveTo, Point>);
    SetEntry<ZRKLineToProc>(&procs_, kZRKLineTo, TracePoints<kZRKLineTo, Point>);
    SetEntry<ZRKCurveToProc>(&procs_, kZRKCurveTo, TracePoints<kZRKCurveTo, Point, Point, Point>);
    SetEntry<ZRKCurveToFromCurrentProc>(&procs_, kZRKCurveToFromCurrent,
                                        TracePoints<kZRKCurveToFromCurrent, Point, Point>);
    SetEntry<ZRKTranslateProc>(&procs_, kZRKTranslate, TraceFixed<kZRKTranslate, Fixed, Fixed>);
    SetEntry<ZRKConcatProc>(&procs_, kZRKConcat, TraceConcat);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetLineWidth, TraceFixed<kZRKSetLineWidth, Fixed>);
    SetEntry<ZRKSetDashProc>(&procs_, kZRKSetDash, TraceSetDash);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetLineCap, TraceInteger<kZRKSetLineCap>);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetLineJoin, TraceInteger<kZRKSetLineJoin>);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetMiterLimit, TraceFixed<kZRKSetMiterLimit, Fixed>);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetGray, TraceFixed<kZRKSetGray, Fixed>);
    SetEntry<ZRKSetCMYKColorProc>(&procs_, kZRKSetCMYKColor,
                                  TraceFixed<kZRKSetCMYKColor, Fixed, Fixed, Fixed, Fixed>);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetOverprint, TraceInteger<kZRKSetOverprint>);
    SetEntry<ZRKShowProc>(&procs_, kZRKShow, TraceShow);
    SetEntry<ZRKCommentProc>(&procs_, kZRKComment, TraceComment);
}

void TraceTable::Report(int number)
{
    writer_->BeginCall("report");
    writer_->AddInteger(number);
    writer_->EndCall();
}

void TraceTable::Finish(int result)
{
    writer_->BeginCall("result");
    writer_->AddInteger(result);
    writer_->EndCall();
}

std::string_view RecordText(const ZRKTextRecord &record)
{
    if (record.text == nullptr)
        return {};
    return {reinterpret_cast<const char *>(record.text),
            static_cast<size_t>(std::clamp(record.length, 0, kMaxTextLength))};
}

std::string_view RecordName(const char *name)
{
    if (name == nullptr)
        return {};
    return {name, strnlen(name, kMaxNameLength)};
}

} // namespace vxhost
