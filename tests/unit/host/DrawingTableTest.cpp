// The procedure table in front of a Drawing: each entry with the arguments that the boundary gives it.
#include "host/drawing/DrawingTable.h"

#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <iterator>
#include <new>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

constexpr Fixed kOne = 0x10000;

class TableTest : public testing::Test
{
  protected:
    template <typename Proc, typename... Arguments>
    void Call(int entry, Arguments... arguments)
    {
        reinterpret_cast<Proc>(table_.Procs()->entry[entry])(table_.Reference(), arguments...);
    }
    void Call(int entry) { Call<ZRKPathProc>(entry); }

    void BuildLine()
    {
        const FixedPoint from = {kOne, -kOne / 2};
        const FixedPoint to = {9 * kOne, 0};
        Call<ZRKMoveToProc>(kZRKMoveTo, &from);
        Call<ZRKLineToProc>(kZRKLineTo, &to);
    }

    RecordingDevice device_;
    Drawing drawing_{&device_};
    DrawingTable table_{&drawing_};
};

TEST_F(TableTest, HasNoHoles)
{
    EXPECT_EQ(table_.Procs()->version, kZRKProcsVersion);
    EXPECT_EQ(table_.Procs()->count, kZRKProcCount);
    for (const ZRKProc entry : table_.Procs()->entry)
        EXPECT_NE(entry, nullptr);
}

TEST_F(TableTest, EveryEntryReachesItsOperation)
{
    const FixedPoint points[] = {{kOne, kOne}, {2 * kOne, 2 * kOne}, {3 * kOne, 3 * kOne}};
    const FixedMatrix matrix = {2 * kOne, 0, 0, 2 * kOne, 0, 0};
    const Fixed dashes[] = {3 * kOne, kOne / 2};
    Call<ZRKTranslateProc>(kZRKTranslate, 10 * kOne, 0);
    Call<ZRKConcatProc>(kZRKConcat, &matrix, 0);
    Call<ZRKSetFixedProc>(kZRKSetLineWidth, kOne / 4);
    Call<ZRKSetDashProc>(kZRKSetDash, kOne, 2, &dashes[0]);
    Call<ZRKSetIntegerProc>(kZRKSetLineCap, 1);
    Call<ZRKSetIntegerProc>(kZRKSetLineJoin, 2);
    Call<ZRKSetFixedProc>(kZRKSetMiterLimit, 4 * kOne);
    Call<ZRKSetFixedProc>(kZRKSetGray, kOne / 2);
    Call<ZRKSetIntegerProc>(kZRKSetOverprint, 1);
    BuildLine();
    Call<ZRKCurveToProc>(kZRKCurveTo, &points[0], &points[1], &points[2]);
    Call<ZRKCurveToFromCurrentProc>(kZRKCurveToFromCurrent, &points[1], &points[0]);
    Call(kZRKClosePath);
    Call(kZRKGSave);
    Call(kZRKStroke);
    Call(kZRKGRestore);
    Call(kZRKClip);
    Call(kZRKNewPath);
    Call<ZRKSetCMYKColorProc>(kZRKSetCMYKColor, kOne, 0, kOne / 2, kOne / 4);
    Call<ZRKSetIntegerProc>(kZRKSetOverprint, 0);
    BuildLine();
    Call(kZRKFill);
    EXPECT_EQ(device_.calls,
              "stroke M12 -1 L28 0 C12 2 14 4 16 6 C16 6 14 4 12 2 Z width 0.25 cap 1 join 2 limit 4 "
              "dash 1 [3 0.5] matrix 2 0 0 2 10 0 gray 0.5 overprint; "
              "clip M12 -1 L28 0 C12 2 14 4 16 6 C16 6 14 4 12 2 Z; "
              "fill M12 -1 L28 0 cmyk 1 0 0.5 0.25");
}

TEST_F(TableTest, OtherEntriesDrawNothingAndKeepThePath)
{
    BuildLine();
    Call(kZRKEntry37);
    Call(kZRKImage);
    Call<ZRKCommentProc>(kZRKComment, uint32_t{kZRKPathComment}, "path", 4);
    Call<ZRKShowProc>(kZRKShow, nullptr, 1);
    Call(35);
    EXPECT_EQ(device_.calls, "");
    EXPECT_EQ(drawing_.GetCounts().shows, 1u);
    Call(kZRKFill);
    EXPECT_EQ(device_.calls, "fill M1 -0.5 L9 0");
}

TEST_F(TableTest, DashCountsOutsideTheirRangeAreSolid)
{
    const Fixed dashes[] = {3 * kOne};
    for (const int32_t count : {-1, 0, 257, INT32_MAX}) {
        device_.calls.clear();
        Call<ZRKSetDashProc>(kZRKSetDash, kOne, count, &dashes[0]);
        BuildLine();
        Call(kZRKStroke);
        EXPECT_EQ(device_.calls, "stroke M1 -0.5 L9 0") << count;
    }
}

TEST_F(TableTest, AnExceptionIsKeptByTheHostAndEndsTheDrawing)
{
    HostContext host;
    const HostScope scope(&host);
    device_.onPaint = [] { throw std::bad_alloc(); };
    BuildLine();
    Call(kZRKFill);
    EXPECT_NE(host.failure, nullptr);
    device_.onPaint = nullptr;
    BuildLine();
    Call(kZRKFill);
    EXPECT_EQ(device_.calls, "");
}

} // namespace
} // namespace vxhost
