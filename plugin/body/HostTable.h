// The host's procedure table: whether it can be used, and one thin caller per entry. The table is untyped; the casts
// are here alone.
#pragma once

#include "plugin/body/ParseContext.h"

namespace vx
{

// True when the table has version 1 and its first 42 procedures; later ones are not looked at. table may be null.
bool CheckZRKProcs(const ZRKProcs *table);

template <typename Proc>
Proc TableEntry(const ParseContext *context, int entry)
{
    return reinterpret_cast<Proc>(context->procs->entry[entry]);
}

template <int Entry>
void CallPathEntry(const ParseContext *context)
{
    TableEntry<ZRKPathProc>(context, Entry)(context->refCon);
}

inline void CallNewPath(const ParseContext *context)
{
    CallPathEntry<kZRKNewPath>(context);
}
inline void CallClosePath(const ParseContext *context)
{
    CallPathEntry<kZRKClosePath>(context);
}
inline void CallClip(const ParseContext *context)
{
    CallPathEntry<kZRKClip>(context);
}
inline void CallGSave(const ParseContext *context)
{
    CallPathEntry<kZRKGSave>(context);
}
inline void CallGRestore(const ParseContext *context)
{
    CallPathEntry<kZRKGRestore>(context);
}
inline void CallFill(const ParseContext *context)
{
    CallPathEntry<kZRKFill>(context);
}
inline void CallStroke(const ParseContext *context)
{
    CallPathEntry<kZRKStroke>(context);
}

inline void CallMoveTo(const ParseContext *context, const FixedPoint *to)
{
    TableEntry<ZRKMoveToProc>(context, kZRKMoveTo)(context->refCon, to);
}
inline void CallLineTo(const ParseContext *context, const FixedPoint *to)
{
    TableEntry<ZRKLineToProc>(context, kZRKLineTo)(context->refCon, to);
}
inline void CallCurveTo(const ParseContext *context, const FixedPoint *control1, const FixedPoint *control2,
                        const FixedPoint *to)
{
    TableEntry<ZRKCurveToProc>(context, kZRKCurveTo)(context->refCon, control1, control2, to);
}
inline void CallCurveToFromCurrent(const ParseContext *context, const FixedPoint *control2,
                                   const FixedPoint *to)
{
    TableEntry<ZRKCurveToFromCurrentProc>(context, kZRKCurveToFromCurrent)(context->refCon, control2, to);
}
inline void CallTranslate(const ParseContext *context, Fixed dx, Fixed dy)
{
    TableEntry<ZRKTranslateProc>(context, kZRKTranslate)(context->refCon, dx, dy);
}
inline void CallConcat(const ParseContext *context, const FixedMatrix *matrix)
{
    TableEntry<ZRKConcatProc>(context, kZRKConcat)(context->refCon, matrix, 0);
}
inline void CallSetLineWidth(const ParseContext *context, Fixed width)
{
    TableEntry<ZRKSetFixedProc>(context, kZRKSetLineWidth)(context->refCon, width);
}
inline void CallSetDash(const ParseContext *context, Fixed phase, int32_t count, const Fixed *values)
{
    TableEntry<ZRKSetDashProc>(context, kZRKSetDash)(context->refCon, phase, count, values);
}
inline void CallSetLineCap(const ParseContext *context, int32_t cap)
{
    TableEntry<ZRKSetIntegerProc>(context, kZRKSetLineCap)(context->refCon, cap);
}
inline void CallSetLineJoin(const ParseContext *context, int32_t join)
{
    TableEntry<ZRKSetIntegerProc>(context, kZRKSetLineJoin)(context->refCon, join);
}
inline void CallSetMiterLimit(const ParseContext *context, Fixed limit)
{
    TableEntry<ZRKSetFixedProc>(context, kZRKSetMiterLimit)(context->refCon, limit);
}
inline void CallSetGray(const ParseContext *context, Fixed gray)
{
    TableEntry<ZRKSetFixedProc>(context, kZRKSetGray)(context->refCon, gray);
}
inline void CallSetCMYKColor(const ParseContext *context, const CMYKColour *colour)
{
    TableEntry<ZRKSetCMYKColorProc>(context, kZRKSetCMYKColor)(context->refCon, colour->cyan, colour->magenta,
                                                               colour->yellow, colour->black);
}
inline void CallSetOverprint(const ParseContext *context, int32_t overprint)
{
    TableEntry<ZRKSetIntegerProc>(context, kZRKSetOverprint)(context->refCon, overprint);
}
inline void CallShow(const ParseContext *context, const ZRKTextRecord *first, uint32_t mode)
{
    TableEntry<ZRKShowProc>(context, kZRKShow)(context->refCon, first, static_cast<int32_t>(mode));
}
inline void CallComment(const ParseContext *context, uint32_t signature, const char *text, int32_t length)
{
    TableEntry<ZRKCommentProc>(context, kZRKComment)(context->refCon, signature, text, length);
}
// Says that the path is about to be painted.
inline void CallPathComment(const ParseContext *context)
{
    static constexpr char kText[] = {'p', 'a', 't', 'h'};
    CallComment(context, kZRKPathComment, kText, sizeof kText);
}

} // namespace vx
