#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

using namespace vxhost;
using namespace vxtest;

namespace
{

constexpr int64_t kDate = 951782400; // 2000-02-29

PdfOptions Standard(PdfX standard)
{
    PdfOptions options;
    options.standard = standard;
    options.date = kDate;
    return options;
}

std::string Info(DrawnPage &page, const char *key)
{
    return page.File().getTrailer().getKey("/Info").getKey(key).unparse();
}

void Nothing(Device &) {}

TEST(PdfX, SaysWhatTheStandardAsksFor)
{
    DrawnPage page(Nothing, Standard(PdfX::X1a));
    ASSERT_EQ(page.error, "");
    EXPECT_TRUE(page.bytes.starts_with("%PDF-1.4"));
    EXPECT_EQ(Info(page, "/GTS_PDFXVersion"), "(PDF/X-1a:2003)");
    EXPECT_EQ(Info(page, "/Trapped"), "/False");
    EXPECT_EQ(Info(page, "/Title"), "(Untitled)");
    EXPECT_EQ(Info(page, "/CreationDate"), "(D:20000229000000Z)");
    EXPECT_EQ(Info(page, "/ModDate"), "(D:20000229000000Z)");
    EXPECT_TRUE(page.Page().hasKey("/TrimBox"));
    EXPECT_TRUE(page.File().getTrailer().hasKey("/ID"));
    QPDFObjectHandle intent = page.File().getRoot().getKey("/OutputIntents").getArrayItem(0);
    EXPECT_EQ(intent.getKey("/S").unparse(), "/GTS_PDFX");
    EXPECT_EQ(intent.getKey("/OutputConditionIdentifier").unparse(), "(FOGRA39)");
    EXPECT_EQ(StreamText(intent.getKey("/DestOutputProfile")).substr(12, 8), "prtrCMYK");
}

TEST(PdfX, IsOfTheOtherKindToo)
{
    DrawnPage page(Nothing, Standard(PdfX::X3));
    EXPECT_EQ(Info(page, "/GTS_PDFXVersion"), "(PDF/X-3:2003)");
}

TEST(PdfX, IsNotClaimedByAPlainFile)
{
    DrawnPage page(Nothing);
    EXPECT_EQ(Info(page, "/GTS_PDFXVersion"), "null");
    EXPECT_EQ(Info(page, "/CreationDate"), "null");
    EXPECT_FALSE(page.File().getRoot().hasKey("/OutputIntents"));
}

TEST(PdfX, TakesTheDocumentsDate)
{
    PdfOptions options = Standard(PdfX::X1a);
    options.date.reset();
    Page wanted;
    wanted.created = "3/25/94 10:12 AM";
    wanted.date = vxhost::CalendarDate{1994, 3, 25, 10, 12, 0};
    DrawnPage page(Nothing, options, wanted);
    EXPECT_EQ(Info(page, "/CreationDate"), "(D:19940325101200)");
}

TEST(PdfX, NeedsADate)
{
    PdfOptions options = Standard(PdfX::X1a);
    options.date.reset();
    EXPECT_EQ(DrawnPage(Nothing, options).error,
              "PDF/X asks for the date of creation, and the document has none: set "
              "--date to one, in seconds since 1970");
    Page wanted;
    wanted.created = "3/5/94";
    wanted.isDateOrderOpen = true;
    EXPECT_EQ(DrawnPage(Nothing, options, wanted).error,
              "PDF/X asks for the date of creation, and the document has \"3/5/94\", which can be read in "
              "two ways: set --date-order, or --date to one, in seconds since 1970");
    wanted.created = "last Tuesday";
    wanted.isDateOrderOpen = false;
    EXPECT_EQ(
        DrawnPage(Nothing, options, wanted).error,
        "PDF/X asks for the date of creation, and the document has \"last Tuesday\", which is none: set "
        "--date to one, in seconds since 1970");
}

TEST(PdfMetadata, KeepsADateThatCanBeReadInTwoWays)
{
    Page wanted;
    wanted.title = "Größe";
    wanted.creator = "by hand";
    wanted.created = "3/5/94";
    DrawnPage page(Nothing, {}, wanted);
    QPDFObjectHandle info = page.File().getTrailer().getKey("/Info");
    EXPECT_EQ(info.getKey("/Title").getUTF8Value(), "Größe");
    EXPECT_EQ(info.getKey("/Creator").getUTF8Value(), "by hand");
    EXPECT_FALSE(info.hasKey("/CreationDate"));
    EXPECT_EQ(info.getKey("/DocumentDate").getUTF8Value(), "3/5/94");
}

std::string Refusal(const PdfOptions &options)
{
    std::string error;
    EXPECT_EQ(MakePdfDevice(options, nullptr, &error), nullptr);
    return error;
}

TEST(PdfX, RefusesColoursOfAScreen)
{
    PdfOptions options = Standard(PdfX::X1a);
    options.background = Rgb{255, 255, 255};
    EXPECT_EQ(Refusal(options),
              "PDF/X has no colours of a screen, and the background is one: leave it to the paper");
}

TEST(PdfX, RefusesWhatIsNoPressProfile)
{
    PdfOptions options = Standard(PdfX::X3);
    options.profile = "none";
    EXPECT_EQ(Refusal(options),
              "profile \"none\" is no ICC profile that can be read: name one of the press, or fogra39");
    options.profile = VX_SOURCE_DIR "/README.md";
    EXPECT_NE(Refusal(options), "");
}

TEST(PdfX, EmbedsTheUsersProfile)
{
    PdfOptions options = Standard(PdfX::X3);
    options.profile = VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc";
    DrawnPage page(Nothing, options);
    ASSERT_EQ(page.error, "");
    QPDFObjectHandle intent = page.File().getRoot().getKey("/OutputIntents").getArrayItem(0);
    EXPECT_EQ(intent.getKey("/OutputConditionIdentifier").unparse(), "(Custom)");
    EXPECT_FALSE(intent.hasKey("/RegistryName"));
}

} // namespace
