// Tests that layers, groups, spot inks and texts are told at the place among the calls where the drawing has them.
#include "host/reading/LineWalk.h"
#include "host/trace/TraceLines.h"
#include "tests/unit/reading/PluginReading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

constexpr std::string_view kVersion3 = "%VX5_FileFormat 3\n";

std::string Header(std::string_view version = kVersion3)
{
    return "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 72 36\n%%Creator: Tavro Vellumcraft\n%%DocumentProcSets: "
           "Tavro_Vellumcraft\n" +
           std::string(version) + "%%EndComments\n";
}

// A line that begins like this is no call.
bool IsEvent(std::string_view line)
{
    constexpr std::string_view kEvents[] = {"begin-", "end-", "set-"};
    return std::ranges::any_of(kEvents, [&](std::string_view event) { return line.starts_with(event); });
}

class StructureTest : public vxtest::PluginReading
{
  protected:
    using Lines = std::vector<std::string>;

    static Lines Trace(std::string_view bytes, bool withStructure = true, bool withTexts = false,
                       bool salvage = false)
    {
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        ReadingOptions options;
        options.readsStructure = withStructure;
        options.readsTexts = withTexts;
        options.salvage = salvage;
        Reading reading(installation_, *document, std::move(options));
        Lines lines;
        TraceLines writer(
            {[](void *to, std::string_view line) { static_cast<Lines *>(to)->emplace_back(line); }, &lines});
        (void)reading.Trace(writer, withStructure);
        return lines;
    }

    // Each event, and "f" for a fill, "s" for a stroke, "t" for a text: joined with blanks, the result last.
    static std::string Short(std::string_view bytes, bool withTexts = false)
    {
        std::string text;
        for (const std::string &line : Trace(bytes, true, withTexts)) {
            const char *mark = line == "fill"              ? "f"
                               : line == "stroke"          ? "s"
                               : line.starts_with("show ") ? "t"
                                                           : nullptr;
            if (mark != nullptr || IsEvent(line) || (line.starts_with("result") && line != "result 0"))
                text += (text.empty() ? "" : ", ") + std::string(mark != nullptr ? mark : line.c_str());
        }
        return text;
    }

    static std::string ShortBody(std::string_view body, bool withTexts = false)
    {
        return Short(Header() + "%%BeginSetup\n%%EndSetup\n" + std::string(body) + "%%EOF\n", withTexts);
    }
};

const std::string kPath = "0 0 m 9 0 L ";
const std::string kFill = "0 g " + kPath + "f\n"; // before a colour is set nothing is filled

TEST_F(StructureTest, IsToldBetweenTheCallsThatItStandsBetween)
{
    EXPECT_EQ(ShortBody("u\n" + kFill + "U\n"), "begin-group, f, end-group");
    EXPECT_EQ(ShortBody("1 0 1 1 0 0 4 79 128 300 Lb\n(Ground) Ln\n" + kFill + "LB\n"),
              "begin-layer (Ground) 1 0 1 1 0 4 79 128 255, f, end-layer");
    // The name may come late: layers are known before the first call.
    EXPECT_EQ(ShortBody("1 1 1 1 0 0 0 0 0 0 Lb\n" + kFill + "(Late) Ln\n" + kFill + "LB\n"),
              "begin-layer (Late) 1 1 1 1 0 0 0 0 0, f, f, end-layer");
    // Seven operands are enough: the printing flag is the seventh from the top.
    EXPECT_EQ(ShortBody("1 0 0 0 0 0 0 Lb\n" + kFill + "LB\n"),
              "begin-layer () 1 1 1 1 0 0 0 0 0, f, end-layer");
    EXPECT_EQ(ShortBody("0.5 0.25 0 0 (Rust) 0.5 x\n" + kPath + "f\n" + kFill),
              "set-fill-spot (Rust) 0.5 0.5 0.25 0 0, f, set-fill-spot, f");
    EXPECT_EQ(ShortBody("0 1 0 0 <5275> 0 X\n1 g\n0 0 m 9 0 L S\n1 K\n"),
              "set-stroke-spot (Ru) 1 0 1 0 0, s, result -30601");
}

TEST_F(StructureTest, OperatorsOnOneLineAreToldApart)
{
    EXPECT_EQ(ShortBody("0 g 0 G u 0 0 m 9 0 L f U u 0 0 m 9 0 L S U 0 0 m 9 0 L f\n"),
              "begin-group, f, end-group, begin-group, s, end-group, f");
    EXPECT_EQ(ShortBody("1 0 0 0 (a) 0 x 0 0 m 9 0 L f 0 g 0 0 m 9 0 L f\n"),
              "set-fill-spot (a) 1 1 0 0 0, f, set-fill-spot, f");
    EXPECT_EQ(ShortBody("1 1 1 1 0 0 0 0 0 0 Lb(a)Ln 0 g 0 0 m 9 0 L f LB u\n"),
              "begin-layer (a) 1 1 1 1 0 0 0 0 0, f, end-layer, begin-group");
    // A line end would make a line of its own of what follows the blank.
    EXPECT_EQ(ShortBody("u %%EOF\n" + kFill + "U\n"), "begin-group, f, end-group");
    // No blank stands where the line could be taken apart: what happens on the line comes first.
    EXPECT_EQ(ShortBody("0 g 0 0 m 9 0 L u{f}U\n"), "f, begin-group, end-group");
}

TEST_F(StructureTest, OperandsMayStandOnLinesBefore)
{
    EXPECT_EQ(ShortBody("1 1 1 1 0\n0 0 1 2\n\r\n3\nLb\n(\\101)\n% u\nLn LB\n"),
              "begin-layer (A) 1 1 1 1 0 0 1 2 3, end-layer");
    EXPECT_EQ(ShortBody(kFill + ".5\n0 0 0\n(a\\)b)\n0\nx\n" + kPath + "f\n"),
              "f, set-fill-spot (a\\051b) 1 0.5 0 0 0, f");
    // Operands stay through what is passed over.
    EXPECT_EQ(ShortBody(kFill + ".5 0\n%%BeginBinary: 2\nu x g\n%%EndBinary\n0 0 (a) 0 x\n" + kPath + "f\n"),
              "f, set-fill-spot (a) 1 0.5 0 0 0, f");
}

TEST_F(StructureTest, CountsWhereTheInterpreterReads)
{
    const std::string setup = "%%BeginSetup\n%%EndSetup\n";
    struct Row {
        const char *what;
        std::string document;
        const char *events;
    };
    const std::string group = "u\n" + kFill + "U\n";
    const std::string end = "%%EOF\n";
    const std::string windows = "%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.0\n";
    const std::string wrapped = Header() + setup + group + end;
    const auto word = [](size_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i, value >>= 8)
            bytes += static_cast<char>(value & 0xFF);
        return bytes;
    };
    const Row rows[] = {
        {"version 2", Header("") + "%%EndSetup\n" + group + end, "begin-group, f, end-group"},
        {"version 2, before its setup ends", Header("") + "u\n%%EndSetup\n" + kFill + end, "f"},
        {"version 3", Header() + setup + group + end, "begin-group, f, end-group"},
        {"version 4", Header(windows) + setup + group + end, "begin-group, f, end-group"},
        {"version 5", Header("%VX5_FileFormat 5\n") + setup + group + end, "begin-group, f, end-group"},
        {"in the header", Header() + "u\n" + setup + kFill + end, "f"},
        {"in the setup section", Header() + "%%BeginSetup\nu\n%%EndSetup\n" + kFill + end, "f"},
        {"hidden in the setup section",
         Header() + "%%BeginSetup\n%VX5_BeginGradient: a\n%_u \n%%EndSetup\n" + kFill + end,
         "f"}, // a hidden operator has two bytes: "u " is none
        {"hidden behind the setup section", Header() + setup + "%_Lb\n" + kFill + end, "f"},
        {"in a gradient's definition",
         Header() + "%%BeginSetup\n%VX5_BeginGradient: a\nu\n%%EndSetup\n" + kFill + end, "begin-group, f"},
        {"in a binary block", Header() + setup + "%%BeginBinary: 1\nu\n%%EndBinary\n" + kFill + end, "f"},
        {"in a placed block", Header() + setup + "%VX5_BeginPlace\nu\n%VX5_EndPlace\n" + kFill + end, "f"},
        {"in crop marks", Header() + setup + "%VX3_BeginCrops\nu\n%VX3_EndCrops\nu\n" + kFill + end, ""},
        {"behind the trailer", Header() + setup + kFill + "%%PageTrailer\nu\n" + kFill + end, "f"},
        {"behind the end", Header() + setup + kFill + end + "u\n", "f"},
        {"in a comment", Header() + setup + "%u\n0 w % u\n" + kFill + end, "f"},
        {"in a string", Header() + setup + "( u \\) u (u)u ) pop\n" + kFill + end, "f"},
        {"in hex data", Header() + setup + "<\nBd\n>zz\n" + kFill + "u\n" + end, "f, begin-group"},
        {"as a name", Header() + setup + "/u pop /x //u pop\n" + kFill + end, "f"},
        {"as a part of a word", Header() + setup + "uu au u1 *x\n" + kFill + end, "f"},
        {"lines end with CR", Header() + setup + "u\r" + kFill + "U\r" + end, "begin-group, f, end-group"},
        {"lines end with CR LF", Header() + setup + "u\r\n" + kFill + "U\r\n" + end,
         "begin-group, f, end-group"},
        {"without a last line end", Header() + setup + kFill + "u", "f, begin-group"},
        {"in an EPS wrapper",
         "\xC5\xD0\xD3\xC6" + word(30) + word(wrapped.size()) + std::string(18, '\0') + wrapped + "u\n" +
             kFill,
         "begin-group, f, end-group"},
        {"in a long line", Header() + setup + std::string(490, ' ') + "0 w u  " + kFill + end,
         "begin-group, f"},
        {"cut in two", Header() + setup + std::string(498, ' ') + "wu " + kFill + end, "begin-group, f"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(Short(row.document), row.events) << row.what;
}

// The stops that are written last are painted first, the innermost of a radial blend among the last.
TEST_F(StructureTest, BlendsOfSpotInksAreToldByTheirParts)
{
    const std::string lake = "1 0.5 0 0 (Lake) 0 3 50 ", moss = "0.5 0 1 0 (Moss) 0.25 3 50 ";
    struct Row {
        const char *what;
        std::string definitions;
        const char *parts; // of the blend (a); null: nobody is told of it
    };
    const Row rows[] = {
        {"two inks", "(a) 0 2 Bd\n[\n" + lake + "0 Bs\n" + moss + "100 Bs\nBD\n", "(Moss) 0.75 (Lake) 1"},
        {"radial", "(a) 1 2 Bd\n[\n" + lake + "0 Bs\n" + moss + "100 Bs\nBD\n", "(Moss) 0.75 (Lake) 1"},
        {"to white and to process", "(a) 0 3 Bd\n1 0 50 0 Bs\n" + lake + "50 Bs\n0 1 1 0 1 50 100 Bs\nBD\n",
         "() 0 (Lake) 1 (Lake) 1 () 0"},
        {"grays among them", "(a) 0 4 Bd\n0 0 50 0 Bs\n1 0 50 30 Bs\n2 50 60 Bs\n" + lake + "100 Bs\nBD\n",
         "(Lake) 1 () 0"},
        {"fewer than there are", "(a) 0 2 Bd\n" + lake + "0 Bs\n" + moss + "50 Bs\n" + lake + "100 Bs\nBD\n",
         "(Lake) 1 (Moss) 0.75"},
        {"fewer, radial", "(a) 1 2 Bd\n" + lake + "0 Bs\n" + moss + "50 Bs\n" + lake + "100 Bs\nBD\n",
         "(Moss) 0.75 (Lake) 1"},
        {"another kind, painted as a radial one from the other end",
         "(a) 2 2 Bd\n" + lake + "0 Bs\n" + moss + "50 Bs\n" + lake + "100 Bs\nBD\n", "(Moss) 0.75 (Lake) 1"},
        {"more than there are", "(a) 0 9 Bd\n" + lake + "0 Bs\n" + moss + "50 Bs\nBD\n",
         "(Moss) 0.75 (Lake) 1"},
        {"one stop", "(a) 0 1 Bd\n" + lake + "0 Bs\nBD\n", "(Lake) 1 (Lake) 1"},
        {"the first of a name",
         "(a) 0 2 Bd\n" + lake + "0 Bs\n" + moss + "9 Bs\nBD\n(a) 0 1 Bd\n" + moss + "0 Bs\nBD\n",
         "(Moss) 0.75 (Lake) 1"},
        {"longer spellings are none", "(a) 0 1 Bd\n" + lake + "0 Bs\n" + moss + "9 Bsx\nBD\n",
         "(Lake) 1 (Lake) 1"},
        {"process alone", "(a) 0 2 Bd\n0 1 0 0 1 50 0 Bs\n0 0 50 9 Bs\nBD\n", nullptr},
        {"another has inks", "(a) 0 1 Bd\n0 1 0 0 1 50 0 Bs\nBD\n(b) 0 1 Bd\n" + lake + "0 Bs\nBD\n", ""},
        {"an ink with an operand too few", "(a) 0 1 Bd\n0 1 0 (Lake) 0 3 50 0 Bs\nBD\n", ""},
    };
    for (const Row &row : rows) {
        const std::string events =
            Short(Header() + "%%BeginSetup\n%VX5_BeginGradient: (a)\n" + row.definitions + "%%EndSetup\n" +
                  "0 0 m 9 0 L\nBb\n1 (a) 0 0 0 1 1 0 0 1 0 0 Bg\nf\n0 BB\n" + kFill + "%%EOF\n");
        const std::string parts = row.parts != nullptr ? row.parts : "";
        EXPECT_EQ(events, row.parts == nullptr
                              ? "f"
                              : "set-fill-blend" + (parts.empty() ? "" : " " + parts) + ", set-fill-blend, f")
            << row.what;
    }
}

TEST_F(StructureTest, TextsAreToldToWhoAsksForThem)
{
    const std::string text = "0 g\n2 To\n1 0 0 1 0 0 0 Tp\nTP\n0 Tr\n/_Helvetica 9 Tf\n(a) Tx\n(b) Tx\nTO\n";
    EXPECT_EQ(ShortBody(text), "t, t");
    EXPECT_EQ(ShortBody(text, true), "begin-text 2, begin-text-path, t, t, end-text");
    // What follows a text is outside of it.
    EXPECT_EQ(
        ShortBody("0 g 1 To 1 0 0 1 0 0 0 Tp TP 0 Tr /_Helvetica 9 Tf (a) Tx TO (b) Tx 0 To TO\n", true),
        "begin-text 1, begin-text-path, t, end-text, t, begin-text 0, end-text");
    // The oldest documents begin a text in four ways, each of which has an operand or none.
    for (const char *begin : {"e", "a", "r"})
        EXPECT_EQ(ShortBody("0 g 0 G\n[1 0 0 1 9 9]" + std::string(begin) +
                                "\n/_Helvetica 9 9 0 0 z (a)t (b)t T\n" + kFill,
                            true),
                  "begin-text 0, t, t, end-text, f")
            << begin;
    EXPECT_EQ(ShortBody("0 g\n[1 0 0 1 9 9]o\n/_Helvetica 9 9 0 0 z\n(a)t\nT\n", true),
              "begin-text 0, end-text");
}

TEST_F(StructureTest, DocumentsWithoutAnyHaveNoCompanion)
{
    const auto isThere = [](const std::string &text) {
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(text)), &error);
        return ScanStructure(*document, text, 3, {}).isThere;
    };
    const std::string start = Header() + "%%BeginSetup\n%%EndSetup\n";
    EXPECT_FALSE(isThere(start + kFill + "0 g 1 G 0 0 0 1 k\n% u\n(u x X) pop\n"));
    EXPECT_TRUE(isThere(start + kFill + "u\n"));
}

// Cuts the body's lines into tokens and puts them together again: as many on a line as fit, or one on each. Comments stay where they
// are, and with them the lines' limits.
std::string Repacked(std::string_view document, int version, bool onePerLine)
{
    const size_t body = FindBody(document, version);
    std::string text(document.substr(0, body));
    BodySections sections(version);
    LineWalk lines(document, body);
    std::string packed;
    const auto flush = [&] {
        if (!packed.empty())
            text += packed + "\n";
        packed.clear();
    };
    bool isInHex = false;
    while (lines.Next()) {
        const std::string_view line = lines.Line();
        const bool showsHidden = sections.ShowsHidden();
        const auto fate = sections.Follow(line);
        std::vector<std::string_view> words;
        bool isPlain = fate == BodySections::Fate::Interpret;
        bool wasInHex = isInHex;
        if (isPlain) {
            LineTokens tokens(line, isInHex, showsHidden);
            for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
                isPlain = isPlain && token.kind != TokenKind::Comment && token.kind != TokenKind::Malformed;
                words.push_back(line.substr(token.begin, token.end - token.begin));
            }
            isInHex = tokens.IsInHex();
            isPlain =
                isPlain && (words.empty() || !(showsHidden && line.find('%') != std::string_view::npos));
        }
        if (!isPlain || wasInHex || isInHex || lines.NextStart() == lines.End()) {
            flush();
            text += line;
            text += lines.NextStart() > lines.End() ? "\n" : "";
            continue;
        }
        for (const std::string_view word : words) {
            if (onePerLine || packed.size() + 1 + word.size() + 1 > kLineRoom)
                flush();
            packed += packed.empty() ? "" : " ";
            packed += word;
        }
    }
    flush();
    return text;
}

// Puts operators that matter behind lines of the body, where they stand alone.
std::string WithOperators(std::string_view document, int version, unsigned seed)
{
    constexpr std::string_view kOperators[] = {"u",
                                               "U",
                                               "1 1 1 1 0 0 0 9 8 7 Lb",
                                               "(Layer) Ln",
                                               "0.5 0 0 0 (Ink) 0.25 x",
                                               "0 1 0 0 (Other\\)) 0 X",
                                               "0 g",
                                               "1 G",
                                               "0 0 0 1 k"};
    std::mt19937 random(seed);
    std::string text(document.substr(0, FindBody(document, version)));
    LineWalk lines(document, text.size());
    bool isSetUp = version <= 2;
    while (lines.Next()) {
        text += document.substr(lines.Start(), lines.NextStart() - lines.Start());
        isSetUp = isSetUp || lines.Line().starts_with("%%EndSetup");
        const bool endsOperands =
            !lines.Line().empty() && std::isalpha(static_cast<unsigned char>(lines.Line().back())) != 0;
        if (isSetUp && endsOperands && random() % 4 == 0)
            text += std::string(kOperators[random() % std::size(kOperators)]) + "\n";
    }
    return text;
}

// Changes some bytes, most of them to what means something.
std::string Mutated(std::string bytes, unsigned seed)
{
    constexpr std::string_view kBytes = "uUxXLbnBgkGK()<>[]{}/%\\\r\n  0a";
    std::mt19937 random(seed);
    for (int i = 0; i < 6; ++i) {
        const size_t at = random() % bytes.size();
        const std::string_view byte = kBytes.substr(random() % kBytes.size(), 1);
        bytes.replace(at, 1 - random() % 2, byte);
    }
    return bytes;
}

std::vector<std::filesystem::path> Drawings()
{
    std::vector<std::filesystem::path> paths;
    for (const char *folder : {VX_SOURCE_DIR "/tests/golden", VX_SOURCE_DIR "/samples"}) {
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".vx")
                paths.push_back(entry.path());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

std::string ReadAll(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// With the companion a drawing makes the calls that it makes without; and events stand between the same calls however many
// tokens its lines have.
TEST_F(StructureTest, FollowsTokensNotLines)
{
    size_t events = 0;
    for (const auto &path : Drawings()) {
        const std::string original = ReadAll(path);
        const HeaderFacts facts = ScanHeader(std::as_bytes(std::span(original)));
        if (!facts.hasPrefix)
            continue;
        for (const unsigned seed : {0U, 1U, 2U}) {
            const bool withTexts = seed == 2;
            const std::string document = seed == 0 ? original : WithOperators(original, facts.version, seed);
            const Lines plain = Trace(document, false);
            const Lines told = Trace(document, true, withTexts);
            Lines calls;
            std::ranges::copy_if(told, std::back_inserter(calls),
                                 [](const std::string &line) { return !IsEvent(line); });
            EXPECT_EQ(calls, plain) << path << seed;
            events += told.size() - calls.size();
            if (plain.back() != "result 0") // where a fault stands decides what was carried out before it
                continue;
            EXPECT_EQ(Trace(Repacked(document, facts.version, false), true, withTexts), told)
                << path << seed << " packed";
            EXPECT_EQ(Trace(Repacked(document, facts.version, true), true, withTexts), told)
                << path << seed << " one token a line";
        }
    }
    EXPECT_GT(events, 1000U);
}

TEST_F(StructureTest, LeavesTheCallsOfDamagedDrawingsAsTheyAre)
{
    for (const auto &path : Drawings()) {
        const std::string original = ReadAll(path);
        if (original.size() > 20000 || !original.starts_with("%!PS-"))
            continue;
        for (unsigned seed = 0; seed < 8; ++seed) {
            const int version = ScanHeader(std::as_bytes(std::span(original))).version;
            const std::string document = Mutated(WithOperators(original, version, seed), seed);
            const bool salvage = seed % 4 == 3; // then the companion reads what the interpreter is given
            Lines calls;
            std::ranges::copy_if(Trace(document, true, seed % 2 == 1, salvage), std::back_inserter(calls),
                                 [](const std::string &line) { return !IsEvent(line); });
            EXPECT_EQ(calls, Trace(document, false, false, salvage)) << path << seed;
        }
    }
}

} // namespace
} // namespace vxhost
