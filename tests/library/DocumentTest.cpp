// Tests what a document says of itself, its options, and what becomes of errors.
#include "tests/library/Support.h"
#include "tests/support/Packed.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

namespace vxtest
{
namespace
{

vx_status OpenStatus(const std::string &bytes, vx_error *error)
{
    vx_document *document = nullptr;
    const vx_status status =
        vx_document_open_bytes(SharedLibrary(), bytes.data(), bytes.size(), VX_COPY, &document, error);
    EXPECT_EQ(document, nullptr);
    return status;
}

TEST(Version, IsThatOfTheProject)
{
    EXPECT_STREQ(vx_version(), "0.1.0");
}

TEST(Opening, TellsWhatIsNoDrawing)
{
    vx_error error = kNoError;
    EXPECT_EQ(OpenStatus("", &error), VX_NOT_A_DRAWING);
    EXPECT_STREQ(error.text, "not a VX document, the file is empty: drawings start with \"%!PS-Tavro-\"");
    EXPECT_EQ(OpenStatus("GIF89a\x1b[2J\n", &error), VX_NOT_A_DRAWING);
    EXPECT_STREQ(error.text, "not a VX document, first line is \"GIF89a\\x1B[2J\": drawings start with "
                             "\"%!PS-Tavro-\"");
}

TEST(Opening, NamesTheFileThatCannotBeRead)
{
    vx_document *document = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_open_file(SharedLibrary(), "/no/such\n.vx", &document, &error), VX_CANNOT_READ);
    EXPECT_TRUE(std::string_view(error.text).starts_with("/no/such\\x0A.vx: ")) << error.text;
    EXPECT_EQ(vx_document_open_file(SharedLibrary(), "/", &document, &error), VX_CANNOT_READ);
    EXPECT_NE(std::strstr(error.text, "directory"), nullptr) << error.text;
}

TEST(Opening, CopiesOrBorrowsTheBytes)
{
    for (const int32_t how : {VX_COPY, VX_BORROW}) {
        std::string bytes = LeftHalf();
        vx_document *opened = nullptr;
        vx_error error = kNoError;
        ASSERT_EQ(vx_document_open_bytes(SharedLibrary(), bytes.data(), bytes.size(), how, &opened, &error),
                  VX_OK);
        const OwnedDocument document(opened);
        const std::string before = Rendered(opened, "svg");
        bytes.replace(bytes.find("36 36 l"), 7, "30 36 l");
        EXPECT_EQ(Rendered(opened, "svg") == before, how == VX_COPY);
    }
}

TEST(Opening, Unpacks)
{
    const std::string plain = LeftHalf();
    const std::string svg = Rendered(OpenBytes(plain).get(), "svg");
    for (const std::string &packed : {Gzip(plain), Xz(plain), Gzip("\n" + plain)})
        EXPECT_EQ(Rendered(OpenBytes(packed).get(), "svg"), svg);
    const OwnedDocument document = OpenBytes(Gzip("\n" + plain));
    const char *json = nullptr;
    ASSERT_EQ(vx_document_json(document.get(), &json, nullptr), VX_OK);
    EXPECT_NE(std::strstr(json, "\"wrapping\":\"gzip, blank lines\""), nullptr) << json;
    EXPECT_EQ(vx_document_warning_count(document.get()), 0U);
}

TEST(Opening, TellsOfDamagedArchives)
{
    vx_error error = kNoError;
    EXPECT_EQ(OpenStatus(Xz(LeftHalf()).substr(0, 12), &error), VX_NOT_A_DRAWING);
    EXPECT_STREQ(error.text,
                 "the xz data around it are cut short, nothing came out of them: get a whole copy");
    const OwnedDocument document = OpenBytes(Gzip(LeftHalf()) + "x");
    (void)Rendered(document.get(), "svg");
    ASSERT_EQ(vx_document_warning_count(document.get()), 1U);
    EXPECT_EQ(vx_document_warning_at(document.get(), 0),
              "the gzip data around it are followed by other bytes: " + std::to_string(LeftHalf().size()) +
                  " bytes came out of them");
}

TEST(Limits, CountWhatIsUnpacked)
{
    std::string bytes = LeftHalf();
    bytes.insert(bytes.find("0 0 m"), std::string(3000000, '\n'));
    const OwnedDocument plain = OpenBytes(bytes), packed = OpenBytes(Gzip(bytes));
    vx_error error = kNoError;
    for (vx_document *document : {plain.get(), packed.get()}) {
        Set(document, "max-memory", "2M");
        std::string written;
        EXPECT_EQ(vx_document_render(document, "svg", AppendBytes, &written, &error),
                  document == plain.get() ? VX_OK : VX_LIMIT);
    }
    EXPECT_STREQ(error.text, "needs more than 2 MiB of memory: allow more with max-memory");
}

TEST(Facts, AreThoseOfTheHeader)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    vx_facts facts = {};
    facts.size = sizeof facts;
    ASSERT_EQ(vx_document_facts(document.get(), &facts, nullptr), VX_OK);
    EXPECT_STREQ(facts.title, "A square");
    EXPECT_STREQ(facts.creator, "by hand");
    EXPECT_STREQ(facts.created, "");
    EXPECT_EQ(facts.version, 5); // of "%VX5_FileFormat"
    EXPECT_EQ(facts.monochrome, 0);
    EXPECT_EQ((std::array{facts.left, facts.bottom, facts.right, facts.top}), (std::array{0., 0., 72., 36.}));
}

std::string OutputOf(const std::string &command)
{
    FILE *pipe = popen(command.c_str(), "r");
    std::string text;
    for (int character; (character = std::fgetc(pipe)) != EOF;)
        text += static_cast<char>(character);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return text;
}

TEST(Json, IsWhatTheCommandPrintsButForTheFileAndTheConfinement)
{
    for (const char *sample : {"text-point", "gradients", "overprint", "binary-wrapper"}) {
        const std::string path = std::string(VX_SOURCE_DIR "/samples/") + sample + ".vx";
        std::string expected = OutputOf(VX_PROGRAM_PATH " info -q --json " + path);
        const std::string file = "\"file\":\"" + path + "\",";
        ASSERT_NE(expected.find(file), std::string::npos) << expected;
        expected.erase(expected.find(file), file.size());
        const size_t confinement = expected.find(",\"confinedBy\":");
        ASSERT_NE(confinement, std::string::npos) << expected;
        expected.erase(confinement, expected.rfind('}') - confinement);
        const OwnedDocument document = OpenSample(sample);
        const char *json = nullptr;
        ASSERT_EQ(vx_document_json(document.get(), &json, nullptr), VX_OK);
        EXPECT_EQ(json, expected);
    }
}

struct FoundTexts {
    std::string lines, json;
    int count = 0, most = 1000;
};

int KeepText(void *context, const char *lines, const char *json)
{
    auto *found = static_cast<FoundTexts *>(context);
    found->lines.append(found->count == 0 ? "" : "\n").append(lines);
    found->json.append(json);
    return ++found->count == found->most ? 1 : 0;
}

TEST(Texts, AreWhatTheCommandPrints)
{
    for (const char *sample :
         {"text-point", "text-area", "text-japanese", "layers-nested", "poster", "gift"}) {
        const std::string path = std::string(VX_SOURCE_DIR "/samples/") + sample + ".vx";
        const OwnedDocument document = OpenSample(sample);
        FoundTexts found;
        vx_error error = kNoError;
        ASSERT_EQ(vx_document_texts(document.get(), KeepText, &found, &error), VX_OK) << error.text;
        EXPECT_EQ(found.lines, OutputOf(VX_PROGRAM_PATH " text -q " + path));
        std::string expected = OutputOf(VX_PROGRAM_PATH " text -q --json " + path);
        const std::string file = "\"file\":\"" + path + "\",";
        for (size_t at = expected.find(file); at != std::string::npos; at = expected.find(file))
            expected.erase(at, file.size());
        EXPECT_EQ(found.json, expected);
        EXPECT_EQ(vx_document_font_count(document.get()), 0U);
    }
}

const std::string kTwoTexts = DrawingOf("0 g\n1 1 1 0 0 0 1 79 128 255 Lb (Notes) Ln\n"
                                        "0 To 1 0 0 1 5 5 0 Tp TP /_Helvetica 12 Tf 0 Tr (hidden) Tx TO LB\n"
                                        "1 1 1 1 0 0 1 79 128 255 Lb (Names) Ln\n"
                                        "0 To 1 0 0 1 5 5 0 Tp TP 0 Tr (Rum) Tx TO\n"
                                        "0 To 1 0 0 1 5 5 0 Tp TP 0 Tr (Egg) Tx TO LB\n");

TEST(Texts, AreThoseOfTheLayersThatAreChosen)
{
    const OwnedDocument document = OpenBytes(kTwoTexts);
    const auto lines = [&] {
        FoundTexts found;
        EXPECT_EQ(vx_document_texts(document.get(), KeepText, &found, nullptr), VX_OK);
        return found.lines;
    };
    EXPECT_EQ(lines(), "Rum\n\nEgg\n");
    Set(document.get(), "layers", "all");
    EXPECT_EQ(lines(), "hidden\n\nRum\n\nEgg\n");
    Set(document.get(), "hide", "Names");
    EXPECT_EQ(lines(), "hidden\n");
}

TEST(Texts, EndWhereTheProcedureSays)
{
    const OwnedDocument document = OpenBytes(kTwoTexts);
    FoundTexts found;
    found.most = 1;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_texts(document.get(), KeepText, &found, &error), VX_STOPPED);
    EXPECT_STREQ(error.text, "stopped by its text procedure");
    EXPECT_EQ(found.lines, "Rum\n");
}

TEST(Texts, OfADamagedDocumentAreThoseBeforeTheDamage)
{
    std::string bytes = kTwoTexts;
    bytes.insert(bytes.rfind("0 To"), "1 S\n");
    FoundTexts found;
    vx_error error = kNoError;
    const OwnedDocument document = OpenBytes(bytes);
    EXPECT_EQ(vx_document_texts(document.get(), KeepText, &found, &error), VX_MALFORMED);
    EXPECT_EQ(found.lines, "Rum\n");
}

TEST(Options, HaveChoicesThatAreTakenAndOthersThatAreNot)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    ASSERT_GT(vx_option_count(), 15U);
    for (size_t i = 0; i < vx_option_count(); ++i) {
        vx_option option = {};
        option.size = sizeof option;
        ASSERT_EQ(vx_option_at(i, &option, nullptr), VX_OK);
        SCOPED_TRACE(option.name);
        EXPECT_STRNE(option.help, "");
        EXPECT_EQ(std::strstr(option.help, "--"), nullptr) << option.help;
        if (std::string_view(option.name) == "plate-colours")
            Set(document.get(), "plates", "Cyan"); // whose colours they are
        std::string choices = option.choices;
        for (size_t end; !choices.empty(); choices.erase(0, end + 1)) {
            end = std::min(choices.find(','), choices.size() - 1);
            const std::string choice = choices.substr(0, choices.find(','));
            Set(document.get(), option.name, choice.c_str());
        }
        vx_error error = kNoError;
        // Any text names a file, layers or inks.
        const std::string_view name = option.name;
        if (name != "profile" && name != "layers" && name != "hide" && name != "plates") {
            EXPECT_EQ(vx_document_set(document.get(), option.name, "no such value", &error), VX_WRONG_OPTION);
            EXPECT_TRUE(
                std::string_view(error.text).starts_with(std::string(option.name) + " no such value: "))
                << error.text;
        }
        EXPECT_EQ(vx_document_set(document.get(), option.name, "", &error), VX_WRONG_OPTION);
        Set(document.get(), option.name, nullptr);
    }
}

TEST(Options, ThatAreNotThereAreTold)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_set(document.get(), "colour", "red", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text, "no option \"colour\": vx_option_at lists them");
    EXPECT_EQ(vx_document_render(document.get(), "gif", AppendBytes, nullptr, &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text, "no format \"gif\": give one of pdf, svg, png, tiff");
    const OwnedLibrary library = MakeLibrary();
    EXPECT_EQ(vx_library_set(library.get(), "fonts", "x", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text,
                 "fonts: no option of a library: give one of font-dir, font-map, system-fonts, temp-dir");
    EXPECT_EQ(vx_library_set(library.get(), "font-dir", "/no/such", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text, "font-dir /no/such: no such directory: check the name");
    EXPECT_EQ(vx_library_set(library.get(), "system-fonts", "maybe", &error), VX_WRONG_OPTION);
    EXPECT_EQ(vx_library_set(library.get(), "temp-dir", "/no/such", &error), VX_WRONG_OPTION);
}

TEST(Options, SayTheDateThatAStandardNeeds)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Set(document.get(), "pdf-x", "x1a");
    // A document in memory has no date of its own here, and no file that has one: it is now, in this century.
    EXPECT_NE(Rendered(document.get(), "pdf").find("/CreationDate(D:20"), std::string::npos);
    Set(document.get(), "date", "86400");
    EXPECT_NE(Rendered(document.get(), "pdf").find("/CreationDate(D:19700102000000"), std::string::npos);
}

TEST(Options, SetThePressOfAPlainPdf)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    EXPECT_EQ(Rendered(document.get(), "pdf").find("/OutputIntents"), std::string::npos);
    Set(document.get(), "profile", VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc");
    const std::string pdf = Rendered(document.get(), "pdf");
    EXPECT_NE(pdf.find("/S/GTS_PDFX/OutputConditionIdentifier(Custom)"), std::string::npos);
    EXPECT_EQ(pdf.find("/Metadata"), std::string::npos);
    Set(document.get(), "profile", "none");
    EXPECT_EQ(Rendered(document.get(), "pdf").find("/OutputIntents"), std::string::npos);
}

std::array<int32_t, 2> SizeOf(vx_document *document)
{
    std::array<int32_t, 2> size = {};
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_size(document, size.data(), &size[1], &error), VX_OK) << error.text;
    return size;
}

TEST(Options, LayThePageOut)
{
    const OwnedDocument document = OpenBytes(LeftHalf()); // paints 36 by 36 of 72 by 36 points
    Set(document.get(), "dpi", "72");
    Set(document.get(), "page", "drawing");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{36, 36}));
    Set(document.get(), "margin", "1in");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{180, 180}));
    EXPECT_NE(Rendered(document.get(), "pdf").find("/MediaBox[-72 -72 108 108]"), std::string::npos);
    Set(document.get(), "page", "letter");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{612, 792}));
    Set(document.get(), "bleed", "9");
    const std::string pdf = Rendered(document.get(), "pdf");
    EXPECT_NE(pdf.find("/MediaBox[-279 -387 351 423]/BleedBox[-279 -387 351 423]/TrimBox[-270 -378 342 414]"),
              std::string::npos);
}

TEST(Options, TellThatADrawingIsLargerThanItsPage)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Set(document.get(), "page", "70x50");
    (void)Rendered(document.get(), "pdf");
    ASSERT_EQ(vx_document_warning_count(document.get()), 1U);
    EXPECT_STREQ(
        vx_document_warning_at(document.get(), 0),
        "the drawing is 2 pt wider than its room on the page: choose a larger page, a smaller margin, or "
        "drawing as the page");
}

TEST(Options, StayWhenAWrongOneIsGiven)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{150, 75}));
    Set(document.get(), "width", "40");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{40, 20}));
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_set(document.get(), "width", "wide", &error), VX_WRONG_OPTION);
    EXPECT_EQ(vx_document_set(document.get(), "dpi", "72", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text, "more than one size: give dpi, or zoom, or fit, or width and height");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{40, 20}));
    Set(document.get(), "width", nullptr);
    Set(document.get(), "dpi", "72");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{72, 36}));
    Set(document.get(), "box", "0,0,36,36");
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{36, 36}));
}

TEST(Formats, AreThoseThatCanBeRendered)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    ASSERT_EQ(vx_format_count(), 4U);
    for (size_t i = 0; i < vx_format_count(); ++i) {
        vx_format format = {};
        format.size = sizeof format;
        ASSERT_EQ(vx_format_at(i, &format, nullptr), VX_OK);
        EXPECT_NE(Rendered(document.get(), format.name), "");
        EXPECT_NE(std::strchr(format.mime, '/'), nullptr);
    }
}

// Its first bytes are known at its end: nothing is given before, and nothing of one that is too long.
TEST(Formats, OfWhichTheBeginningIsKnownLastAreGivenWhole)
{
    const OwnedDocument document = OpenSample("spot-inks");
    std::vector<size_t> pieces;
    const auto keep = [](void *kept, const void *, size_t size) {
        static_cast<std::vector<size_t> *>(kept)->push_back(size);
        return 0;
    };
    ASSERT_EQ(vx_document_render(document.get(), "tiff", keep, &pieces, nullptr), VX_OK);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces.front(), Rendered(document.get(), "tif").size());
    const auto stop = [](void *, const void *, size_t) { return 1; };
    EXPECT_EQ(vx_document_render(document.get(), "tiff", stop, nullptr, nullptr), VX_STOPPED);
    pieces.clear();
    Set(document.get(), "max-output", "1K");
    EXPECT_EQ(vx_document_render(document.get(), "tiff", keep, &pieces, nullptr), VX_LIMIT);
    EXPECT_TRUE(pieces.empty());
}

TEST(Limits, AreTold)
{
    const OwnedDocument document = OpenSample("gift");
    std::string bytes;
    const auto limited = [&](const char *option, const char *value) {
        Set(document.get(), option, value);
        vx_error error = kNoError;
        EXPECT_EQ(vx_document_render(document.get(), "png", AppendBytes, &bytes, &error), VX_LIMIT);
        Set(document.get(), option, nullptr);
        return std::string(error.text);
    };
    EXPECT_EQ(limited("max-time", "0.000001"), "not done after 0.000001 s: allow more with max-time");
    EXPECT_NE(limited("max-memory", "1M").find("memory"), std::string::npos);
    bytes.clear();
    EXPECT_EQ(limited("max-output", "1K"), "takes more than 1 KiB: allow more with max-output");
    EXPECT_LE(bytes.size(), 1024U);
    EXPECT_NE(limited("dpi", "100000").find("too large"), std::string::npos);
    (void)Rendered(document.get(), "png");
}

TEST(Temporary, FilesAreNotMade)
{
    const OwnedLibrary library = MakeLibrary();
    ASSERT_EQ(vx_library_set(library.get(), "temp-dir", "/proc", nullptr), VX_OK); // where nobody makes one
    const OwnedDocument document = OpenBytes(LeftHalf(), library.get());
    for (const char *format : {"pdf", "svg", "png"})
        EXPECT_NE(Rendered(document.get(), format), "");
}

TEST(Damage, IsToldWithThePlace)
{
    const OwnedDocument document = OpenBytes(DrawingOf("0 0 0 1 k\n0 0 m\n36 x l\nf\n36 36 l (\n"));
    const char *json = "";
    vx_error error = kNoError;
    const vx_status status = vx_document_json(document.get(), &json, &error);
    EXPECT_EQ(status, VX_MALFORMED) << error.text;
    EXPECT_EQ(json, nullptr);
    EXPECT_TRUE(std::string_view(error.text).starts_with("malformed, line 11")) << error.text;
    EXPECT_NE(std::strstr(error.text, ", column 4: \"x\" wants 4 numbers, 1 string and 1 number, has 1"),
              nullptr)
        << error.text;
}

TEST(Damage, IsLeftOutWhereThatIsAsked)
{
    const std::string whole = "0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n";
    const OwnedDocument document = OpenBytes(DrawingOf("1 f\n" + whole));
    Set(document.get(), "salvage", "yes");
    EXPECT_EQ(Rendered(document.get(), "svg"), Rendered(OpenBytes(DrawingOf(whole)).get(), "svg"));
    ASSERT_EQ(vx_document_warning_count(document.get()), 1U);
    EXPECT_STREQ(vx_document_warning_at(document.get(), 0),
                 "1 fault is left out: line 9, column 3: \"f\" wants no operands, has 1");
    Set(document.get(), "salvage", "no");
    vx_error error = kNoError;
    std::string bytes;
    EXPECT_EQ(vx_document_render(document.get(), "svg", AppendBytes, &bytes, &error), VX_MALFORMED);
    EXPECT_NE(std::strstr(error.text, ", or set salvage to yes"), nullptr) << error.text;
}

// Makes a library without any font.
OwnedLibrary MakeBareLibrary()
{
    OwnedLibrary library = MakeLibrary();
    EXPECT_EQ(vx_library_set(library.get(), "system-fonts", "no", nullptr), VX_OK);
    return library;
}

TEST(Fonts, ThatAreMissingAreWarnings)
{
    const OwnedLibrary library = MakeBareLibrary();
    const OwnedDocument document = OpenSample("text-point", library.get());
    EXPECT_EQ(vx_document_warning_count(document.get()), 0U); // it is not drawn yet
    (void)Rendered(document.get(), "svg");
    ASSERT_GT(vx_document_font_count(document.get()), 0U);
    vx_font_use use = {};
    use.size = sizeof use;
    ASSERT_EQ(vx_document_font_at(document.get(), 0, &use, nullptr), VX_OK);
    EXPECT_EQ(use.match, VX_FONT_BOXES);
    EXPECT_STREQ(use.served, "");
    EXPECT_GT(use.characters, 0U);
    const std::string expected = std::string("no font \"") + use.asked + "\", drawn as boxes: install it";
    bool isTold = false;
    for (size_t i = 0; i < vx_document_warning_count(document.get()); ++i)
        isTold = isTold || vx_document_warning_at(document.get(), i) == expected;
    EXPECT_TRUE(isTold) << expected;
    EXPECT_EQ(vx_document_warning_at(document.get(), vx_document_warning_count(document.get())), nullptr);
}

TEST(Fonts, ThatMayNotBeMissingEndTheDocument)
{
    const OwnedLibrary library = MakeBareLibrary();
    const OwnedDocument document = OpenSample("text-point", library.get());
    Set(document.get(), "missing-fonts", "fail");
    std::string bytes;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_render(document.get(), "svg", AppendBytes, &bytes, &error), VX_FONT_MISSING);
    EXPECT_TRUE(std::string_view(error.text).starts_with("no font \"")) << error.text;
}

TEST(Fonts, OfAFolderAreListed)
{
    const OwnedLibrary library = MakeBareLibrary();
    constexpr std::string_view kFolder = "/usr/share/fonts/opentype/urw-base35";
    ASSERT_EQ(vx_library_set(library.get(), "font-dir", kFolder.data(), nullptr), VX_OK);
    size_t count = 0;
    ASSERT_EQ(vx_library_font_count(library.get(), &count, nullptr), VX_OK);
    ASSERT_GT(count, 30U);
    for (size_t i = 0; i < count; ++i) {
        vx_font_entry entry = {};
        entry.size = sizeof entry;
        ASSERT_EQ(vx_library_font_at(library.get(), i, &entry, nullptr), VX_OK);
        EXPECT_TRUE(std::string_view(entry.file).starts_with(kFolder)) << entry.file;
        EXPECT_STRNE(entry.postscript, "");
    }
}

// A callback meets its own document at work, and so does another thread.
struct Meeting {
    vx_document *document;
    std::vector<vx_status> met;
    int answer = 0;
};

int MeetDocument(void *context, int64_t, int64_t)
{
    auto &meeting = *static_cast<Meeting *>(context);
    int32_t width = 0, height = 0;
    const auto call = [&] {
        meeting.met.push_back(vx_document_size(meeting.document, &width, &height, nullptr));
    };
    call();
    std::thread(call).join();
    return meeting.answer;
}

TEST(Busy, IsADocumentAtWork)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Meeting meeting = {document.get(), {}};
    ASSERT_EQ(vx_document_set_progress(document.get(), MeetDocument, &meeting, nullptr), VX_OK);
    (void)Rendered(document.get(), "svg");
    ASSERT_FALSE(meeting.met.empty());
    EXPECT_TRUE(std::ranges::all_of(meeting.met, [](vx_status status) { return status == VX_BUSY; }));
    EXPECT_EQ(SizeOf(document.get()), (std::array<int32_t, 2>{150, 75})); // and now it is free
}

TEST(Progress, EndsTheCall)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Meeting meeting = {document.get(), {}, 1};
    ASSERT_EQ(vx_document_set_progress(document.get(), MeetDocument, &meeting, nullptr), VX_OK);
    std::string bytes;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_render(document.get(), "png", AppendBytes, &bytes, &error), VX_STOPPED);
    EXPECT_STREQ(error.text, "stopped by its progress procedure");
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(meeting.met.size(), 2U); // it was asked once
    ASSERT_EQ(vx_document_set_progress(document.get(), nullptr, nullptr, nullptr), VX_OK);
    EXPECT_NE(Rendered(document.get(), "png"), "");
}

TEST(Writing, EndsTheCall)
{
    for (const char *format : {"png", "svg", "pdf"}) {
        const OwnedDocument document = OpenSample("gift");
        int calls = 0;
        const auto refuse = [](void *context, const void *, size_t) {
            return ++*static_cast<int *>(context);
        };
        vx_error error = kNoError;
        EXPECT_EQ(vx_document_render(document.get(), format, refuse, &calls, &error), VX_STOPPED) << format;
        EXPECT_STREQ(error.text, "stopped by its write procedure");
        EXPECT_EQ(calls, 1) << format;
    }
}

// A device that could not write goes on to the end of its document: nobody waits for that.
TEST(Writing, EndsTheCallWhereItFails)
{
    std::string body = "0 0 0 1 k\n";
    for (int i = 0; i < 50000; ++i)
        body += "1 2 m\n3 2 l\n3 4.5 l\nf\n";
    const OwnedDocument document = OpenBytes(DrawingOf(body));
    struct Refusal {
        int writes = 0, linesAfter = 0;
    } refusal;
    const auto refuse = [](void *context, const void *, size_t) {
        return ++static_cast<Refusal *>(context)->writes;
    };
    const auto count = [](void *context, int64_t, int64_t) {
        auto &counted = *static_cast<Refusal *>(context);
        counted.linesAfter += counted.writes;
        return 0;
    };
    ASSERT_EQ(vx_document_set_progress(document.get(), count, &refusal, nullptr), VX_OK);
    EXPECT_EQ(vx_document_render(document.get(), "svg", refuse, &refusal, nullptr), VX_STOPPED);
    EXPECT_EQ(refusal.writes, 1);
    EXPECT_LE(refusal.linesAfter, 1);
}

} // namespace
} // namespace vxtest
