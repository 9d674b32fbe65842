// Tests what a library is given: fonts, a map of them, profiles, and its options.
#include "tests/library/Support.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace vxtest
{
namespace
{

constexpr const char *kFontFolder = "/usr/share/fonts/opentype/urw-base35";

std::string ReadBytes(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string FontFileOf(const std::string &name)
{
    return ReadBytes(std::string(kFontFolder) + "/" + name + ".otf");
}

// With that one font alone the text is drawn as it is with the folder that the font is in.
TEST(LibraryFonts, MayComeFromMemory)
{
    const std::string font = FontFileOf("NimbusSans-Regular");
    ASSERT_GT(font.size(), 1000U);
    const std::string text = DrawingOf("0 To 1 0 0 1 5 5 0 Tp TP 0 Tr /_Helvetica 20 Tf (Rag) Tx TO\n");
    std::string pictures[2];
    for (const bool isFromMemory : {true, false}) {
        const OwnedLibrary library = MakeLibrary();
        vx_error error = kNoError;
        ASSERT_EQ(vx_library_set(library.get(), "system-fonts", "no", &error), VX_OK) << error.text;
        if (isFromMemory) {
            std::string given = font;
            ASSERT_EQ(vx_library_add_font(library.get(), given.data(), given.size(), &error), VX_OK)
                << error.text;
            given.assign(given.size(), '\0'); // it was copied
        } else {
            ASSERT_EQ(vx_library_set(library.get(), "font-dir", kFontFolder, &error), VX_OK) << error.text;
        }
        const OwnedDocument document = OpenBytes(text, library.get());
        for (const char *format : {"png", "svg", "pdf"})
            pictures[isFromMemory ? 0 : 1] += Rendered(document.get(), format);
        EXPECT_EQ(vx_document_warning_count(document.get()), 0U);
    }
    EXPECT_EQ(pictures[0], pictures[1]);
    EXPECT_NE(pictures[0].find("Nimbus Sans"), std::string::npos);
}

TEST(LibraryFonts, WhatIsNoFontOrComesTooLateIsRefused)
{
    const std::string font = FontFileOf("NimbusSans-Regular");
    const OwnedLibrary library = MakeLibrary();
    vx_error error = kNoError;
    EXPECT_EQ(vx_library_add_font(library.get(), "no font", 7, &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(vx_library_add_font(library.get(), nullptr, 7, &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(vx_library_add_font(nullptr, font.data(), font.size(), &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(vx_library_add_font(library.get(), font.data(), 0, &error), VX_WRONG_ARGUMENT);
    (void)OpenBytes(LeftHalf(), library.get());
    EXPECT_EQ(vx_library_add_font(library.get(), font.data(), font.size(), &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(std::string_view(error.text).substr(0, 23), "the font comes too late");
}

// Makes a folder that is removed when the test ends.
class Folder
{
  public:
    Folder() { EXPECT_NE(mkdtemp(path_.data()), nullptr); }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    std::string Write(const std::string &name, std::string_view text) const
    {
        std::ofstream(path_ + "/" + name, std::ios::binary) << text;
        return path_ + "/" + name;
    }
    std::string Path(const std::string &name) const { return path_ + "/" + name; }

  private:
    std::string path_ = std::filesystem::temp_directory_path() / "vx-XXXXXX";
};

OwnedLibrary MakeLibraryOf(const char *folder)
{
    OwnedLibrary library = MakeLibrary();
    EXPECT_EQ(vx_library_set(library.get(), "system-fonts", "no", nullptr), VX_OK);
    EXPECT_EQ(vx_library_set(library.get(), "font-dir", folder, nullptr), VX_OK);
    return library;
}

std::string TextIn(const std::string &font)
{
    return DrawingOf("0 To 1 0 0 1 5 5 0 Tp TP 0 Tr /_" + font + " 20 Tf (Rag) Tx TO\n");
}

// Returns what the command makes of a drawing, with further words.
std::string CommandsOutput(const Folder &folder, const std::string &drawing, const std::string &words,
                           const std::string &format)
{
    const std::string input = folder.Write("drawing.vx", drawing), output = folder.Path("drawing." + format);
    const std::string command =
        std::string(VX_PROGRAM_PATH " render -q ") + input + " -o " + output + " " + words;
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return ReadBytes(output);
}

struct Error : vx_error {
    Error() : vx_error(kNoError) {}
};

constexpr std::array<const char *, 3> kFormats = {"png", "svg", "pdf"};

TEST(FontMaps, AreThoseOfTheCommand)
{
    const Folder folder;
    const std::string drawing = TextIn("Frutiger-Black");
    const std::string map = folder.Write("map", "# ours\nFrutiger-Black = C059-Bold\n");
    const OwnedLibrary byRow = MakeLibraryOf(kFontFolder), byFile = MakeLibraryOf(kFontFolder),
                       without = MakeLibraryOf(kFontFolder);
    Error error;
    ASSERT_EQ(vx_library_map_font(byRow.get(), "Frutiger-Black", "C059-Bold", &error), VX_OK) << error.text;
    ASSERT_EQ(vx_library_set(byFile.get(), "font-map", map.c_str(), &error), VX_OK) << error.text;
    const std::string words =
        std::string("--no-system-fonts --font-dir ") + kFontFolder + " --font-map " + map;
    for (const char *format : kFormats) {
        const std::string expected = CommandsOutput(folder, drawing, words, format);
        EXPECT_EQ(Rendered(OpenBytes(drawing, byRow.get()).get(), format), expected) << format;
        EXPECT_EQ(Rendered(OpenBytes(drawing, byFile.get()).get(), format), expected) << format;
        EXPECT_NE(Rendered(OpenBytes(drawing, without.get()).get(), format), expected) << format;
    }
}

std::string ServedBy(vx_document *document)
{
    (void)Rendered(document, "svg");
    vx_font_use use = {};
    use.size = sizeof use;
    EXPECT_EQ(vx_document_font_at(document, 0, &use, nullptr), VX_OK);
    return use.served;
}

TEST(FontMaps, HoldForDocumentsThatAreOpenedAfterwards)
{
    const OwnedLibrary library = MakeLibraryOf(kFontFolder);
    const auto open = [&] { return OpenBytes(TextIn("Frutiger"), library.get()); };
    const auto map = [&](const char *served) {
        Error error;
        EXPECT_EQ(vx_library_map_font(library.get(), "Frutiger", served, &error), VX_OK) << error.text;
    };
    const OwnedDocument before = open();
    map("C059-Bold");
    const OwnedDocument first = open();
    map("P052-Roman"); // the last row of a name holds
    const OwnedDocument second = open();
    map(nullptr);
    const OwnedDocument third = open();
    EXPECT_EQ(ServedBy(before.get()), "NimbusSans-Regular");
    EXPECT_EQ(ServedBy(first.get()), "C059-Bold");
    EXPECT_EQ(ServedBy(second.get()), "P052-Roman");
    EXPECT_EQ(ServedBy(third.get()), "NimbusSans-Regular");
}

TEST(FontMaps, ThatAreWrongChangeNothing)
{
    const Folder folder;
    const OwnedLibrary library = MakeLibraryOf(kFontFolder);
    Error error;
    EXPECT_EQ(vx_library_map_font(library.get(), "Frutiger", "Nowhere", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text, "no font \"Nowhere\" to serve \"Frutiger\": vx_library_font_at lists those that "
                             "there are");
    const auto refused = [&](const std::string &path, vx_status status) {
        EXPECT_EQ(vx_library_set(library.get(), "font-map", path.c_str(), &error), status) << path;
        return std::string(error.text);
    };
    const std::string half = folder.Write("half", "Frutiger = C059-Bold\nFutura = Nowhere\n");
    EXPECT_NE(refused(half, VX_WRONG_OPTION).find("\"Nowhere\""), std::string::npos);
    const std::string torn = folder.Write("torn", "Frutiger = C059-Bold\nFutura\n");
    EXPECT_EQ(refused(torn, VX_WRONG_OPTION),
              torn + ": line 2 is \"Futura\": write ASKED = FONT, both PostScript names");
    EXPECT_EQ(refused("/no/such", VX_CANNOT_READ), "/no/such: no such file: check the name");
    EXPECT_EQ(refused("/dev/zero", VX_CANNOT_READ), "/dev/zero: is a device, not a file: name a file");
    const std::string endless = folder.Write("endless", std::string(10240001, '\n'));
    EXPECT_EQ(refused(endless, VX_LIMIT).substr(endless.size(), 24), ": longer than 10240000 b");
    EXPECT_EQ(ServedBy(OpenBytes(TextIn("Frutiger"), library.get()).get()), "NimbusSans-Regular");
}

TEST(FontMaps, HaveTenThousandRowsAtMost)
{
    const OwnedLibrary library = MakeLibraryOf(kFontFolder);
    const Folder folder;
    std::string rows;
    for (int i = 0; i < 10000; ++i)
        rows += "F" + std::to_string(i) + " = C059-Bold\n";
    Error error;
    ASSERT_EQ(vx_library_set(library.get(), "font-map", folder.Write("map", rows).c_str(), &error), VX_OK);
    EXPECT_EQ(vx_library_map_font(library.get(), "One", "C059-Bold", &error), VX_WRONG_ARGUMENT);
    EXPECT_STREQ(error.text, "the font map has more than 10000 rows: leave out what no document needs");
    EXPECT_EQ(vx_library_map_font(library.get(), "F1", "C059-Roman", &error), VX_OK) << "it is a row already";
    EXPECT_EQ(vx_library_map_font(library.get(), "F2", nullptr, &error), VX_OK);
    EXPECT_EQ(vx_library_map_font(library.get(), "One", "C059-Bold", &error), VX_OK);
}

constexpr const char *kProfile = VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc";

// Returns the profile that is built in, with other colours in its table from inks to colours.
std::string OtherProfile()
{
    constexpr size_t kColours = 10000, kEnd = 50000;
    std::string bytes = ReadBytes(kProfile);
    for (size_t i = kColours; i < kEnd; ++i)
        bytes[i] = static_cast<char>(~bytes[i]);
    return bytes;
}

TEST(Profiles, FromMemoryAreAsThoseOfFiles)
{
    const Folder folder;
    const std::string profile = OtherProfile(), path = folder.Write("press.icc", profile);
    const std::string drawing = DrawingOf("1 .5 .2 .1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n");
    const OwnedLibrary library = MakeLibrary();
    Error error;
    std::string given = profile;
    ASSERT_EQ(vx_library_add_profile(library.get(), "press.icc", given.data(), given.size(), &error), VX_OK)
        << error.text;
    given.assign(given.size(), '\0'); // it was copied
    for (const char *format : kFormats) {
        const OwnedDocument document = OpenBytes(drawing, library.get()),
                            plain = OpenBytes(drawing, library.get());
        std::string words = "--profile " + path;
        if (format == std::string_view("pdf")) {
            words += " --pdf-x x3 --date 0";
            Set(document.get(), "pdf-x", "x3");
            Set(document.get(), "date", "0");
        }
        Set(document.get(), "profile", "press.icc");
        EXPECT_EQ(Rendered(document.get(), format), CommandsOutput(folder, drawing, words, format)) << format;
        EXPECT_NE(Rendered(document.get(), format), Rendered(plain.get(), format)) << format;
    }
}

TEST(Profiles, ReachThePixelsToo)
{
    const std::string profile = OtherProfile();
    const OwnedLibrary library = MakeLibrary();
    ASSERT_EQ(vx_library_add_profile(library.get(), "press", profile.data(), profile.size(), nullptr), VX_OK);
    const OwnedDocument document =
        OpenBytes(DrawingOf("1 .5 .2 .1 k\n0 0 m\n72 0 l\n72 36 l\n0 36 l\nf\n"), library.get());
    const auto pixel = [&] {
        std::array<uint8_t, 4> colour = {};
        vx_pixels pixels = {};
        pixels.size = sizeof pixels;
        pixels.width = pixels.height = 1;
        pixels.top_row = colour.data();
        pixels.stride = 4;
        Error error;
        EXPECT_EQ(vx_document_pixels(document.get(), &pixels, &error), VX_OK) << error.text;
        return colour;
    };
    const auto builtIn = pixel();
    Set(document.get(), "profile", "press");
    EXPECT_NE(pixel(), builtIn);
}

TEST(Profiles, ThatAreNoneAreRefusedAtOnce)
{
    const OwnedLibrary library = MakeLibrary();
    const std::string profile = ReadBytes(kProfile);
    const auto refused = [&](const char *name, std::string_view bytes) {
        Error error;
        EXPECT_EQ(vx_library_add_profile(library.get(), name, bytes.data(), bytes.size(), &error),
                  VX_WRONG_ARGUMENT);
        return std::string(error.text);
    };
    EXPECT_EQ(refused("press", "no profile"),
              "profile \"press\" cannot be read as an ICC profile: give an ICC "
              "profile of a CMYK press");
    EXPECT_EQ(refused("press", ""),
              "profile \"press\" cannot be read as an ICC profile: give an ICC profile of a "
              "CMYK press");
    std::string screen = profile;
    screen.replace(16, 4, "RGB ");
    EXPECT_EQ(refused("press", screen),
              "profile \"press\" is not for CMYK: give an ICC profile of a CMYK press");
    EXPECT_EQ(refused("none", profile), "the name \"none\" is taken by what is built in: give another");
    EXPECT_EQ(refused("fogra39", profile), "the name \"fogra39\" is taken by what is built in: give another");
    EXPECT_EQ(refused("", profile), "name has 0 bytes: give a name of 1 to 255");
    EXPECT_EQ(refused(std::string(256, 'x').c_str(), profile), "name has 256 bytes: give a name of 1 to 255");
    const std::string large((size_t{32} << 20) + 1, '\0');
    EXPECT_EQ(refused("press", large),
              "the profile has 33554433 bytes, and the most is 33554432: give a smaller one");
    const OwnedDocument document = OpenBytes(LeftHalf(), library.get());
    Set(document.get(), "profile", "press"); // which is no file
    std::string bytes;
    EXPECT_EQ(vx_document_render(document.get(), "png", AppendBytes, &bytes, nullptr), VX_WRONG_OPTION);
}

TEST(LibraryOptions, AreListedAndInTheHeader)
{
    const std::string header = ReadBytes(VX_SOURCE_DIR "/include/vx.h");
    std::string names;
    for (size_t i = 0; i < vx_library_option_count(); ++i) {
        vx_option option = {};
        option.size = sizeof option;
        ASSERT_EQ(vx_library_option_at(i, &option, nullptr), VX_OK);
        names.append(option.name).append(" ");
        EXPECT_NE(header.find('"' + std::string(option.name) + "\":"), std::string::npos) << option.name;
        EXPECT_STRNE(option.help, "");
        EXPECT_STRNE(option.value, "");
        if (*option.standard != 0) {
            EXPECT_EQ(vx_library_set(MakeLibrary().get(), option.name, option.standard, nullptr), VX_OK)
                << option.name;
        }
    }
    EXPECT_EQ(names, "font-dir font-map system-fonts temp-dir ");
}

TEST(LibraryOptions, ThatAreAboutFontsComeBeforeThem)
{
    const OwnedLibrary library = MakeLibraryOf(kFontFolder);
    Error error;
    ASSERT_EQ(vx_library_map_font(library.get(), "Frutiger", "C059-Bold", &error), VX_OK);
    for (const auto &[name, value] :
         {std::array{"font-dir", kFontFolder}, std::array{"system-fonts", "no"}}) {
        EXPECT_EQ(vx_library_set(library.get(), name, value, &error), VX_WRONG_ARGUMENT);
        EXPECT_EQ(std::string(error.text), std::string(name) +
                                               " comes too late, the fonts are listed: set it before "
                                               "they are counted or mapped, or a document is opened");
    }
    EXPECT_EQ(vx_library_set(library.get(), "temp-dir", "/tmp", &error), VX_OK) << error.text;
}

} // namespace
} // namespace vxtest
