// The about box on a host's screen.
#include "plugin/entry/AboutBox.h"

#include "host/toolbox/HostContext.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;
using vxhost::HostContext;
using vxhost::HostScope;

TEST(DoAboutTest, ShowsAndDisposesOneDialog)
{
    HostContext host;
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), kOk);
    EXPECT_EQ(host.dialog.made, 1);
    EXPECT_EQ(host.dialog.shown, 1);
    EXPECT_EQ(host.dialog.disposed, 1);
    EXPECT_EQ(host.purgeHolds, 0) << "the resource may be purged again";
}

TEST(DoAboutTest, AMissingResourceIsTheHostsError)
{
    HostContext host;
    host.aboutBox.reset();
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), static_cast<Result>(vxhost::kResNotFoundError));
    EXPECT_EQ(host.dialog.made, 0);
    EXPECT_EQ(host.dialog.shown, 0);
    EXPECT_EQ(host.purgeHolds, 0);
}

TEST(DoAboutTest, ADialogThatCannotBeMadeIsTheHostsMemoryError)
{
    HostContext host;
    host.dialogsFail = true;
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), static_cast<Result>(vxhost::kMemFullError));
    EXPECT_EQ(host.dialog.shown, 0);
    EXPECT_EQ(host.dialog.disposed, 0);
    EXPECT_EQ(host.purgeHolds, 0) << "released on this path too";
}

struct PlaceCase {
    const char *name;
    Rect screen, dialog, placed; // top, left, bottom, right
};

class Places : public testing::TestWithParam<PlaceCase>
{
};

TEST_P(Places, AreCentredAThirdOfTheWayDown)
{
    HostContext host;
    host.screen = GetParam().screen;
    const HostScope scope(&host);
    Rect bounds = GetParam().dialog;
    auto *bytes = reinterpret_cast<char *>(&bounds);
    CenterDialog(&bytes);
    EXPECT_EQ(bounds.top, GetParam().placed.top);
    EXPECT_EQ(bounds.left, GetParam().placed.left);
    EXPECT_EQ(bounds.bottom, GetParam().placed.bottom);
    EXPECT_EQ(bounds.right, GetParam().placed.right);
}

const PlaceCase kPlaces[] = {
    // (1024 - 300) / 2 = 362; (768 - 200 - 20) / 3 + 20 = 182 + 20
    {"AnOrdinaryScreen", {0, 0, 768, 1024}, {0, 0, 200, 300}, {202, 362, 402, 662}},
    {"WhereTheDialogWasDoesNotMatter", {0, 0, 768, 1024}, {50, -70, 250, 230}, {202, 362, 402, 662}},
    {"WhereTheScreenBeginsDoesNotMatter", {100, 2000, 868, 3024}, {0, 0, 200, 300}, {202, 362, 402, 662}},
    // (1024 - 301) / 2 = 361.5; (768 - 199 - 20) / 3 = 183
    {"OddSpacesAreCut", {0, 0, 768, 1024}, {0, 0, 199, 301}, {203, 361, 402, 662}},
    // (100 - 301) / 2 = -100.5, towards zero; (50 - 201 - 20) / 3 + 20 = -57 + 20
    {"ADialogLargerThanItsScreenIsCutTowardsZero", {0, 0, 50, 100}, {0, 0, 201, 301}, {-37, -100, 164, 201}},
    // (50 - 200 - 20) / 3 = -56.67, towards zero
    {"DownwardSpacesAreCutTowardsZeroToo", {0, 0, 50, 100}, {0, 0, 200, 300}, {-36, -100, 164, 200}},
    {"AnEmptyDialog", {0, 0, 320, 200}, {0, 0, 0, 0}, {120, 100, 120, 100}},
};
INSTANTIATE_TEST_SUITE_P(AboutBox, Places, testing::ValuesIn(kPlaces), CaseName());

TEST(DoAboutTest, TheDialogIsShownWhereItWasPlaced)
{
    HostContext host;
    const HostScope scope(&host);
    ASSERT_EQ(DoAbout(nullptr), kOk);
    EXPECT_EQ(host.dialog.bounds.left, 362);
    EXPECT_EQ(host.dialog.bounds.top, 202);
}

} // namespace
