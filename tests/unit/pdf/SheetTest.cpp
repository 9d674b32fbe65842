// Tests the boxes and marks that say where a page is cut.
#include "host/drawing/CropMarks.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

using namespace vxhost;
using namespace vxtest;

namespace
{

// The page is cut at 100 by 50, with a bleed of 9: marks end 9 points and 5 mm, which are 14.173, beyond the cut.
Page MarkedSheet()
{
    Page page;
    page.sheet = Sheet{{0, 0, 100, 50}, {-9, -9, 109, 59}, true};
    page.box = {-24, -24, 124, 74};
    return page;
}

std::string BoxOf(DrawnPage &page, const char *key)
{
    return page.Page().getKey(key).unparse();
}

TEST(Sheet, HasItsBoxesOneInTheOther)
{
    for (const PdfX standard : {PdfX::None, PdfX::X1a, PdfX::X3}) {
        PdfOptions options;
        options.standard = standard;
        options.date = 0;
        DrawnPage page([](Device &) {}, options, MarkedSheet());
        ASSERT_EQ(page.error, "");
        EXPECT_EQ(BoxOf(page, "/MediaBox"), "[ -24 -24 124 74 ]");
        EXPECT_EQ(BoxOf(page, "/BleedBox"), "[ -9 -9 109 59 ]");
        EXPECT_EQ(BoxOf(page, "/TrimBox"), "[ 0 0 100 50 ]");
        EXPECT_FALSE(page.Page().hasKey("/ArtBox")) << "no standard takes it beside a trim box";
        EXPECT_FALSE(page.Page().hasKey("/CropBox")) << "the marks are to be seen";
    }
}

TEST(Sheet, IsThePageWithoutAWord)
{
    DrawnPage page([](Device &) {});
    EXPECT_EQ(BoxOf(page, "/MediaBox"), "[ 0 0 100 50 ]");
    EXPECT_EQ(BoxOf(page, "/TrimBox"), "[ 0 0 100 50 ]");
    EXPECT_FALSE(page.Page().hasKey("/BleedBox"));
}

TEST(Sheet, HasMarksOnEveryPlate)
{
    const Page sheet = MarkedSheet();
    DrawnPage page(
        [&](Device &device) {
            BeginMarkedPage(sheet, &device);
            device.FillPath(Rectangle(0, 0, 9, 9), {});
            EndMarkedPage(sheet, &device);
        },
        {}, sheet);
    QPDFObjectHandle ink = page.Resource("ColorSpace", "Spot1");
    EXPECT_EQ(ink.getArrayItem(0).unparse(), "/Separation");
    EXPECT_EQ(ink.getArrayItem(1).unparse(), "/All");
    EXPECT_EQ(ink.getArrayItem(3).getKey("/C1").unparse(), "[ 1 1 1 1 ]");
    const std::string program = page.Program();
    EXPECT_TRUE(program.starts_with("q\n-9 -9 m\n109 -9 l\n109 59 l\n-9 59 l\nh\nW n\n")) << program;
    const size_t end =
        program.find("Q\n/Spot1 CS\n1 SCN\n.25 w\n-9 0 m\n-23.17323 0 l\n0 -9 m\n0 -23.17323 l\n"
                     "109 0 m\n123.17323 0 l\n100 -9 m\n100 -23.17323 l\n");
    EXPECT_NE(end, std::string::npos) << program;
}

} // namespace
