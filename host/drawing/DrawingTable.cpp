#include "host/drawing/DrawingTable.h"

#include "host/drawing/FromFixed.h"

#include <algorithm>
#include <array>

namespace vxhost
{

namespace
{

constexpr int32_t kMaxDashLengths = 256;

template <typename Action>
void Run(void *reference, Action &&action)
{
    static_cast<DrawingTable *>(reference)->Run(std::forward<Action>(action));
}

// One procedure for each shape of arguments.
template <void (Drawing::*kAction)()>
void Plain(void *reference)
{
    Run(reference, [](Drawing &to) { (to.*kAction)(); });
}

template <auto kAction, typename... Points>
void WithPoints(void *reference, Points... points)
{
    Run(reference, [&](Drawing &to) { (to.*kAction)(FromFixed(*points)...); });
}

template <auto kAction, typename... Values>
void WithFixed(void *reference, Values... values)
{
    Run(reference, [&](Drawing &to) { (to.*kAction)(FromFixed(values)...); });
}

template <void (Drawing::*kAction)(int32_t)>
void WithInteger(void *reference, int32_t value)
{
    Run(reference, [&](Drawing &to) { (to.*kAction)(value); });
}

void SetOverprint(void *reference, int32_t on)
{
    Run(reference, [&](Drawing &to) { to.SetOverprint(on != 0); });
}

// The last argument is always 0, and not looked at.
void Concat(void *reference, const FixedMatrix *matrix, int32_t)
{
    Run(reference, [&](Drawing &to) {
        to.Concat({FromFixed(matrix->a), FromFixed(matrix->b), FromFixed(matrix->c), FromFixed(matrix->d),
                   FromFixed(matrix->tx), FromFixed(matrix->ty)});
    });
}

void SetDash(void *reference, Fixed phase, int32_t count, const Fixed *values)
{
    Run(reference, [&](Drawing &to) {
        std::array<double, kMaxDashLengths> lengths;
        const auto used = static_cast<size_t>(count > kMaxDashLengths ? 0 : std::max(count, 0));
        for (size_t i = 0; i < used; ++i)
            lengths[i] = FromFixed(values[i]);
        to.SetDash(FromFixed(phase), {lengths.data(), used});
    });
}

void Show(void *reference, const ZRKTextRecord *first, int32_t mode)
{
    TextShow &text = static_cast<DrawingTable *>(reference)->Text();
    Run(reference, [&](Drawing &) { text.Show(first, mode); });
}

void Ignore(void *) {}
void IgnoreComment(void *, uint32_t, const char *, int32_t) {}

template <typename Proc>
void SetEntry(ZRKProcs *procs, int entry, Proc proc)
{
    procs->entry[entry] = reinterpret_cast<ZRKProc>(proc);
}

} // namespace

DrawingTable::DrawingTable(Drawing *drawing, GlyphSource *glyphs)
    : drawing_(drawing), text_(drawing, glyphs), procs_()
{
    procs_.version = kZRKProcsVersion;
    procs_.count = kZRKProcCount;
    // No entry may be missing: those that no plug-in calls draw nothing.
    for (int entry = 0; entry < kZRKProcCount; ++entry)
        SetEntry<ZRKPathProc>(&procs_, entry, Ignore);

    using At = const FixedPoint *;
    SetEntry<ZRKPathProc>(&procs_, kZRKNewPath, Plain<&Drawing::NewPath>);
    SetEntry<ZRKMoveToProc>(&procs_, kZRKMoveTo, WithPoints<&Drawing::MoveTo, At>);
    SetEntry<ZRKLineToProc>(&procs_, kZRKLineTo, WithPoints<&Drawing::LineTo, At>);
    SetEntry<ZRKCurveToProc>(&procs_, kZRKCurveTo, WithPoints<&Drawing::CurveTo, At, At, At>);
    SetEntry<ZRKCurveToFromCurrentProc>(&procs_, kZRKCurveToFromCurrent,
                                        WithPoints<&Drawing::CurveToFromCurrent, At, At>);
    SetEntry<ZRKPathProc>(&procs_, kZRKClosePath, Plain<&Drawing::ClosePath>);
    SetEntry<ZRKPathProc>(&procs_, kZRKClip, Plain<&Drawing::Clip>);
    SetEntry<ZRKPathProc>(&procs_, kZRKGSave, Plain<&Drawing::Save>);
    SetEntry<ZRKPathProc>(&procs_, kZRKGRestore, Plain<&Drawing::Restore>);
    SetEntry<ZRKTranslateProc>(&procs_, kZRKTranslate, WithFixed<&Drawing::Translate, Fixed, Fixed>);
    SetEntry<ZRKConcatProc>(&procs_, kZRKConcat, Concat);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetLineWidth, WithFixed<&Drawing::SetLineWidth, Fixed>);
    SetEntry<ZRKSetDashProc>(&procs_, kZRKSetDash, SetDash);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetLineCap, WithInteger<&Drawing::SetLineCap>);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetLineJoin, WithInteger<&Drawing::SetLineJoin>);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetMiterLimit, WithFixed<&Drawing::SetMiterLimit, Fixed>);
    SetEntry<ZRKSetFixedProc>(&procs_, kZRKSetGray, WithFixed<&Drawing::SetGray, Fixed>);
    SetEntry<ZRKSetCMYKColorProc>(&procs_, kZRKSetCMYKColor,
                                  WithFixed<&Drawing::SetCMYKColor, Fixed, Fixed, Fixed, Fixed>);
    SetEntry<ZRKSetIntegerProc>(&procs_, kZRKSetOverprint, SetOverprint);
    SetEntry<ZRKPathProc>(&procs_, kZRKFill, Plain<&Drawing::Fill>);
    SetEntry<ZRKPathProc>(&procs_, kZRKStroke, Plain<&Drawing::Stroke>);
    SetEntry<ZRKShowProc>(&procs_, kZRKShow, Show);
    SetEntry<ZRKCommentProc>(&procs_, kZRKComment, IgnoreComment);
}

} // namespace vxhost
