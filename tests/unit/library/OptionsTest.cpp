// Tests what options mean, which go together, and for which formats; and that the table itself makes sense.
#include "library/Options.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

OptionTexts Said(const std::vector<std::pair<const char *, const char *>> &said)
{
    OptionTexts texts;
    for (const auto &[name, text] : said)
        EXPECT_TRUE(texts.Set(name, text)) << name;
    return texts;
}

std::string ErrorOf(const OptionTexts &texts)
{
    try {
        (void)texts.Read();
    } catch (const OptionError &error) {
        return error.what();
    }
    return "";
}

TEST(OptionsTest, HaveNamesOfTheirOwn)
{
    std::set<std::string> names;
    std::set<char> letters;
    for (const Option &option : Options()) {
        EXPECT_TRUE(names.insert(option.name).second) << option.name;
        if (option.letter != 0) {
            EXPECT_TRUE(letters.insert(option.letter).second) << option.name;
        }
        EXPECT_EQ(FindOption(option.name), &option);
    }
}

// A row's standard value has to be what Settings begin with: help and manual state it.
TEST(OptionsTest, TheStandardIsWhatHoldsWhenNobodySaysIt)
{
    const Settings none = OptionTexts().Read();
    for (const Option &option : Options()) {
        if (*option.standard == 0)
            continue;
        const Settings said = Said({{option.name, option.standard}}).Read();
        EXPECT_EQ(said.png.dpi, none.png.dpi) << option.name;
        EXPECT_EQ(said.page.box.has_value(), none.page.box.has_value()) << option.name;
        EXPECT_EQ(said.page.hasMarks, none.page.hasMarks) << option.name;
        EXPECT_EQ(said.png.profile, none.png.profile) << option.name;
        EXPECT_EQ(said.svg.intent, none.svg.intent) << option.name;
        EXPECT_EQ(said.png.overprint, none.png.overprint) << option.name;
        EXPECT_EQ(said.png.samples, none.png.samples) << option.name;
        EXPECT_EQ(said.png.plates.has_value(), none.png.plates.has_value()) << option.name;
        EXPECT_EQ(said.svg.text, none.svg.text) << option.name;
        EXPECT_EQ(said.pdf.standard, none.pdf.standard) << option.name;
        EXPECT_EQ(said.seconds, none.seconds) << option.name;
        EXPECT_EQ(said.memory, none.memory) << option.name;
        EXPECT_EQ(said.output, none.output) << option.name;
        EXPECT_EQ(said.substitute, none.substitute) << option.name;
        EXPECT_EQ(said.script, none.script) << option.name;
        EXPECT_EQ(said.salvage, none.salvage) << option.name;
        const std::string help = option.help;
        EXPECT_NE(help.find(option.standard) != std::string::npos, option.name == std::string("max-time"))
            << option.name << ", where each command has its own";
    }
}

TEST(OptionsTest, MeanWhatTheySay)
{
    const Settings settings = Said({{"fit", "64"},
                                    {"background", "#102030"},
                                    {"box", "1,2,3,4"},
                                    {"profile", "none"},
                                    {"intent", "perceptual"},
                                    {"overprint", "ignore"},
                                    {"samples", "8"},
                                    {"text", "outlines"},
                                    {"date", "86400"},
                                    {"compress", "fast"},
                                    {"max-time", "2.5"},
                                    {"max-memory", "2G"},
                                    {"max-output", "1K"},
                                    {"missing-fonts", "fail"},
                                    {"salvage", "yes"},
                                    {"script", "korean"}})
                                  .Read();
    EXPECT_EQ(settings.png.fit, 64);
    EXPECT_EQ(settings.png.background, (Rgb{16, 32, 48}));
    EXPECT_EQ(settings.pdf.background, (Rgb{16, 32, 48}));
    EXPECT_EQ(settings.page.box->top, 4);
    EXPECT_EQ(settings.svg.profile, "none");
    EXPECT_EQ(settings.png.intent, Intent::Perceptual);
    EXPECT_FALSE(settings.svg.overprint);
    EXPECT_EQ(settings.png.samples, 8);
    EXPECT_EQ(settings.pdf.text, TextOutput::Outlines);
    EXPECT_EQ(settings.svg.text, TextOutput::Outlines);
    EXPECT_EQ(settings.pdf.date, 86400);
    EXPECT_EQ(settings.pdf.compression, Compression::Fast);
    EXPECT_EQ(settings.seconds, 2.5);
    EXPECT_EQ(settings.memory, int64_t{2} << 30);
    EXPECT_EQ(settings.png.memoryLimit, uint64_t{2} << 30);
    EXPECT_EQ(settings.output, 1024);
    EXPECT_FALSE(settings.substitute);
    EXPECT_TRUE(settings.salvage);
    EXPECT_TRUE(ReadingOptionsOf(settings).salvage);
    EXPECT_EQ(ReadingOptionsOf(settings).salvageSeconds, 1.25) << "half of what there is";
    EXPECT_EQ(settings.script, Script::Korean);
    const PageOptions page =
        Said({{"page", "drawing"}, {"margin", "1in"}, {"bleed", "9"}, {"marks", "crop"}}).Read().page;
    EXPECT_TRUE(page.isPainted);
    EXPECT_FALSE(page.size.has_value());
    EXPECT_EQ(page.margin, 72);
    EXPECT_EQ(page.bleed, 9);
    EXPECT_TRUE(page.hasMarks);
    EXPECT_EQ(Said({{"page", "letter"}}).Read().page.size->height, 792);
    EXPECT_EQ(Said({{"zoom", "2"}}).Read().png.dpi, 144);
    EXPECT_EQ(Said({{"samples", "1"}}).Read().png.samples, 1);
    EXPECT_EQ(Said({{"pdf-x", "x1a"}, {"profile", "p.icc"}}).Read().pdf.profile, "p.icc");
    EXPECT_EQ(Said({{"profile", "p.icc"}}).Read().pdf.profile, "p.icc");
    EXPECT_EQ(Said({}).Read().pdf.profile, "") << "a plain PDF is made for no press";
    EXPECT_EQ(Said({{"profile", "none"}}).Read().pdf.profile, "");
    EXPECT_EQ(Said({{"pdf-x", "x4"}}).Read().pdf.standard, PdfX::X4);
    EXPECT_EQ(Said({{"pdf-a", "2u"}}).Read().pdf.archive, PdfA::A2u);
    EXPECT_EQ(Said({{"pdf-a", "none"}}).Read().pdf.archive, PdfA::None);
    EXPECT_FALSE(Said({{"background", "none"}}).Read().png.background.has_value());
}

struct WrongCase {
    const char *name, *text, *error; // how the message begins
};

const WrongCase kWrong[] = {
    {"dpi", "0", "--dpi 0: not a number above 0 and up to 100000"},
    {"dpi", "100001", "--dpi 100001: not a number"},
    {"zoom", "x", "--zoom x: not a number"},
    {"width", "0", "--width 0: not a whole number of pixels from 1 to 131072"},
    {"height", "131073", "--height 131073: not a whole number"},
    {"fit", "1.5", "--fit 1.5: not a whole number"},
    {"background", "reddish", "--background reddish: not a colour"},
    {"box", "1,2,3", "--box 1,2,3: not a box"},
    {"box", "1,2,1,4", "--box 1,2,1,4: the box is empty"},
    {"page", "folio", "--page folio: not a size of a page: give drawing, a name as a4"},
    {"page", "0x5", "--page 0x5: not a size of a page"},
    {"page", "5x-5", "--page 5x-5: not a size of a page"},
    {"page", "201x1in", "--page 201x1in: not a size of a page"},
    {"margin", "-1mm", "--margin -1mm: not a length from 0 to 200 inches: give one as 3mm"},
    {"bleed", "3cm", "--bleed 3cm: not a length"},
    {"bleed", "201in", "--bleed 201in: not a length"},
    {"marks", "all", "--marks all: not known: give one of crop, none"},
    {"intent", "absolute", "--intent absolute: not known: give one of relative, perceptual"},
    {"samples", "3", "--samples 3: not known: give one of 1, 2, 4, 8"},
    {"samples", "", ""}, // not said
    {"pdf-x", "4", "--pdf-x 4: not known: give one of x1a, x3, x4, none"},
    {"pdf-a", "1b", "--pdf-a 1b: not known: give one of 2b, 2u, none"},
    {"compress", "yes", "--compress yes: not known: give one of none, fast, default, small"},
    {"date", "-1", "--date -1: not a date from 1970 to 9999"},
    {"date", "253402300800", "--date 253402300800: not a date from 1970 to 9999"},
    {"date", "1969-12-31", "--date 1969-12-31: not a date from 1970 to 9999"},
    {"date", "22/11/2026", "--date 22/11/2026: not a date from 1970 to 9999"},
    {"date", "2026-02-30", "--date 2026-02-30: not a date from 1970 to 9999"},
    {"max-time", "-1", "--max-time -1: not a time"},
    {"max-memory", "1023K", "--max-memory 1023K: not a size of 1 MiB or more"},
    {"max-output", "1023", "--max-output 1023: not a size of 1 KiB or more"},
    {"max-output", "much", "--max-output much: not a size"},
    {"missing-fonts", "ask", "--missing-fonts ask: not known: give one of substitute, fail"},
    {"script", "greek", "--script greek: not known: give one of auto, roman, japanese, chinese, korean"},
};

TEST(OptionsTest, PlatesAreNamesOfInks)
{
    using Names = std::vector<std::string>;
    EXPECT_FALSE(Said({{"plates", "all"}}).Read().png.plates);
    EXPECT_EQ(Said({{"plates", "none"}}).Read().png.plates->inks, Names());
    const Settings said = Said({{"plates", "Cyan,Sea\\, deep"}, {"plate-colours", "gray"}}).Read();
    EXPECT_EQ(said.png.plates->inks, (Names{"Cyan", "Sea, deep"}));
    EXPECT_TRUE(said.png.plates->isGray);
    EXPECT_FALSE(Said({{"plates", "Cyan"}}).Read().png.plates->isGray);
    EXPECT_EQ(ErrorOf(Said({{"plate-colours", "gray"}})),
              "--plate-colours gray and no plates: give --plates and the name of an ink");
    EXPECT_TRUE(ErrorOf(Said({{"plates", "Cyan,"}})).starts_with("--plates Cyan,: a name is missing"));
}

TEST(OptionsTest, LinesToEditAreOfSvgAlone)
{
    const Settings settings = Said({{"text", "editable"}}).Read();
    EXPECT_EQ(settings.svg.text, TextOutput::Editable);
    EXPECT_EQ(settings.pdf.text, TextOutput::Text);
    EXPECT_TRUE(ReadingOptionsOf(settings).readsTexts);
    EXPECT_FALSE(ReadingOptionsOf({}).readsTexts);
}

TEST(OptionsTest, TellWhatIsWrongWithAValue)
{
    for (const WrongCase &row : kWrong) {
        const std::string error = ErrorOf(Said({{row.name, row.text}}));
        EXPECT_EQ(error.substr(0, std::string(row.error).size()), row.error);
        EXPECT_EQ(error.empty(), *row.error == 0) << error;
    }
}

TEST(OptionsTest, SomeDoNotGoTogether)
{
    EXPECT_EQ(ErrorOf(Said({{"dpi", "72"}, {"fit", "9"}})),
              "more than one size: give --dpi, or --zoom, or --fit, or --width and --height");
    EXPECT_EQ(ErrorOf(Said({{"width", "72"}, {"height", "9"}})), "");
    EXPECT_EQ(ErrorOf(Said({{"page", "a4"}, {"box", "bbox"}})),
              "--page and --box both say what is shown: leave one out");
    EXPECT_TRUE(
        ErrorOf(Said({{"pdf-x", "x3"}, {"profile", "none"}})).starts_with("--pdf-x and --profile none"));
    EXPECT_TRUE(
        ErrorOf(Said({{"pdf-a", "2b"}, {"profile", "none"}})).starts_with("--pdf-a and --profile none"));
}

TEST(OptionsTest, LaterOnesReplaceASizeAsAWhole)
{
    const OptionTexts texts = Said({{"width", "9"}, {"height", "9"}, {"box", "bbox"}, {"text", "text"}});
    EXPECT_EQ(texts.OverriddenBy(Said({{"fit", "3"}, {"text", "outlines"}})),
              Said({{"fit", "3"}, {"box", "bbox"}, {"text", "outlines"}}));
    EXPECT_EQ(texts.OverriddenBy(Said({{"width", "3"}})),
              Said({{"width", "3"}, {"box", "bbox"}, {"text", "text"}}));
    EXPECT_EQ(texts.OverriddenBy(Said({{"page", "a4"}})),
              Said({{"width", "9"}, {"height", "9"}, {"page", "a4"}, {"text", "text"}}));
    EXPECT_EQ(texts.OverriddenBy({}), texts);
}

struct MeantCase {
    const char *name, *text;
    unsigned formats;
    bool isMeant;
};

const MeantCase kMeantCases[] = {
    {"box", "0,0,1,1", kSvg, true},
    {"page", "drawing", kPng, true},
    {"marks", "crop", kSvg, true},
    {"dpi", "72", kPng, true},
    {"dpi", "72", kPdf | kSvg, false},
    {"dpi", "72", kPdf | kPng, true},
    {"pdf-x", "x1a", kPng, false},
    {"pdf-x", "none", kPng, false},
    {"overprint", "simulate", kPdf, false},
    {"text", "text", kSvg, true},
    {"max-time", "1", kSvg, true}, // of any document
    {"profile", "none", kSvg, true},
    {"pdf-a", "2b", kPng, false},
    {"profile", "fogra39", kPdf, true}, // as output intent
    {"profile", "fogra39", kPdf | kPng, true},
    {"dpi", "72", kTiff, true},
    {"profile", "fogra39", kTiff, true},
    {"background", "white", kTiff, false}, // paper has no ink
    {"intent", "relative", kTiff, false},
    {"spots", "process", kTiff, true},
};

TEST(OptionsTest, MeanSomethingForSomeFormats)
{
    for (const MeantCase &row : kMeantCases) {
        const OptionTexts texts = Said({{row.name, row.text}});
        if (row.isMeant)
            EXPECT_NO_THROW(texts.CheckMeant(row.formats)) << row.name;
        else
            EXPECT_THROW(texts.CheckMeant(row.formats), OptionError) << row.name;
    }
}

TEST(FormatsTest, AreFoundByTheirNames)
{
    EXPECT_EQ(BitOf(*FindFormat("pdf")), kPdf);
    EXPECT_EQ(BitOf(*FindFormat("svg")), kSvg);
    EXPECT_EQ(BitOf(*FindFormat("png")), kPng);
    EXPECT_EQ(BitOf(*FindFormat("tiff")), kTiff);
    EXPECT_EQ(FindFormat("tif"), FindFormat("tiff"));
    EXPECT_EQ(FindFormat("PNG"), nullptr);
    EXPECT_EQ(FindFormat(""), nullptr);
    EXPECT_EQ(NamesOf(kPdf | kPng), "pdf and png");
}

} // namespace

} // namespace vxhost
