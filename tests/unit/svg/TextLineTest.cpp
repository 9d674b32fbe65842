// Letter spacing of lines. Every character is 5 wide; a slack of 0.1 is allowed.
#include "devices/svg/TextLine.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace vxhost::svg
{
namespace
{

struct LineCase {
    const char *name;
    const char *text;
    std::vector<double> places;
    double spacing;     // of the line
    std::string pieces; // "how many at their spacing"
};

const LineCase kLines[] = {
    {"OneCharacter", "a", {3}, 0, "1 at 0"},
    {"WidthsAlone", "abc", {3, 8, 13}, 0, "3 at 0"},
    {"WithinTheSlack", "abcd", {0, 5.09, 9.91, 15.09}, 0, "4 at 0"},
    // The fourth would be 0.12 off without.
    {"DriftIsSpacing", "abcdef", {0, 5.04, 10.08, 15.12, 20.16, 25.2}, 0.04, "6 at 0.04"},
    {"EvenSpacing", "abcd", {0, 7, 14, 21}, 2, "4 at 2"},
    {"AKernedPair", "abcde", {0, 5, 9, 14, 19}, 0, "1 at 0, 1 at -1, 3 at 0"},
    {"AKernedPairInASpacedLine", "abcdef", {0, 7, 14, 20, 27, 34}, 2, "2 at 2, 1 at 1, 3 at 2"},
    {"AWideSpace", "ab cd", {0, 5, 10, 18, 23}, 0, "2 at 0, 1 at 3, 2 at 0"},
    {"AGapBeforeASpace", "ab cd", {0, 5, 13, 18, 23}, 0, "2 at 0, 1 at 3, 2 at 0"},
    {"SpacesAtTheEnd", "ab  ", {0, 5, 60, 90}, 0, "4 at 0"},
    {"TheLastPair", "abcd", {0, 5, 10, 19}, 0, "2 at 0, 2 at 4"},
};

class TextLineTest : public testing::TestWithParam<LineCase>
{
};

TEST_P(TextLineTest, HasThesePieces)
{
    std::vector<LineCharacter> line;
    for (size_t i = 0; i < GetParam().places.size(); ++i)
        line.push_back({GetParam().places[i], 5, static_cast<char32_t>(GetParam().text[i])});
    const SpacedLine spaced = FindSpacing(line, 0.1);
    std::string pieces;
    size_t begin = 0;
    for (const SpacedPiece &piece : spaced.pieces) {
        char text[64];
        std::snprintf(text, sizeof text, "%s%zu at %g", begin == 0 ? "" : ", ", piece.end - begin,
                      piece.spacing);
        pieces += text;
        begin = piece.end;
    }
    EXPECT_EQ(pieces, GetParam().pieces);
    EXPECT_NEAR(spaced.spacing, GetParam().spacing, 1e-9);
}
INSTANTIATE_TEST_SUITE_P(Svg, TextLineTest, testing::ValuesIn(kLines), vxtest::CaseName());

} // namespace
} // namespace vxhost::svg
