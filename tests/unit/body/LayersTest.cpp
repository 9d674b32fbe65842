// Layers that are not printed: the host's table while they are read, and after.
#include "plugin/body/Layers.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/BodyDocument.h"
#include "tests/unit/body/ParsingContext.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

struct LayerCase {
    const char *name, *lines, *calls;
    int16_t result;
};

class LayerLines : public testing::TestWithParam<LayerCase>
{
};

TEST_P(LayerLines, PaintOnlyWhatIsPrinted)
{
    RecordingHost host;
    const ZRKProcs before = *host.procs();
    EXPECT_EQ(host.Parse(Document(GetParam().lines)), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
    EXPECT_EQ(memcmp(&before, host.procs(), sizeof before), 0) << "the host's table is as it was";
}

// A layer record has ten operands; the fourth says whether the layer is printed.
#define PRINTED "1 1 1 1 0 0 1 0 50 -1 Lb "
#define SILENT  "1 1 1 0 0 0 1 0 50 -1 Lb "

const LayerCase kLayers[] = {
    {"APrintedLayerPaints", "0.5 g " PRINTED "F", "comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    // A fill of a silent layer just discards the path.
    {"ASilentLayerDoesNotFill", "0.5 g " SILENT "F", "comment path; setoverprint 0; setgray 0.5; newpath",
     kVXOk},
    {"ASilentLayerDoesNotStroke", "0.5 G " SILENT "S", "comment path; setoverprint 0; setgray 0.5; newpath",
     kVXOk},
    {"ASilentLayerStillBuildsPaths", SILENT "1 2 m 3 4 l h n",
     "moveto 1 2; lineto 3 4; closepath; comment path; newpath", kVXOk},
    {"AfterALayersEndNothingPaints", "0.5 g " PRINTED "LB F",
     "comment path; setoverprint 0; setgray 0.5; newpath", kVXOk},
    {"ALayersEndTakesAnyOperands", "0.5 g 1 (a) LB F", "comment path; setoverprint 0; setgray 0.5; newpath",
     kVXOk},
    {"ThePrintedLayerAfterASilentOnePaints", "0.5 g " SILENT "F LB " PRINTED "F",
     "comment path; setoverprint 0; setgray 0.5; newpath; comment path; fill", kVXOk},
    {"TwoSilentLayersAreSilent", "0.5 g " SILENT SILENT "F " PRINTED "F",
     "comment path; setoverprint 0; setgray 0.5; newpath; comment path; fill", kVXOk},
    {"AnyNonZeroFlagPrints", "0.5 g 0 0 0 -7 0 0 0 0 0 0 Lb F",
     "comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    {"TheSeventhOperandFromTheTopCounts", "0.5 g 0 1 1 1 1 1 1 Lb F",
     "comment path; setoverprint 0; setgray 0.5; newpath", kVXOk},
    {"FurtherOperandsDoNotMatter", "0.5 g (a) /b 1 0 0 0 0 0 0 Lb F",
     "comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    {"SixOperandsFail", "1 1 1 1 1 1 Lb", "", kVXBadFormat},
    {"NoOperandsFail", "Lb", "", kVXBadFormat},
    {"TheFlagMustBeAnInteger", "1.0 0 0 0 0 0 0 Lb", "", kVXBadFormat},
    {"TheOthersMustBeNumbers", "1 0 0 (a) 0 0 0 Lb", "", kVXBadFormat},
    {"TheOthersMayHaveFractions", "0.5 g 1 0.5 0 0 0 0 0.25 Lb F",
     "comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    {"AFailureInASilentLayerGivesTheTableBack", SILENT "1 2 m ]", "moveto 1 2", kVXBadFormat},
    {"TheDocumentsEndInASilentLayerGivesTheTableBack", SILENT "1 2 m", "moveto 1 2", kVXOk},
    {"LayersWorkInsideGroups", "0.5 g *u F " SILENT "*U",
     "comment path; setoverprint 0; setgray 0.5; newpath", kVXOk},
    {"APatternOfASilentLayerIsReported", "p " SILENT "F",
     "comment path; report 1; setoverprint 0; setgray 0.5; newpath", kVXOk},
    {"NoLayersLeaveTheTable", "0.5 g F", "comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(Layers, LayerLines, testing::ValuesIn(kLayers), CaseName());

TEST(LayerParseTest, AStopInASilentLayerGivesTheTableBack)
{
    RecordingHost host;
    host.stopAtReport = true;
    const ZRKProcs before = *host.procs();
    EXPECT_EQ(host.Parse(Document(SILENT "Qx")), kVXStoppedByUser);
    EXPECT_EQ(memcmp(&before, host.procs(), sizeof before), 0);
}

class LayersTest : public ParsingContext
{
  protected:
    ZRKProc Entry(int entry) const { return context.procs->entry[entry]; }
};

TEST_F(LayersTest, SavingTakesFiveEntries)
{
    SetupLayerObject(&context.layer, &context);
    EXPECT_EQ(context.layer.initialized, 1);
    EXPECT_EQ(context.layer.printable, 1);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(context.layer.savedProcs[i], Entry(36 + i)) << i;
    SetupLayerObject(nullptr, &context); // nothing happens
}

TEST_F(LayersTest, ASilentLayerReplacesFiveEntriesAndNoOther)
{
    const ZRKProcs before = *context.procs;
    EXPECT_EQ(DoLayers(&context, 0), kOk);
    EXPECT_EQ(context.layer.printable, 0);
    EXPECT_EQ(Entry(kZRKFill), before.entry[kZRKNewPath]);
    EXPECT_EQ(Entry(kZRKEntry37), before.entry[kZRKNewPath]);
    EXPECT_EQ(Entry(kZRKStroke), before.entry[kZRKNewPath]);
    for (int entry = 0; entry < kZRKProcCount; ++entry)
        EXPECT_EQ(Entry(entry) == before.entry[entry], entry < kZRKFill || entry > kZRKShow) << entry;
    reinterpret_cast<ZRKPathProc>(Entry(kZRKImage))(context.refCon);
    reinterpret_cast<ZRKShowProc>(Entry(kZRKShow))(context.refCon, nullptr, 0);
    EXPECT_EQ(host.Joined(), "") << "images and text reach nobody";
    EXPECT_EQ(DoLayers(&context, 1), kOk);
    EXPECT_EQ(context.layer.printable, 1);
    EXPECT_EQ(memcmp(&before, context.procs, sizeof before), 0);
}

TEST_F(LayersTest, SavedEntriesAreNeverTheReplacedOnes)
{
    const ZRKProcs before = *context.procs;
    ASSERT_EQ(DoLayers(&context, 0), kOk);
    ASSERT_EQ(DoLayers(&context, 0), kOk);
    SetProcsToPrintable(&context);
    EXPECT_EQ(memcmp(&before, context.procs, sizeof before), 0);
    EXPECT_EQ(context.layer.printable, 0) << "giving the entries back says nothing about the layer";
}

TEST_F(LayersTest, OtherValuesChangeNothing)
{
    const ZRKProcs before = *context.procs;
    EXPECT_EQ(DoLayers(&context, 2), kOk);
    EXPECT_EQ(memcmp(&before, context.procs, sizeof before), 0);
    EXPECT_EQ(context.layer.printable, 1) << "only saved";
    ASSERT_EQ(DoLayers(&context, 0), kOk);
    EXPECT_EQ(DoLayers(&context, -1), kOk);
    EXPECT_EQ(context.layer.printable, 0);
    ASSERT_EQ(DoLayers(&context, 1), kOk);
}

TEST_F(LayersTest, WithoutAContextNothingHappens)
{
    EXPECT_EQ(DoLayers(nullptr, 0), kOk);
    SetProcsToPrintable(nullptr);
    SetProcsToNonPrintable(nullptr);
}

TEST_F(LayersTest, GivingBackWithoutLayersChangesNothing)
{
    const ZRKProcs before = *context.procs;
    SetProcsToPrintable(&context);
    EXPECT_EQ(memcmp(&before, context.procs, sizeof before), 0);
    EXPECT_EQ(context.layer.initialized, 1);
}

} // namespace
