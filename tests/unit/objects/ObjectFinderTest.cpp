// The topmost object at a point of a page.
#include "devices/objects/ObjectFinder.h"

#include "tests/unit/raster/Canvas.h"

#include <gtest/gtest.h>

#include <functional>

namespace vxhost
{
namespace
{

std::optional<FoundObject> FindAt(Point at, const std::function<void(Device *)> &draw, double within = 0.25)
{
    ObjectFinder finder(at, within);
    finder.BeginPage({});
    draw(&finder);
    const Failure failure = finder.EndPage();
    EXPECT_FALSE(failure) << failure.text;
    return finder.Found();
}

// Returns the gray of what is there; -1: paper.
double GrayAt(Point at, const std::string &script)
{
    const auto found = FindAt(at, [&](Device *to) { DrawScript(script, to); });
    return found ? found->paint.colour.ink[0] : -1;
}

TEST(ObjectFinder, FindsWhatIsOnTop)
{
    const std::string script = "0 g 0 0 6 6 re f 0.5 g 4 4 8 8 re f 1 g 20 20 30 30 re f ";
    EXPECT_EQ(GrayAt({5, 5}, script), 0.5);
    EXPECT_EQ(GrayAt({2, 2}, script), 0);
    EXPECT_EQ(GrayAt({7, 2}, script), -1);
    EXPECT_EQ(GrayAt({25, 25}, script), 1); // white is something
    EXPECT_EQ(GrayAt({3.99, 3.99}, script), 0);
}

TEST(ObjectFinder, KeepsToClips)
{
    const std::string script = "0 g q 0 0 2 8 re W 0 0 8 8 re f Q 0.5 g 6 6 8 8 re f ";
    EXPECT_EQ(GrayAt({1, 1}, script), 0);
    EXPECT_EQ(GrayAt({3, 1}, script), -1);
    EXPECT_EQ(GrayAt({7, 7}, script), 0.5);
    const auto found = FindAt({1, 1}, [&](Device *to) { DrawScript(script, to); });
    ASSERT_TRUE(found);
    EXPECT_EQ(found->box.right, 2);
    EXPECT_EQ(found->box.top, 8);
}

TEST(ObjectFinder, FindsLines)
{
    const std::string script = "2 w 2 1 0 d 0 4 m 8 4 l s "; // dashes of 2, gaps of 1
    EXPECT_EQ(GrayAt({1, 4.9}, script), 0);
    EXPECT_EQ(GrayAt({1, 5.2}, script), -1);
    EXPECT_EQ(GrayAt({2.5, 4}, script), -1);
    const auto draw = [](Device *to) { DrawScript("0.01 w 0 4 m 8 4 l s ", to); };
    EXPECT_FALSE(FindAt({1, 4.2}, draw, 0.1));
    const auto found = FindAt({1, 4.2}, draw, 0.5);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, ObjectKind::Stroke);
    EXPECT_DOUBLE_EQ(found->lineWidth, 0.01);
}

TEST(ObjectFinder, KnowsTheColourOfABlendThere)
{
    Shading shading;
    shading.matrix = {10, 0, 0, 10, 0, 0};
    shading.spans = {{0, 1, {{ColourSpace::Gray, {0.25}}, {ColourSpace::Gray, {0.75}}}}};
    const auto draw = [&](Device *to) {
        DrawScript("0 g 0 0 20 20 re f ", to);
        to->Shade(shading);
    };
    const auto at = [&](double x) { return FindAt({x, 5}, draw); };
    ASSERT_TRUE(at(2) && at(8) && at(15));
    EXPECT_EQ(at(2)->kind, ObjectKind::Blend);
    EXPECT_EQ(at(2)->paint.colour.ink[0], 0.25);
    EXPECT_EQ(at(8)->paint.colour.ink[0], 0.75);
    EXPECT_EQ(at(8)->box.right, 10);
    EXPECT_EQ(at(15)->kind, ObjectKind::Fill);
}

// A font that nothing serves has boxes, from the baseline to seven tenths of an em.
TEST(ObjectFinder, FindsTextAndItsLayer)
{
    const TextFont font = {"Asked", "", nullptr, 0};
    GlyphRun run;
    run.font = &font;
    run.matrix = {10, 0, 0, 10, 0, 0};
    run.glyphs = {{1, U'a', 0.5, {2, 3}}, {1, U'é', 0.5, {7, 3}}};
    TextPaint paint;
    paint.fills = true;
    paint.paint = {{ColourSpace::Cmyk, {0, 1, 0, 0}}, true};
    Layer layer;
    layer.name = "Names";
    const auto draw = [&](Device *to) {
        to->BeginLayer(layer);
        to->ShowText({&run, 1}, paint);
        to->EndLayer();
    };
    const auto found = FindAt({8, 9}, draw);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, ObjectKind::Text);
    EXPECT_EQ(found->text, "aé");
    EXPECT_EQ(found->font, "Asked");
    EXPECT_EQ(found->size, 10);
    EXPECT_TRUE(found->paint.overprint);
    ASSERT_TRUE(found->layer);
    EXPECT_EQ(found->layer->name, "Names");
    EXPECT_FALSE(FindAt({8, 11}, draw));
    EXPECT_FALSE(FindAt({13, 5}, draw));
}

TEST(ObjectFinder, FindsTextThatIsPartOfAClip)
{
    const TextFont font = {"Asked", "", nullptr, 0};
    GlyphRun run;
    run.font = &font;
    run.matrix = {10, 0, 0, 10, 0, 0};
    run.glyphs = {{1, U'a', 0.5, {0, 0}}};
    TextPaint paint;
    paint.clips = true;
    const auto draw = [&](Device *to) {
        to->Save();
        to->ShowText({&run, 1}, paint);
        DrawScript("0 g 0 0 20 20 re f ", to);
        to->Restore();
    };
    EXPECT_TRUE(FindAt({2, 2}, draw));
    EXPECT_FALSE(FindAt({8, 2}, draw));
}

} // namespace
} // namespace vxhost
