// What each entry of the trace's procedure table prints, as text and as JSON.
#include "host/trace/TraceLines.h"
#include "host/trace/TraceJson.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <string>

namespace vxhost
{

namespace
{

constexpr Fixed kOne = 0x10000;

constexpr Fixed Whole(int32_t number)
{
    return number * kOne;
}

template <typename Proc, typename... Arguments>
void Call(TraceTable &table, int entry, Arguments... arguments)
{
    reinterpret_cast<Proc>(table.Procs()->entry[entry])(table.Drawing(), arguments...);
}

const FixedPoint kPoints[] = {{Whole(1), kOne / 2}, {Whole(-3) - kOne / 4, 0}, {21845, Whole(32767)}};
const FixedMatrix kMatrix = {kOne, 0, 0, -kOne, Whole(72), 1};
const Fixed kDashes[] = {Whole(3), kOne + kOne / 2};

void ShowTwoRecords(TraceTable &table)
{
    static const uint8_t text[] = {'S', 'c', 'h', 0xF6, 'n', '(', '\\', 0};
    const FixedPoint spacing[] = {{kOne, 0}, {0, Whole(2)}};
    ZRKTextRecord second = {};
    second.fontName = "Courier";
    second.styleName = "Bold";
    second.text = text;
    second.length = 1;
    second.spacing = spacing;
    second.spacingKind = 3;
    second.placement = 2;
    ZRKTextRecord first = {};
    first.next = &second;
    first.fontName = "Times-Roman";
    first.text = text;
    first.length = 8;
    first.a = Whole(12);
    first.d = Whole(-12);
    first.x = Whole(72);
    first.y = Whole(700);
    first.placement = 1;
    Call<ZRKShowProc>(table, kZRKShow, static_cast<const ZRKTextRecord *>(&first), 5);
}

void ShowNonsense(TraceTable &table)
{
    ZRKTextRecord record = {};
    record.length = -5;
    Call<ZRKShowProc>(table, kZRKShow, static_cast<const ZRKTextRecord *>(&record), -1);
}

struct CallCase {
    const char *name;
    void (*call)(TraceTable &table);
    const char *line;
    const char *json;
};

// 0.33333 of 65536 is 21845.1 and 0.3333 of it 21843.1, so 21845 needs five decimals.
const CallCase kCalls[] = {
    {"PlainEntriesAreTheirName", [](TraceTable &t) { Call<ZRKPathProc>(t, kZRKNewPath); }, "newpath",
     R"({"call":"newpath","args":[]})"},
    {"EntriesThatNothingCallsAreNumbered", [](TraceTable &t) { Call<ZRKPathProc>(t, 37); }, "entry37",
     R"({"call":"entry37","args":[]})"},
    {"MoveTo", [](TraceTable &t) { Call<ZRKMoveToProc>(t, kZRKMoveTo, &kPoints[0]); }, "moveto 1 0.5",
     R"({"call":"moveto","args":[1,0.5]})"},
    {"LineTo", [](TraceTable &t) { Call<ZRKLineToProc>(t, kZRKLineTo, &kPoints[1]); }, "lineto -3.25 0",
     R"({"call":"lineto","args":[-3.25,0]})"},
    {"CurveTo",
     [](TraceTable &t) { Call<ZRKCurveToProc>(t, kZRKCurveTo, &kPoints[0], &kPoints[1], &kPoints[2]); },
     "curveto 1 0.5 -3.25 0 0.33333 32767", R"({"call":"curveto","args":[1,0.5,-3.25,0,0.33333,32767]})"},
    {"CurveToFromCurrent",
     [](TraceTable &t) {
         Call<ZRKCurveToFromCurrentProc>(t, kZRKCurveToFromCurrent, &kPoints[0], &kPoints[1]);
     },
     "curveto-from-current 1 0.5 -3.25 0", R"({"call":"curveto-from-current","args":[1,0.5,-3.25,0]})"},
    {"Translate", [](TraceTable &t) { Call<ZRKTranslateProc>(t, kZRKTranslate, Whole(5), -kOne); },
     "translate 5 -1", R"({"call":"translate","args":[5,-1]})"},
    {"ConcatLeavesOutASelectorOf0", [](TraceTable &t) { Call<ZRKConcatProc>(t, kZRKConcat, &kMatrix, 0); },
     "concat 1 0 0 -1 72 0.00002", R"({"call":"concat","args":[1,0,0,-1,72,0.00002]})"},
    {"ConcatShowsAnyOtherSelector", [](TraceTable &t) { Call<ZRKConcatProc>(t, kZRKConcat, &kMatrix, 1); },
     "concat 1 0 0 -1 72 0.00002 1", R"({"call":"concat","args":[1,0,0,-1,72,0.00002,1]})"},
    {"DashIsAList", [](TraceTable &t) { Call<ZRKSetDashProc>(t, kZRKSetDash, Whole(2), 2, kDashes); },
     "setdash 2 [3 1.5]", R"({"call":"setdash","args":[2,[3,1.5]]})"},
    {"SolidIsAnEmptyList",
     [](TraceTable &t) { Call<ZRKSetDashProc>(t, kZRKSetDash, 0, 0, static_cast<const Fixed *>(nullptr)); },
     "setdash 0 []", R"({"call":"setdash","args":[0,[]]})"},
    {"ANegativeDashCountIsEmpty", [](TraceTable &t) { Call<ZRKSetDashProc>(t, kZRKSetDash, 0, -1, kDashes); },
     "setdash 0 []", R"({"call":"setdash","args":[0,[]]})"},
    {"IntegersArePlain", [](TraceTable &t) { Call<ZRKSetIntegerProc>(t, kZRKSetLineJoin, 2); },
     "setlinejoin 2", R"({"call":"setlinejoin","args":[2]})"},
    {"FixedIsNot", [](TraceTable &t) { Call<ZRKSetFixedProc>(t, kZRKSetGray, kOne / 4); }, "setgray 0.25",
     R"({"call":"setgray","args":[0.25]})"},
    {"Colour",
     [](TraceTable &t) { Call<ZRKSetCMYKColorProc>(t, kZRKSetCMYKColor, 0, kOne / 2, kOne, kOne / 8); },
     "setcmykcolor 0 0.5 1 0.125", R"({"call":"setcmykcolor","args":[0,0.5,1,0.125]})"},
    {"CommentIsItsText",
     [](TraceTable &t) {
         Call<ZRKCommentProc>(t, kZRKComment, static_cast<uint32_t>(kZRKPathComment), "pathological", 4);
     },
     "comment path", R"({"call":"comment","args":["path"]})"},
    {"AnotherSignatureIsShown",
     [](TraceTable &t) { Call<ZRKCommentProc>(t, kZRKComment, uint32_t{7}, "path", 4); }, "comment path 7",
     R"({"call":"comment","args":["path",7]})"},
    {"Show", ShowTwoRecords,
     "show 5 | Times-Roman [12 0 0 -12] 72 700 placement 1 (Sch\\366n\\050\\134\\000)"
     " | Courier style Bold [0 0 0 0] 0 0 placement 2 spacing 3 [1 0 0 2] (S)",
     "{\"call\":\"show\",\"args\":[5,{\"font\":\"Times-Roman\",\"matrix\":[12,0,0,-12],\"position\":[72,700],"
     "\"placement\":1,\"text\":\"Sch\xC3\xB6n(\\\\\\u0000\"},{\"font\":\"Courier\",\"style\":\"Bold\","
     "\"matrix\":[0,0,0,0],\"position\":[0,0],\"placement\":2,\"spacingKind\":3,\"spacing\":[1,0,0,2],"
     "\"text\":\"S\"}]}"},
    {"ARecordWithoutNameOrTextIsHarmless", ShowNonsense, "show -1 |  [0 0 0 0] 0 0 placement 0 ()",
     "{\"call\":\"show\",\"args\":[-1,{\"font\":\"\",\"matrix\":[0,0,0,0],\"position\":[0,0],\"placement\":0,"
     "\"text\":\"\"}]}"},
    {"Reports", [](TraceTable &t) { t.Report(3); }, "report 3", R"({"call":"report","args":[3]})"},
    {"TheResult", [](TraceTable &t) { t.Finish(-30601); }, "result -30601",
     R"({"call":"result","args":[-30601]})"},
};

LineSink Into(std::string *text)
{
    return {[](void *to, std::string_view line) { *static_cast<std::string *>(to) += line; }, text};
}

class TraceCalls : public testing::TestWithParam<CallCase>
{
};

TEST_P(TraceCalls, BecomeThisLine)
{
    std::string text;
    TraceLines writer(Into(&text));
    TraceTable table(&writer);
    GetParam().call(table);
    EXPECT_EQ(text, GetParam().line);
}

TEST_P(TraceCalls, BecomeThisJson)
{
    std::string text;
    TraceJson writer(Into(&text));
    TraceTable table(&writer);
    GetParam().call(table);
    EXPECT_EQ(text, GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(Table, TraceCalls, testing::ValuesIn(kCalls), vxtest::CaseName());

TEST(TraceTableTest, HasNoHoles)
{
    std::string text;
    TraceLines writer(Into(&text));
    TraceTable table(&writer);
    EXPECT_EQ(table.Procs()->version, kZRKProcsVersion);
    EXPECT_EQ(table.Procs()->count, kZRKProcCount);
    for (const ZRKProc entry : table.Procs()->entry)
        EXPECT_NE(entry, nullptr);
}

TEST(TraceTableTest, KeepsCallsApart)
{
    std::string text;
    TraceLines writer({[](void *to, std::string_view line) {
                           *static_cast<std::string *>(to) += line;
                           *static_cast<std::string *>(to) += ';';
                       },
                       &text});
    TraceTable table(&writer);
    Call<ZRKPathProc>(table, kZRKGSave);
    Call<ZRKSetIntegerProc>(table, kZRKSetOverprint, 1);
    Call<ZRKPathProc>(table, kZRKGRestore);
    EXPECT_EQ(text, "gsave;setoverprint 1;grestore;");
}

} // namespace

} // namespace vxhost
