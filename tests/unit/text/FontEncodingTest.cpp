// The font encoding object: what it knows before the body.
#include "plugin/text/FontEncoding.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

struct SourceCase {
    const char *name;
    FileVersion version;
    SourceKind source;
};

class Sources : public testing::TestWithParam<SourceCase>
{
};

TEST_P(Sources, FollowFromTheVersion)
{
    FontEncodingObject object = {};
    InitFontEncodingObject(&object, GetParam().version);
    EXPECT_EQ(object.sourceKind, GetParam().source);
    EXPECT_EQ(object.fileVersion, GetParam().version);
    EXPECT_EQ(object.targetKind, kTargetMac);
    EXPECT_EQ(object.encodingState, kOutsideEncodingBlock);
    EXPECT_EQ(object.firstFont, nullptr);
    EXPECT_EQ(object.fontCount, 0);
    EXPECT_EQ(object.bracketCounter, 0u);
}

const SourceCase kSources[] = {
    {"VersionOneIsUnknown", 1, kSourceUnknown},  {"VersionTwoIsFromAMac", 2, kSourceMac},
    {"VersionThreeIsFromAMac", 3, kSourceMac},   {"VersionFourIsFromAPc", 4, kSourcePC},
    {"VersionFiveIsFromAMac", 5, kSourceMac},    {"VersionSixIsUnknown", 6, kSourceUnknown},
    {"VersionZeroIsUnknown", 0, kSourceUnknown}, {"ANegativeVersionIsUnknown", -4, kSourceUnknown},
};
INSTANTIATE_TEST_SUITE_P(FontEncoding, Sources, testing::ValuesIn(kSources), CaseName());

TEST(FontEncodingTest, KindsKeepTheirNumbers)
{
    EXPECT_EQ(kTargetMac, 501);
    EXPECT_EQ(kTargetPC, 502);
    EXPECT_EQ(kSourceMac, 401);
    EXPECT_EQ(kSourcePC, 402);
    EXPECT_EQ(kSourceUnknown, 404);
    EXPECT_EQ(kInEncodingBlock, 601);
    EXPECT_EQ(kOutsideEncodingBlock, 602);
}

} // namespace
