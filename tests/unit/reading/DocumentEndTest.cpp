// Whether a document is whole, and what it leaves open.
#include "host/reading/DocumentEnd.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

namespace vxhost
{
namespace
{

constexpr std::string_view kHeader =
    "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 72 36\n%VX5_FileFormat 3\n%%EndComments\n"
    "%%BeginSetup\n%%EndSetup\n";

DocumentEnd EndOf(const std::string &text, bool looksForOpenThings = true)
{
    std::string error;
    const auto document = Document::FromMemory(std::as_bytes(std::span(text)), &error);
    return FindEnd(*document, looksForOpenThings, {});
}

DocumentEnd EndOfBody(const std::string &body)
{
    return EndOf(std::string(kHeader) + body);
}

TEST(DocumentEnd, IsSaidByOneOfThreeLines)
{
    for (const char *line : {"%%PageTrailer", "%%Trailer", "%%EOF"}) {
        EXPECT_TRUE(EndOfBody(std::string("f\n") + line + "\n").isSaid) << line;
        EXPECT_TRUE(EndOfBody(std::string("f\r") + line + " \t").isSaid) << line;
        // These are other lines.
        EXPECT_FALSE(EndOfBody(std::string("f\n") + line + "s\n").isSaid) << line;
        EXPECT_FALSE(EndOfBody(std::string("f\n ") + line + "\n").isSaid) << line;
        EXPECT_FALSE(EndOfBody(std::string("(") + line + ") Tx\n").isSaid) << line;
    }
    EXPECT_FALSE(EndOfBody("f\n").isSaid);
    EXPECT_FALSE(EndOf("").isSaid);
}

TEST(DocumentEnd, StandsOutsideOfWhatIsPassedOver)
{
    const std::string placed = "%VX5_BeginPlace\n%!PS\n%%EOF\n%%Trailer\n%VX5_EndPlace\n";
    EXPECT_FALSE(EndOfBody(placed).isSaid);
    EXPECT_TRUE(EndOfBody(placed + "%%EOF\n").isSaid);
    EXPECT_FALSE(EndOfBody("%%BeginBinary: 7\n%%EOF\n").isSaid);
    EXPECT_TRUE(EndOfBody("%%BeginBinary: 7\n%%EOF\n%%EndBinary\n%%EOF\n").isSaid);
    // The end of a crop block opens one more, for the interpreter too.
    EXPECT_FALSE(EndOfBody("%VX3_BeginCrops\n%VX3_EndCrops\n%%EOF\n").isSaid);
}

// The interpreter ends at "%%EOF" wherever it stands.
TEST(DocumentEnd, TellsWhatStandsBehindALineThatEndsASection)
{
    const std::string placed = "%VX5_BeginPlace\n%!PS\n%%EOF\n%VX5_EndPlace\n";
    EXPECT_EQ(EndOfBody(placed + "0 g\nf\n%%EOF\n").undrawn, (Undrawn{9, 6}));
    EXPECT_EQ(EndOfBody(placed + "0 g\nf\n").undrawn, (Undrawn{9, 6}));
    EXPECT_EQ(EndOfBody("%%BeginBinary: 7\n%%EOF\n%%EndBinary\nf\n%%EOF\n").undrawn, (Undrawn{8, 2}));
    EXPECT_EQ(EndOfBody(placed + "%VX5_BeginPlace\n(x)\n%VX5_EndPlace\nf\n%%Trailer\nf\n").undrawn,
              (Undrawn{9, 36}));
    EXPECT_EQ(EndOfBody("%VX5_BeginPlace\n%%EOF\n%%EOF\n%VX5_EndPlace\nf\n").undrawn, (Undrawn{8, 2}));
    // Others do not end it there.
    EXPECT_EQ(
        EndOfBody("%VX5_BeginPlace\n%%PageTrailer\n%%Trailer\n%%EOFs\n %%EOF\n%VX5_EndPlace\nf\n").undrawn,
        Undrawn());
}

TEST(DocumentEnd, TellsOfNothingWhereNothingIsLost)
{
    const std::string placed = "%VX5_BeginPlace\n%!PS\n%%EOF\n%VX5_EndPlace\n";
    for (const char *rest : {"", "%%EOF\n", "%%EOF\nf\n", "% f\n\n \t\n%%PageTrailer\nf\n",
                             "%VX5_BeginPlace\nf\n%VX5_EndPlace\n%%EOF\n"})
        EXPECT_EQ(EndOfBody(placed + rest).undrawn, Undrawn()) << rest;
    EXPECT_EQ(EndOfBody("%VX5_BeginPlace\n%%EOF\nf\n").undrawn,
              Undrawn()); // it has no end: the document is cut
    EXPECT_EQ(EndOfBody("%VX5_BeginPlace\nx\n%VX5_EndPlace\nf\n%%EOF\nf\n").undrawn, Undrawn());
}

TEST(DocumentEnd, CountsLinesAsAnEditorDoes)
{
    std::string body = "%VX5_BeginPlace\r\n%%EOF\r\n%VX5_EndPlace\r\nf\r\n";
    EXPECT_EQ(EndOfBody(body).undrawn,
              (Undrawn{8, 4})); // the LF behind the section's end is a line of the interpreter's
    const std::string text = "a\rb\r\nc\n\nd\r\r\n";
    const size_t places[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const uint64_t ends[] = {0, 0, 1, 1, 2, 2, 2, 3, 4, 4, 5, 6, 6};
    for (const size_t place : places)
        EXPECT_EQ(CountLineEnds(std::as_bytes(std::span(text)), std::min(place, text.size())), ends[place])
            << place;
}

// The interpreter's buffer cuts a line after 499 bytes, and what follows is a line of its own.
TEST(DocumentEnd, ALongLineIsSeveral)
{
    EXPECT_TRUE(EndOfBody(std::string(499, ' ') + "%%EOF\n").isSaid);
    EXPECT_TRUE(EndOfBody(std::string(2 * 499, ' ') + "%%EOF\n").isSaid);
    for (const size_t blanks : {1, 498, 500, 997, 999})
        EXPECT_FALSE(EndOfBody(std::string(blanks, ' ') + "%%EOF\n").isSaid) << blanks;
    // Signs before it do not move the cut.
    EXPECT_TRUE(EndOfBody("f " + std::string(497, '%') + "%%EOF\n").isSaid);
    EXPECT_FALSE(EndOfBody("f " + std::string(496, '%') + "%%EOF\n").isSaid);
}

TEST(DocumentEnd, TellsWhetherALineIsCut)
{
    EXPECT_TRUE(EndOfBody("0 0 m\n10 1").isInLine);
    EXPECT_FALSE(EndOfBody("0 0 m\n").isInLine);
    EXPECT_FALSE(EndOfBody("0 0 m\r").isInLine);
    EXPECT_FALSE(EndOfBody("0 0 m\n%%EOF").isInLine); // it is whole
}

TEST(DocumentEnd, CountsWhatIsLeftOpen)
{
    const OpenThings open = EndOfBody("q q Q\nu u u U\n*u\n1 1 1 1 0 0 0 0 0 0 Lb\nBb\n0 To\n%%EOF\n").open;
    EXPECT_EQ(open.saves, 1U);
    EXPECT_EQ(open.groups, 2U);
    EXPECT_EQ(open.compoundPaths, 1U);
    EXPECT_EQ(open.layers, 1U);
    EXPECT_EQ(open.gradients, 1U);
    EXPECT_EQ(open.texts, 1U);
    EXPECT_EQ(OpenText(open), "2 groups, a compound path, a saved state, a layer, a gradient and a text");
    EXPECT_EQ(OpenText(EndOfBody("q Q\nu U\nQ U\n%%EOF\n").open), ""); // what closes nothing counts nothing
    EXPECT_EQ(EndOfBody("u\n%%EOF\nu\n").open.groups, 1U);             // nothing behind the end
}

TEST(DocumentEnd, TakesOperatorsAsTheyStandAlone)
{
    for (const char *body : {"(u) Tx\n", "(a\\)u) Tx\n", "((u) u) Tx\n", "/u 1 Tf\n", "% u\n", "<75 u> Tx\n",
                             "<75\nu\n> Tx\n", "uu\n", "u1\n", "%VX5_BeginPlace\nu\n%VX5_EndPlace\n"})
        EXPECT_EQ(EndOfBody(std::string(body) + "%%EOF\n").open, OpenThings()) << body;
    for (const char *body : {"u\n", "[]u\n", "(a)u(b)\n", "{u}\n", "1 u/n\n", "\tu%\n"})
        EXPECT_EQ(EndOfBody(std::string(body) + "%%EOF\n").open.groups, 1U) << body;
}

TEST(DocumentEnd, OperatorsOfTheSetupAreNotOfTheDrawing)
{
    EXPECT_EQ(EndOf("%!PS-Tavro-3.0\n%%BeginSetup\nq u\n%%EndSetup\n%%EOF\n").open, OpenThings());
    EXPECT_EQ(EndOf("%!PS-Tavro-2.0\n%%EndProlog\nq\n%%EOF\n").open.saves, 1U); // the oldest have none
    EXPECT_EQ(OpenText(EndOf("%!PS-Tavro-3.0\n%%BeginSetup\nq\n").open), "the setup section");
}

TEST(DocumentEnd, OnlyACutDocumentIsLookedThroughUnasked)
{
    EXPECT_EQ(EndOf(std::string(kHeader) + "u\n%%EOF\n", false).open, OpenThings());
    EXPECT_EQ(EndOf(std::string(kHeader) + "u\n", false).open.groups, 1U);
}

// A wrapper's length may reach beyond the file.
TEST(DocumentEnd, OfAWrapperIsThatOfItsSection)
{
    const std::string section = std::string(kHeader) + "u\n%%EOF\n";
    std::string wrapper("\xC5\xD0\xD3\xC6\x1E\0\0\0", 8);
    wrapper += std::string(1, static_cast<char>(section.size())) + std::string(3, '\0');
    wrapper.resize(30, '\0');
    EXPECT_TRUE(EndOf(wrapper + section).isSaid);
    EXPECT_FALSE(EndOf(wrapper + section.substr(0, section.size() - 6) + "      ").isSaid);
    EXPECT_FALSE(EndOf(wrapper + section.substr(0, section.size() - 6)).isSaid);
}

} // namespace
} // namespace vxhost
