// Tests what a press makes of a document: inks of pixels, plates, coverage and the check. Levels are 255 times the amount of ink, rounded.
#include "tests/library/Support.h"

#include <nlohmann/json.hpp>

#include <map>
#include <vector>

namespace vxtest
{
namespace
{

using Json = nlohmann::json;

// Returns the inks of the only pixel of a box, by their names, without those that it has none of.
std::map<std::string, int> InksAt(vx_document *document, double x, double y)
{
    vx_inks inks = {};
    inks.size = sizeof inks;
    inks.left = x - 0.5;
    inks.bottom = y - 0.5;
    inks.right = x + 0.5;
    inks.top = y + 0.5;
    inks.width = inks.height = 1;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_inks(document, &inks, &error), VX_OK) << error.text;
    std::map<std::string, int> found;
    for (size_t i = 0; i < inks.ink_count; ++i) {
        if (inks.amounts[i] > 0)
            found[inks.names[i]] = inks.amounts[i];
    }
    return found;
}

Json ObjectAt(vx_document *document, double x, double y)
{
    const char *json = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_object_at(document, x, y, 0.25, &json, &error), VX_OK) << error.text;
    return json == nullptr ? Json() : Json::parse(json);
}

TEST(Inks, StandBesideEachOther)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    vx_inks inks = {};
    inks.size = sizeof inks;
    inks.width = 2;
    inks.height = 1;
    vx_error error = kNoError;
    ASSERT_EQ(vx_document_inks(document.get(), &inks, &error), VX_OK) << error.text;
    ASSERT_EQ(inks.ink_count, 4U);
    EXPECT_STREQ(inks.names[3], "Black");
    EXPECT_EQ(std::vector<uint8_t>(inks.amounts, inks.amounts + 8),
              (std::vector<uint8_t>{0, 0, 0, 255, 0, 0, 0, 0}));
}

// The sample paints the ink Brick full, with 70 % and with 40 %, and Night with 15 % along its lower edge.
TEST(Inks, AreThoseOfSpotInks)
{
    const OwnedDocument document = OpenSample("spot-inks");
    EXPECT_EQ(InksAt(document.get(), 30, 60), (std::map<std::string, int>{{"Brick", 255}}));
    EXPECT_EQ(InksAt(document.get(), 100, 60), (std::map<std::string, int>{{"Brick", 178}}));
    EXPECT_EQ(InksAt(document.get(), 275, 25), (std::map<std::string, int>{{"Night", 38}}));
    EXPECT_EQ(InksAt(document.get(), 250, 180), (std::map<std::string, int>{}));
}

TEST(Objects, HaveTheirColours)
{
    const OwnedDocument document = OpenSample("spot-inks");
    const Json brick = ObjectAt(document.get(), 100, 60);
    EXPECT_EQ(brick["kind"], "fill");
    EXPECT_EQ(brick["colour"]["spot"], "Brick");
    EXPECT_NEAR(brick["colour"]["amount"].get<double>(), 0.7, 1e-4);
    EXPECT_EQ(brick["box"], Json({90, 40, 150, 130}));
    EXPECT_EQ(brick["layer"], nullptr);
    EXPECT_TRUE(ObjectAt(document.get(), -50, 60).is_null());
}

// Its layer Sky is a box of light blue behind all else.
TEST(Objects, AreOfTheLayersThatAreShown)
{
    const OwnedDocument document = OpenSample("layers");
    const Json sky = ObjectAt(document.get(), 5, 195);
    EXPECT_EQ(sky["layer"], "Sky");
    EXPECT_EQ(sky["printing"], true);
    Set(document.get(), "hide", "Sky");
    EXPECT_TRUE(ObjectAt(document.get(), 5, 195).is_null());
}

int KeepPlate(void *context, const char *ink, const void *bytes, size_t size)
{
    auto &plates = *static_cast<std::vector<std::pair<std::string, std::string>> *>(context);
    plates.emplace_back(ink, std::string(static_cast<const char *>(bytes), size));
    return 0;
}

TEST(Plates, AreFilesOfAllInks)
{
    const OwnedDocument document = OpenSample("spot-inks");
    Set(document.get(), "dpi", "36");
    for (const auto &[format, magic] : {std::pair("png", "\x89PNG"), std::pair("tiff", "II*")}) {
        std::vector<std::pair<std::string, std::string>> plates;
        vx_error error = kNoError;
        ASSERT_EQ(vx_document_plates(document.get(), format, KeepPlate, &plates, &error), VX_OK)
            << error.text;
        std::string names;
        for (const auto &[ink, bytes] : plates) {
            names += ink + " ";
            EXPECT_TRUE(bytes.starts_with(magic)) << ink;
        }
        EXPECT_EQ(names, "Cyan Magenta Yellow Black Night Brick ");
    }
}

TEST(Plates, MayNotBeLongerThanTheLimit)
{
    const OwnedDocument document = OpenSample("spot-inks");
    Set(document.get(), "max-output", "1K");
    vx_error error = kNoError;
    std::vector<std::pair<std::string, std::string>> plates;
    EXPECT_EQ(vx_document_plates(document.get(), "png", KeepPlate, &plates, &error), VX_LIMIT) << error.text;
    EXPECT_TRUE(plates.empty());
}

TEST(Coverage, IsMeasured)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Set(document.get(), "dpi", "72");
    const char *json = nullptr;
    std::string map;
    vx_error error = kNoError;
    ASSERT_EQ(vx_document_coverage(document.get(), 50, &json, AppendBytes, &map, &error), VX_OK)
        << error.text;
    const Json coverage = Json::parse(json);
    EXPECT_EQ(coverage["inks"][3], Json({{"name", "Black"}, {"spot", false}, {"mean", 0.5}}));
    EXPECT_EQ(coverage["total"]["most"], 1);
    EXPECT_EQ(coverage["total"]["mostAt"], Json({0.5, 35.5}));
    EXPECT_EQ(coverage["above"], Json({{"limit", 0.5}, {"share", 0.5}, {"area", 1296}}));
    EXPECT_TRUE(map.starts_with("\x89PNG"));
}

// The line is a quarter of a point wide, less than half a point.
TEST(Check, GoesByItsLimits)
{
    const OwnedDocument document = OpenBytes(DrawingOf("0 G\n0.25 w\n10 10 m\n60 10 l\nS\n"));
    vx_check check = {};
    check.size = sizeof check;
    check.name = "line.vx";
    check.limits = R"({"limits": {"hairline": 0.5}, "severities": {"hairline": "error", "inks": "ignore"}})";
    std::string page;
    check.page = AppendBytes;
    check.context = &page;
    vx_error error = kNoError;
    ASSERT_EQ(vx_document_check(document.get(), &check, &error), VX_OK) << error.text;
    const Json found = Json::parse(check.json);
    EXPECT_EQ(found["file"], "line.vx");
    EXPECT_EQ(found["errors"], 1);
    ASSERT_EQ(found["findings"].size(), 1U);
    EXPECT_EQ(found["findings"][0]["name"], "hairline");
    EXPECT_EQ(found["findings"][0]["value"], 0.25);
    EXPECT_STREQ(
        check.text,
        "  error    hairline                    1  lines thinner than 0.5 pt, the thinnest of 0.25 pt; at "
        "35.0, 10.0 pt\n");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>")) << page.substr(0, 40);
    EXPECT_NE(page.find("\"file\":\"line.vx\""), std::string::npos);
}

TEST(Check, RefusesLimitsThatAreNone)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    vx_check check = {};
    check.size = sizeof check;
    for (const auto &[limits, text] :
         {std::pair(R"({"limits": {"hairline": -1}})", "limits: hairline is -1, not a number from 0 to 1000"),
          std::pair("{", "limits: no JSON at byte 2: mend it there")}) {
        check.limits = limits;
        vx_error error = kNoError;
        EXPECT_EQ(vx_document_check(document.get(), &check, &error), VX_WRONG_OPTION);
        EXPECT_STREQ(error.text, text);
    }
}

} // namespace
} // namespace vxtest
