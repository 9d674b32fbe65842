#include "devices/pdf/Dates.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <ctime>
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

TEST(PdfX, TakesTheFilesDateWhereTheDocumentHasNone)
{
    PdfOptions options = Standard(PdfX::X1a);
    options.date.reset();
    Page wanted;
    wanted.created = "3/5/94";
    wanted.isDateOrderOpen = true;
    wanted.fileDate = 86400;
    DrawnPage page(Nothing, options, wanted);
    EXPECT_EQ(Info(page, "/CreationDate"), "(D:19700102000000Z)");
    EXPECT_EQ(Info(page, "/ModDate"), "(D:19700102000000Z)");
}

TEST(PdfX, TakesNowWhereThereIsNoFile)
{
    PdfOptions options = Standard(PdfX::X3);
    options.date.reset();
    const std::time_t before = std::time(nullptr);
    DrawnPage page(Nothing, options);
    const std::string date = Info(page, "/CreationDate");
    EXPECT_GE(date, "(" + pdf::PdfDate(before) + ")");
    EXPECT_LE(date, "(" + pdf::PdfDate(std::time(nullptr)) + ")");
}

TEST(PdfDates, AreTheFirstThatThereIs)
{
    Page dated, onFile, none;
    dated.date = vxhost::CalendarDate{1994, 3, 25};
    dated.fileDate = onFile.fileDate = 1;
    const auto origin = [](const Page &page, PdfX standard, PdfDateFrom from, bool isGiven) {
        PdfOptions options;
        options.standard = standard;
        options.dateFrom = from;
        if (isGiven)
            options.date = 0;
        return FindDateOrigin(options, page);
    };
    constexpr auto kDrawing = PdfDateFrom::Drawing, kFile = PdfDateFrom::File, kClock = PdfDateFrom::Clock;
    EXPECT_EQ(origin(dated, PdfX::X1a, kDrawing, true), DateOrigin::User);
    EXPECT_EQ(origin(dated, PdfX::X1a, kDrawing, false), DateOrigin::Drawing);
    EXPECT_EQ(origin(onFile, PdfX::X1a, kDrawing, false), DateOrigin::File);
    EXPECT_EQ(origin(none, PdfX::X1a, kDrawing, false), DateOrigin::Clock);
    EXPECT_EQ(origin(dated, PdfX::X1a, kFile, false), DateOrigin::File);
    EXPECT_EQ(origin(none, PdfX::X1a, kFile, false), DateOrigin::Clock);
    EXPECT_EQ(origin(dated, PdfX::X1a, kClock, false), DateOrigin::Clock);
    // A plain file has no date but those that somebody asks for.
    EXPECT_EQ(origin(dated, PdfX::None, kDrawing, false), DateOrigin::Drawing);
    EXPECT_EQ(origin(onFile, PdfX::None, kDrawing, false), DateOrigin::None);
    EXPECT_EQ(origin(onFile, PdfX::None, kFile, false), DateOrigin::File);
    EXPECT_EQ(origin(onFile, PdfX::None, kClock, false), DateOrigin::Clock);
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
              "PDF/X-1a has no colours of a screen, and the background is one: leave it to the paper");
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
