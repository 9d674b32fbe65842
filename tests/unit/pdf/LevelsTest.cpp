// Looks up in the file that is written what each level asks for: a row each, with a twin of the file that breaks it.
#include "tests/unit/pdf/DrawnPage.h"

#include "host/reading/Utf8.h"

#include <gtest/gtest.h>

#include <qpdf/Buffer.hh>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <set>

using namespace vxhost;
using namespace vxtest;

namespace
{

using Handle = QPDFObjectHandle;

enum : unsigned { kX1a = 1, kX3 = 2, kX4 = 4, kA2b = 8, kA2u = 16 };
constexpr unsigned kOf2003 = kX1a | kX3, kX = kOf2003 | kX4, kA = kA2b | kA2u, kAll = kX | kA;

constexpr const char *kFolder = "/usr/share/fonts/";
TextFont FontAt(const char *asked, const char *served, const char *path)
{
    return {asked, served, FontBytes::Open(std::string(kFolder) + path), 0};
}

// A drawing that has all that the levels differ about.
void DrawAll(Device &device)
{
    static const TextFont fonts[] = {
        FontAt("Frutiger-Black", "NimbusSans-Regular", "opentype/urw-base35/NimbusSans-Regular.otf"),
        FontAt("Old Sans", "NimbusSans-Regular", "X11/Type1/NimbusSans-Regular.pfb"),
        FontAt("IPAGothic", "IPAGothic", "opentype/ipafont-gothic/ipag.ttf")};
    static const SpotInk lake = {"Lake", {1, 0.5, 0, 0}}, pale = {"Lake", {0.5, 0.25, 0, 0}},
                         brick = {"Brick red", {0, 1, 1, 0}};
    static const std::vector<Layer> layers = {{.name = "Ground"}, {.name = "Notes", .isPrinting = false}};
    const auto spot = [](const SpotInk &ink) {
        Paint paint = Cmyk(ink.alternate[0], ink.alternate[1], ink.alternate[2], ink.alternate[3]);
        paint.colour.spots[0] = {&ink, 1};
        return paint;
    };
    device.BeginLayer(layers[0]);
    device.Save();
    device.ClipPath(Rectangle(0, 0, 90, 45));
    device.FillPath(Rectangle(0, 0, 10, 10), Cmyk(1, 0, 0, 0, true));
    device.FillPath(Rectangle(5, 0, 10, 10), Gray(0.5, true));
    device.FillPath(Rectangle(20, 0, 10, 10), spot(lake));
    device.FillPath(Rectangle(25, 0, 10, 10), spot(pale));
    Shading blend;
    blend.matrix = {40, 0, 0, 20, 10, 5};
    blend.spans = {{0, 1, {spot(lake).colour, spot(brick).colour}}};
    device.Shade(blend);
    device.Restore();
    device.EndLayer();
    device.BeginLayer(layers[1]);
    for (const TextFont &font : fonts) {
        ASSERT_TRUE(device.CanShow(font)) << font.asked;
        GlyphRun run;
        run.font = &font;
        run.matrix = {10, 0, 0, 10, 0, 0};
        run.glyphs = {{34, U'A', 0.6, {5, 20}}, {0, 0xFFFD, 0.6, {11, 20}}, {35, U'B', 0.6, {17, 20}}};
        TextPaint paint;
        paint.fills = true;
        paint.paint = Gray(0);
        device.ShowText({&run, 1}, paint);
    }
    device.EndLayer();
}

struct Written {
    unsigned levels = 0;
    std::string bytes;
    std::shared_ptr<QPDF> file; // the same as qpdf reads it
    std::string xmp, program;

    Handle Root() { return file->getRoot(); }
    Handle Page() { return file->getAllPages().at(0); }
    Handle Info() { return file->getTrailer().getKey("/Info"); }
    Handle Resource(const char *kind) { return Page().getKey("/Resources").getKey(kind); }
    Handle Intent(int i) { return Root().getKey("/OutputIntents").getArrayItem(i); }
    // Replaces all places.
    void InXmp(const std::string &from, const std::string &to) { Replace(from, to, &xmp); }
    static void Replace(const std::string &from, const std::string &to, std::string *text)
    {
        for (size_t at = 0; (at = text->find(from, at)) != std::string::npos; at += to.size())
            text->replace(at, from.size(), to);
    }
};

Written Write(const PdfOptions &options, unsigned levels)
{
    vxhost::Page page;
    page.title = "Boats & <masts>";
    page.creator = "by hand";
    page.date = CalendarDate{1994, 3, 25, 10, 12, 0};
    DrawnPage drawn(DrawAll, options, page);
    EXPECT_EQ(drawn.error, "");
    Written written;
    written.levels = levels;
    written.bytes = drawn.bytes;
    return written;
}

// The same file, read anew.
Written Copy(const Written &from)
{
    Written copy = from;
    copy.file = std::make_shared<QPDF>();
    copy.file->setSuppressWarnings(true);
    copy.file->processMemoryFile("written", copy.bytes.data(), copy.bytes.size());
    if (Handle metadata = copy.Root().getKey("/Metadata"); metadata.isStream())
        copy.xmp = StreamText(metadata);
    for (Handle piece : copy.Page().getKey("/Contents").getArrayAsVector())
        copy.program += StreamText(piece);
    return copy;
}

// Calls see with every value of the file, however deep. Returns whether one of the calls did so.
template <typename See>
bool AnyIn(Handle value, const See &see)
{
    if (see(value))
        return true;
    const auto inside = [&](Handle part) { return !part.isIndirect() && AnyIn(part, see); };
    if (value.isArray())
        return std::ranges::any_of(value.getArrayAsVector(), inside);
    if (value.isStream())
        return AnyIn(value.getDict(), see);
    return value.isDictionary() &&
           std::ranges::any_of(value.getDictAsMap(), [&](const auto &row) { return inside(row.second); });
}

template <typename See>
bool Any(Written &written, const See &see)
{
    return std::ranges::any_of(written.file->getAllObjects(),
                               [&](Handle object) { return AnyIn(object, see); });
}

bool HasKey(Written &written, const std::string &key)
{
    return Any(written, [&](Handle value) { return value.isDictionary() && value.hasKey(key); });
}

bool IsName(Handle value, const std::string &name)
{
    return value.isName() && value.getName() == name;
}

// Properties that are one text.
std::string Property(const Written &written, const std::string &name)
{
    const size_t begin = written.xmp.find("<" + name + ">"), end = written.xmp.find("</" + name + ">");
    if (begin == std::string::npos || end == std::string::npos)
        return "";
    std::string text = written.xmp.substr(begin + name.size() + 2, end - begin - name.size() - 2);
    if (const size_t item = text.find("x-default\">"); item != std::string::npos)
        text = text.substr(item + 11, text.find("</rdf:li>") - item - 11);
    for (const auto &[markup, character] :
         {std::pair("&lt;", "<"), std::pair("&gt;", ">"), std::pair("&amp;", "&")})
        Written::Replace(markup, character, &text);
    return text;
}

std::string InfoText(Written &written, const char *key)
{
    return written.Info().hasKey(key) ? written.Info().getKey(key).getUTF8Value() : "";
}

// "D:19940325101200Z" as XMP has it.
std::string AsXmpDate(const std::string &date)
{
    if (date.size() < 16)
        return "";
    const auto part = [&](size_t at, size_t length) { return date.substr(at, length); };
    return part(2, 4) + "-" + part(6, 2) + "-" + part(8, 2) + "T" + part(10, 2) + ":" + part(12, 2) + ":" +
           part(14, 2) + part(16, 1);
}

bool StreamsEndWithALine(const std::string &bytes)
{
    size_t streams = 0, ends = 0;
    for (size_t at = 0; (at = bytes.find(">>\nstream\n", at)) != std::string::npos; ++streams) {
        const size_t key = bytes.rfind("/Length ", at);
        at += std::strlen(">>\nstream\n");
        const size_t length = std::stoul(bytes.substr(key + 8));
        ends += bytes.compare(at + length, 11, "\nendstream\n") == 0 ? 1 : 0;
    }
    return streams > 0 && ends == streams;
}

bool IsPressIntent(Handle intent, const std::string &kind)
{
    return IsName(intent.getKey("/S"), kind) && intent.getKey("/OutputConditionIdentifier").isString() &&
           intent.getKey("/Info").isString() && intent.getKey("/DestOutputProfile").isStream() &&
           intent.getKey("/DestOutputProfile").getDict().getKey("/N").unparse() == "4" &&
           StreamText(intent.getKey("/DestOutputProfile")).substr(12, 8) == "prtrCMYK";
}

std::vector<Handle> Intents(Written &written)
{
    Handle intents = written.Root().getKey("/OutputIntents");
    return intents.isArray() ? intents.getArrayAsVector() : std::vector<Handle>();
}

bool HasOneIntent(Written &written, const std::string &kind)
{
    return std::ranges::count_if(Intents(written), [&](Handle i) { return IsPressIntent(i, kind); }) == 1;
}

int NewestProfile(Written &written)
{
    int newest = 0;
    for (Handle intent : Intents(written))
        newest = std::max<int>(newest, StreamText(intent.getKey("/DestOutputProfile"))[8]);
    return newest;
}

void PaintFirst(const std::string &operators, Written *written)
{
    Handle first = written->Page().getKey("/Contents").getArrayItem(0);
    first.replaceStreamData(operators + "\n" + StreamText(first), Handle::newNull(), Handle::newNull());
    written->program = operators + "\n" + written->program;
}

// The page's operators, by name.
class Operators : public Handle::ParserCallbacks
{
  public:
    explicit Operators(Written &written)
    {
        Handle::parseContentStream(written.Page().getKey("/Contents"), this);
    }
    void handleObject(Handle object) override
    {
        if (!object.isOperator())
            return;
        const std::string name = object.getOperatorValue();
        names.insert(name);
        depth += name == "q" ? 1 : name == "Q" ? -1 : 0;
        most = std::max(most, depth);
    }
    void handleEOF() override {}

    std::set<std::string> names;
    int depth = 0, most = 0;
};

bool HasInksAlone(Written &written)
{
    const std::set<std::string> names = Operators(written).names;
    return !names.contains("rg") && !names.contains("RG") && !Any(written, [](Handle value) {
        return IsName(value, "/DeviceRGB") || IsName(value, "/CalRGB") || IsName(value, "/CalGray") ||
               IsName(value, "/Lab") || IsName(value, "/ICCBased");
    });
}

bool HasKnownOperators(Written &written)
{
    static const std::set<std::string> known = {
        "b",  "B",  "b*", "B*", "BDC", "BI",  "BMC", "BT", "BX", "c",  "cm", "CS", "cs", "d",  "d0",
        "d1", "Do", "DP", "EI", "EMC", "ET",  "EX",  "f",  "F",  "f*", "G",  "g",  "gs", "h",  "i",
        "ID", "j",  "J",  "K",  "k",   "l",   "m",   "M",  "MP", "n",  "q",  "Q",  "re", "RG", "rg",
        "ri", "s",  "S",  "SC", "sc",  "SCN", "scn", "sh", "T*", "Tc", "Td", "TD", "Tf", "Tj", "TJ",
        "TL", "Tm", "Tr", "Ts", "Tw",  "Tz",  "v",   "w",  "W",  "W*", "y",  "'",  "\""};
    return std::ranges::includes(known, Operators(written).names);
}

// Finds what each name of a Separation is shown as: the space and the function behind it.
bool SeparationsHaveOneLook(Written &written)
{
    std::map<std::string, std::set<std::string>> looks;
    (void)Any(written, [&](Handle value) {
        if (value.isArray() && value.getArrayNItems() == 4 && IsName(value.getArrayItem(0), "/Separation"))
            looks[value.getArrayItem(1).getName()].insert(value.getArrayItem(2).unparseResolved() +
                                                          value.getArrayItem(3).unparseResolved());
        return false;
    });
    return looks.contains("/Lake") &&
           std::ranges::all_of(looks, [](const auto &row) { return row.second.size() == 1; });
}

Handle MixedSpace(Written &written)
{
    Handle found = Handle::newNull();
    (void)Any(written, [&](Handle value) {
        const bool isMixed =
            value.isArray() && value.getArrayNItems() > 0 && IsName(value.getArrayItem(0), "/DeviceN");
        if (isMixed)
            found = value;
        return isMixed;
    });
    return found;
}

bool MixedInksAreDescribed(Written &written)
{
    Handle space = MixedSpace(written);
    if (!space.isArray() || space.getArrayNItems() != 5 || !space.getArrayItem(4).hasKey("/Colorants"))
        return false;
    Handle colorants = space.getArrayItem(4).getKey("/Colorants");
    const auto names = space.getArrayItem(1).getArrayAsVector();
    return names.size() == 2 &&
           std::ranges::all_of(names, [&](Handle name) { return colorants.hasKey(name.getName()); });
}

bool NamesAreFit(Written &written)
{
    const auto isFit = [](const std::string &name) {
        return name.size() <= 128 && IsUtf8(name);
    }; // with its "/"
    return !Any(written, [&](Handle value) {
        return (value.isName() && !isFit(value.getName())) ||
               (value.isDictionary() && !std::ranges::all_of(value.getKeys(), isFit));
    });
}

bool StringsAreFit(Written &written)
{
    return !Any(written,
                [](Handle value) { return value.isString() && value.getStringValue().size() > 32767; });
}

bool IsOpaque(Written &written)
{
    return !Any(written, [](Handle value) {
        return value.isDictionary() &&
               ((value.hasKey("/SMask") && !IsName(value.getKey("/SMask"), "/None")) ||
                value.hasKey("/Group") || (value.hasKey("/BM") && !IsName(value.getKey("/BM"), "/Normal")) ||
                (value.hasKey("/ca") && value.getKey("/ca").getNumericValue() != 1) ||
                (value.hasKey("/CA") && value.getKey("/CA").getNumericValue() != 1));
    });
}

// Overprint of mode 1 does not go with a profile of four inks.
bool OverprintsInkByInk(Written &written)
{
    const bool hasMode = Any(written, [](Handle value) {
        return value.isDictionary() && value.hasKey("/OPM") && value.getKey("/OPM").unparse() == "1";
    });
    return hasMode && !Any(written, [](Handle value) {
               return value.isArray() && value.getArrayNItems() == 2 &&
                      IsName(value.getArrayItem(0), "/ICCBased") &&
                      value.getArrayItem(1).getDict().getKey("/N").unparse() == "4";
           });
}

std::vector<Handle> Descriptors(Written &written)
{
    std::vector<Handle> found;
    for (Handle object : written.file->getAllObjects()) {
        if (object.isDictionary() && object.getKey("/Type").unparse() == "/FontDescriptor")
            found.push_back(object);
    }
    return found;
}

std::string ProgramKey(Handle descriptor)
{
    for (const char *key : {"/FontFile", "/FontFile2", "/FontFile3"}) {
        if (descriptor.hasKey(key))
            return key;
    }
    return "";
}

std::vector<Handle> Fonts(Written &written)
{
    std::vector<Handle> fonts;
    for (const auto &[name, font] : written.Resource("/Font").getDictAsMap())
        fonts.push_back(font);
    return fonts;
}

// The font that has widths and a descriptor: itself, or that within a composite one.
Handle Inner(Handle font)
{
    return font.hasKey("/DescendantFonts") ? font.getKey("/DescendantFonts").getArrayItem(0) : font;
}

Handle FirstOf(Written &written, const std::string &subtype)
{
    for (Handle font : Fonts(written)) {
        if (IsName(Inner(font).getKey("/Subtype"), subtype))
            return font;
    }
    return Handle::newNull();
}

// The codes that a font shows: those that have widths.
std::set<int> CodesOf(Handle font)
{
    std::set<int> codes;
    Handle inner = Inner(font);
    if (inner.hasKey("/W")) {
        for (int i = 0; i < inner.getKey("/W").getArrayNItems(); i += 2)
            codes.insert(inner.getKey("/W").getArrayItem(i).getIntValueAsInt());
    } else {
        for (int code = inner.getKey("/FirstChar").getIntValueAsInt();
             code <= inner.getKey("/LastChar").getIntValueAsInt(); ++code)
            codes.insert(code);
    }
    return codes;
}

// Returns whether a character map has a character for each code, and none that stands for nothing.
bool MapsAll(Handle font)
{
    if (!font.getKey("/ToUnicode").isStream())
        return false;
    const std::string map = StreamText(font.getKey("/ToUnicode"));
    std::set<int> mapped;
    bool isFit = true;
    for (size_t at = map.find("beginbfchar"); (at = map.find("\n<", at)) != std::string::npos; ++at) {
        const size_t middle = map.find("> <", at), end = map.find(">\n", middle + 3);
        mapped.insert(std::stoi(map.substr(at + 2, middle - at - 2), nullptr, 16));
        const std::string to = map.substr(middle + 3, end - middle - 3);
        isFit = isFit && to != "0000" && to != "FEFF" && to != "FFFE" && to.size() % 4 == 0;
    }
    return isFit && std::ranges::includes(mapped, CodesOf(font));
}

bool ShowsNoMissingGlyph(Written &written)
{
    return std::ranges::none_of(Fonts(written), [](Handle font) {
        if (Inner(font).hasKey("/W"))
            return CodesOf(font).contains(0);
        const auto names = font.getKey("/Encoding").getKey("/Differences").getArrayAsVector();
        return std::ranges::any_of(names, [](Handle name) { return IsName(name, "/.notdef"); });
    });
}

bool FontsGoByOneName(Written &written)
{
    return std::ranges::all_of(Fonts(written), [](Handle font) {
        Handle inner = Inner(font);
        const std::string name = inner.getKey("/BaseFont").getName();
        return font.getKey("/BaseFont").getName() == name &&
               inner.getKey("/FontDescriptor").getKey("/FontName").getName() == name &&
               (name.ends_with("NimbusSans-Regular") || name.ends_with("IPAGothic"));
    });
}

bool SidesAreFit(Written &written)
{
    auto box = written.Page().getKey("/MediaBox").getArrayAsVector();
    const auto isFit = [&](size_t from) {
        const double side = box[from + 2].getNumericValue() - box[from].getNumericValue();
        return side >= 3 && side <= 14400;
    };
    return isFit(0) && isFit(1);
}

bool TrimsWithinItsMedia(Written &written)
{
    Handle trim = written.Page().getKey("/TrimBox"), media = written.Page().getKey("/MediaBox");
    if (!trim.isArray() || written.Page().hasKey("/ArtBox"))
        return false;
    const auto at = [](Handle box, int i) { return box.getArrayItem(i).getNumericValue(); };
    return at(trim, 0) >= at(media, 0) && at(trim, 1) >= at(media, 1) && at(trim, 2) <= at(media, 2) &&
           at(trim, 3) <= at(media, 3);
}

Handle Layers(Written &written)
{
    return written.Root().getKey("/OCProperties");
}

// All references in an order, however nested.
void GatherGroups(Handle order, std::set<int> *groups)
{
    for (Handle entry : order.getArrayAsVector()) {
        if (entry.isArray())
            GatherGroups(entry, groups);
        else
            groups->insert(entry.getObjectID());
    }
}

bool OrdersAllLayers(Written &written)
{
    std::set<int> all, ordered;
    GatherGroups(Layers(written).getKey("/OCGs"), &all);
    GatherGroups(Layers(written).getKey("/D").getKey("/Order"), &ordered);
    return all == ordered && all.size() == 2;
}

// Returns whether the file describes a property that the standard does not know, where it has it.
bool IsDescribed(const Written &written, const std::string &prefix, const std::string &name)
{
    if (written.xmp.find("<" + prefix + ":" + name + ">") == std::string::npos)
        return true;
    const size_t schemas = written.xmp.find("<pdfaExtension:schemas>");
    const size_t schema = written.xmp.find("<pdfaSchema:prefix>" + prefix + "</", schemas);
    return schemas != std::string::npos && schema != std::string::npos &&
           written.xmp.find("<pdfaProperty:name>" + name + "</", schema) != std::string::npos;
}

bool IsOneOf(const std::string &text, std::initializer_list<const char *> texts)
{
    return std::ranges::find(texts, text) != texts.end();
}

struct Requirement {
    const char *name;
    unsigned levels;
    bool (*holds)(Written &written);
    void (*breaks)(Written *written);
    unsigned unless = 0; // levels beside which it is none
};

const Requirement kRequirements[] = {
    {"TheHeadNamesAPdfOf2003", kOf2003, [](Written &w) { return w.bytes.starts_with("%PDF-1.4\n"); },
     [](Written *w) { w->bytes[7] = '5'; }},
    {"TheHeadNamesAPdfOfThePress", kX4,
     [](Written &w) { return w.bytes.starts_with("%PDF-1.") && w.bytes[7] <= '6' && w.bytes[8] == '\n'; },
     [](Written *w) { w->bytes[7] = '7'; }},
    {"TheHeadNamesAPdfOfArchives", kA,
     [](Written &w) {
         return w.bytes.starts_with("%PDF-1.") && w.bytes[7] >= '0' && w.bytes[7] <= '7' &&
                w.bytes[8] == '\n';
     },
     [](Written *w) { w->bytes[5] = '2'; }},
    {"TheHeadSaysThatItIsBinary", kA,
     [](Written &w) {
         return w.bytes[9] == '%' &&
                std::ranges::all_of(w.bytes.substr(10, 4), [](char c) { return (c & 0x80) != 0; });
     },
     [](Written *w) { w->bytes[11] = 'x'; }},
    {"ItsVersionIsThatOfTheHead", kAll, [](Written &w) { return !w.Root().hasKey("/Version"); },
     [](Written *w) { w->Root().replaceKey("/Version", Handle::newName("/2.0")); }},
    {"StreamsAreOfTheirLengthAndEndWithALine", kA, [](Written &w) { return StreamsEndWithALine(w.bytes); },
     [](Written *w) { w->bytes.replace(w->bytes.find("\nendstream"), 1, " "); }},
    {"TheTableOfPlacesBeginsPlainly", kA,
     [](Written &w) { return w.bytes.find("\nxref\n0 ") != std::string::npos; },
     [](Written *w) { Written::Replace("\nxref\n", "\nxref \n", &w->bytes); }},
    {"NothingIsBehindTheEnd", kA, [](Written &w) { return w.bytes.ends_with("\n%%EOF\n"); },
     [](Written *w) { w->bytes += "more"; }},
    {"ItHasAnIdentity", kAll,
     [](Written &w) {
         Handle id = w.file->getTrailer().getKey("/ID");
         return id.isArray() && id.getArrayNItems() == 2 && id.getArrayItem(0).getStringValue().size() == 16;
     },
     [](Written *w) { w->file->getTrailer().removeKey("/ID"); }},
    {"ItIsNotEncrypted", kAll, [](Written &w) { return !w.file->getTrailer().hasKey("/Encrypt"); },
     [](Written *w) { w->file->getTrailer().replaceKey("/Encrypt", Handle::newDictionary()); }},

    {"ItHasATitle", kX, [](Written &w) { return InfoText(w, "/Title") == "Boats & <masts>"; },
     [](Written *w) { w->Info().removeKey("/Title"); }},
    {"ItHasBothDates", kX,
     [](Written &w) {
         return InfoText(w, "/CreationDate").starts_with("D:") && InfoText(w, "/ModDate").starts_with("D:");
     },
     [](Written *w) { w->Info().removeKey("/ModDate"); }},
    {"ItSaysIfItIsTrapped", kX,
     [](Written &w) {
         return w.Info().hasKey("/Trapped") &&
                IsOneOf(w.Info().getKey("/Trapped").unparse(), {"/True", "/False"});
     },
     [](Written *w) { w->Info().replaceKey("/Trapped", Handle::newName("/Unknown")); }},
    {"ItsInformationNamesX1a", kX1a,
     [](Written &w) { return InfoText(w, "/GTS_PDFXVersion") == "PDF/X-1a:2003"; },
     [](Written *w) { w->Info().removeKey("/GTS_PDFXVersion"); }},
    {"ItsInformationNamesX3", kX3,
     [](Written &w) { return InfoText(w, "/GTS_PDFXVersion") == "PDF/X-3:2003"; },
     [](Written *w) { w->Info().replaceKey("/GTS_PDFXVersion", Handle::newString("PDF/X-3:2002")); }},

    {"ItHasXmp", kX4 | kA,
     [](Written &w) {
         Handle metadata = w.Root().getKey("/Metadata");
         return metadata.isStream() && IsName(metadata.getDict().getKey("/Type"), "/Metadata") &&
                IsName(metadata.getDict().getKey("/Subtype"), "/XML") &&
                !metadata.getDict().hasKey("/Filter");
     },
     [](Written *w) { w->Root().removeKey("/Metadata"); }},
    {"ItsXmpIsInAPacket", kX4 | kA,
     [](Written &w) {
         return w.xmp.starts_with("<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n") &&
                w.xmp.ends_with("<?xpacket end=\"r\"?>") && IsUtf8(w.xmp);
     },
     [](Written *w) { w->InXmp("?>\n<x:", " encoding=\"UTF-8\"?>\n<x:"); }},
    {"ItsXmpNamesX4", kX4, [](Written &w) { return Property(w, "pdfxid:GTS_PDFXVersion") == "PDF/X-4"; },
     [](Written *w) { w->InXmp("PDF/X-4", "PDF/X-4p"); }},
    {"ItsXmpNamesItsRendition", kX4,
     [](Written &w) {
         return Property(w, "xmpMM:DocumentID").starts_with("uuid:") &&
                Property(w, "xmpMM:VersionID") == "1" && Property(w, "xmpMM:RenditionClass") == "default";
     },
     [](Written *w) { w->InXmp("xmpMM:VersionID", "xmpMM:Version"); }},
    {"ItsXmpIsDated", kX4,
     [](Written &w) { return Property(w, "xmp:MetadataDate") == "1994-03-25T10:12:00"; },
     [](Written *w) { w->InXmp("xmp:MetadataDate", "xmp:Metadata"); }},
    {"ItsXmpSaysIfItIsTrapped", kX4,
     [](Written &w) { return "/" + Property(w, "pdf:Trapped") == w.Info().getKey("/Trapped").unparse(); },
     [](Written *w) { w->InXmp("<pdf:Trapped>False", "<pdf:Trapped>True"); }},
    {"ItsXmpNamesThePart", kA, [](Written &w) { return Property(w, "pdfaid:part") == "2"; },
     [](Written *w) { w->InXmp("<pdfaid:part>2", "<pdfaid:part>1"); }},
    {"ItsXmpNamesConformanceB", kA2b, [](Written &w) { return Property(w, "pdfaid:conformance") == "B"; },
     [](Written *w) { w->InXmp("<pdfaid:conformance>B", "<pdfaid:conformance>b"); }},
    {"ItsXmpNamesConformanceU", kA2u, [](Written &w) { return Property(w, "pdfaid:conformance") == "U"; },
     [](Written *w) { w->InXmp("<pdfaid:conformance>U", "<pdfaid:conformance>A"); }},
    {"ItsXmpHasTheTitleOfTheInformation", kX4 | kA,
     [](Written &w) { return InfoText(w, "/Title") == Property(w, "dc:title"); },
     [](Written *w) { w->Info().replaceKey("/Title", Handle::newString("Boats")); }},
    {"ItsXmpHasTheProgramsOfTheInformation", kX4 | kA,
     [](Written &w) {
         return InfoText(w, "/Creator") == Property(w, "xmp:CreatorTool") &&
                InfoText(w, "/Producer") == Property(w, "pdf:Producer");
     },
     [](Written *w) { w->InXmp("by hand", "by machine"); }},
    {"ItsXmpHasTheDatesOfTheInformation", kX4 | kA,
     [](Written &w) {
         return AsXmpDate(InfoText(w, "/CreationDate")) == Property(w, "xmp:CreateDate") &&
                AsXmpDate(InfoText(w, "/ModDate")) == Property(w, "xmp:ModifyDate") &&
                Property(w, "xmp:CreateDate") != "";
     },
     [](Written *w) { w->Info().replaceKey("/CreationDate", Handle::newString("D:19940325101201")); }},
    {"ItsOwnPropertiesAreDescribed", kA,
     [](Written &w) {
         return IsDescribed(w, "vx", "FontMap") && IsDescribed(w, "pdfxid", "GTS_PDFXVersion") &&
                IsDescribed(w, "pdf", "Trapped");
     },
     [](Written *w) { w->InXmp("<pdfaProperty:name>FontMap</", "<pdfaProperty:name>Fonts</"); }},
    {"ItsXmpHasTheDateOfTheDrawing", kAll,
     [](Written &w) {
         return Property(w, "dc:date").find("<rdf:li>1994-03-25T10:12:00</rdf:li>") != std::string::npos;
     },
     [](Written *w) { w->InXmp("dc:date", "dc:dates"); }},
    {"ItsXmpHasTheFontsThatAreAskedFor", kAll,
     [](Written &w) {
         return Property(w, "vx:FontMap").find("<rdf:li>Frutiger-Black = NimbusSans-Regular</rdf:li>") !=
                std::string::npos;
     },
     [](Written *w) { w->InXmp("Frutiger-Black", "Frutiger"); }},

    {"ItHasTheIntentOfThePress", kX, [](Written &w) { return HasOneIntent(w, "/GTS_PDFX"); },
     [](Written *w) { w->Intent(0).replaceKey("/S", Handle::newName("/ISO_PDFE1")); }},
    {"TheIntentOfThePressHasAPressProfile", kX, [](Written &w) { return HasOneIntent(w, "/GTS_PDFX"); },
     [](Written *w) {
         w->Intent(0).getKey("/DestOutputProfile").getDict().replaceKey("/N", Handle::newInteger(3));
     }},
    {"ItHasTheIntentOfArchives", kA, [](Written &w) { return HasOneIntent(w, "/GTS_PDFA1"); },
     [](Written *w) {
         for (Handle intent : Intents(*w))
             intent.removeKey("/DestOutputProfile");
     }},
    {"AllIntentsHaveOneProfile", kAll,
     [](Written &w) {
         std::set<int> profiles;
         for (Handle intent : Intents(w))
             profiles.insert(intent.getKey("/DestOutputProfile").getObjectID());
         return profiles.size() == 1;
     },
     [](Written *w) {
         Handle other = w->Intent(0).shallowCopy();
         other.replaceKey("/DestOutputProfile", Handle::newStream(w->file.get(), "other"));
         w->Root().getKey("/OutputIntents").appendItem(w->file->makeIndirectObject(other));
     }},
    {"ItsProfileIsOfVersion2", kOf2003, [](Written &w) { return NewestProfile(w) == 2; },
     [](Written *w) {
         Handle profile = w->Intent(0).getKey("/DestOutputProfile");
         std::string bytes = StreamText(profile);
         bytes[8] = 4;
         profile.replaceStreamData(bytes, Handle::newNull(), Handle::newNull());
     }},
    {"ItsProfileIsOfVersion4AtMost", kAll,
     [](Written &w) { return NewestProfile(w) >= 2 && NewestProfile(w) <= 4; },
     [](Written *w) {
         Handle profile = w->Intent(0).getKey("/DestOutputProfile");
         std::string bytes = StreamText(profile);
         bytes[8] = 5;
         profile.replaceStreamData(bytes, Handle::newNull(), Handle::newNull());
     }},

    {"ItPaintsWithInksAlone", kAll, [](Written &w) { return HasInksAlone(w); },
     [](Written *w) { PaintFirst("1 0 0 rg", w); }},
    {"ItsSpacesAreOfInksAlone", kAll, [](Written &w) { return HasInksAlone(w); },
     [](Written *w) { w->Resource("/ColorSpace").replaceKey("/Other", Handle::newName("/DeviceRGB")); }},
    {"ItOverprintsInkByInk", kA, [](Written &w) { return OverprintsInkByInk(w); },
     [](Written *w) {
         Handle space = Handle::parse("[/ICCBased]");
         space.appendItem(w->Intent(0).getKey("/DestOutputProfile"));
         w->Resource("/ColorSpace").replaceKey("/Other", space);
     }},
    {"ASpotInkHasOneLook", kX4 | kA, [](Written &w) { return SeparationsHaveOneLook(w); },
     [](Written *w) {
         w->Resource("/ColorSpace")
             .replaceKey("/Other",
                         Handle::parse("[/Separation /Lake /DeviceCMYK << /FunctionType 2 /N 1 >>]"));
     }},
    {"MixedInksAreDescribed", kX4 | kA, [](Written &w) { return MixedInksAreDescribed(w); },
     [](Written *w) { MixedSpace(*w).getArrayItem(4).getKey("/Colorants").removeKey("/Brick red"); }},
    {"SpotInksHavePlates", kAll,
     [](Written &w) {
         return w.Resource("/ColorSpace").getKey("/Spot1").unparseResolved().find("/Lake") !=
                std::string::npos;
     },
     [](Written *w) { w->Resource("/ColorSpace").replaceKey("/Spot1", Handle::newName("/DeviceCMYK")); }},
    {"ItIsOpaque", kX, [](Written &w) { return IsOpaque(w); },
     [](Written *w) { w->Resource("/ExtGState").replaceKey("/Other", Handle::parse("<< /ca .5 >>")); }},
    {"ItHasNoBlendOfModes", kX, [](Written &w) { return IsOpaque(w); },
     [](Written *w) {
         w->Resource("/ExtGState").replaceKey("/Other", Handle::parse("<< /BM /Multiply >>"));
     }},
    {"ItHasNoTransferFunction", kAll,
     [](Written &w) { return !HasKey(w, "/TR") && !HasKey(w, "/TR2") && !HasKey(w, "/HTP"); },
     [](Written *w) {
         w->Resource("/ExtGState").replaceKey("/Other", Handle::parse("<< /TR /Identity >>"));
     }},
    {"ItsOperatorsAreKnown", kAll, [](Written &w) { return HasKnownOperators(w); },
     [](Written *w) { PaintFirst("1 xx", w); }},
    {"StatesAreNotNestedDeeply", kA,
     [](Written &w) { return Operators(w).most <= 28 && Operators(w).depth == 0; },
     [](Written *w) {
         std::string deep;
         for (int i = 0; i < 29; ++i)
             deep = "q " + deep + "Q ";
         PaintFirst(deep, w);
     }},

    {"ItsFontsAreEmbedded", kAll,
     [](Written &w) {
         const std::vector<Handle> all = Descriptors(w);
         return all.size() == 3 &&
                std::ranges::all_of(all, [](Handle one) { return !ProgramKey(one).empty(); });
     },
     [](Written *w) {
         Handle first = Descriptors(*w).front();
         first.removeKey(ProgramKey(first));
     }},
    {"ItsFontsGoByOneName", kAll, [](Written &w) { return FontsGoByOneName(w); },
     [](Written *w) {
         Descriptors(*w).front().replaceKey("/FontName", Handle::newName("/ABCDEF+Frutiger-Black"));
     }},
    {"ItsFontsNameGlyphsByIndex", kAll,
     [](Written &w) {
         Handle font = FirstOf(w, "/CIDFontType2");
         return font.isDictionary() && IsName(Inner(font).getKey("/CIDToGIDMap"), "/Identity") &&
                IsName(font.getKey("/Encoding"), "/Identity-H");
     },
     [](Written *w) { Inner(FirstOf(*w, "/CIDFontType2")).removeKey("/CIDToGIDMap"); }},
    {"ItsCharactersAreKnown", kA2u,
     [](Written &w) { return Fonts(w).size() == 3 && std::ranges::all_of(Fonts(w), MapsAll); },
     [](Written *w) { FirstOf(*w, "/CIDFontType0").removeKey("/ToUnicode"); }},
    {"EachOfItsCharactersIsKnown", kA2u, [](Written &w) { return std::ranges::all_of(Fonts(w), MapsAll); },
     [](Written *w) {
         Handle map = FirstOf(*w, "/Type1").getKey("/ToUnicode");
         std::string text = StreamText(map);
         Written::Replace("<01> <0041>\n", "", &text);
         map.replaceStreamData(text, Handle::newNull(), Handle::newNull());
     }},
    {"ItsCharactersAreSome", kA2u, [](Written &w) { return std::ranges::all_of(Fonts(w), MapsAll); },
     [](Written *w) {
         Handle map = FirstOf(*w, "/Type1").getKey("/ToUnicode");
         std::string text = StreamText(map);
         Written::Replace("<0041>", "<FEFF>", &text);
         map.replaceStreamData(text, Handle::newNull(), Handle::newNull());
     }},
    {"NoTextShowsTheMissingGlyph", kA, [](Written &w) { return ShowsNoMissingGlyph(w); },
     [](Written *w) {
         Handle widths = Inner(FirstOf(*w, "/CIDFontType0")).getKey("/W");
         widths.appendItem(Handle::newInteger(0));
         widths.appendItem(Handle::parse("[500]"));
     }},
    {"NoSimpleTextShowsTheMissingGlyph", kA, [](Written &w) { return ShowsNoMissingGlyph(w); },
     [](Written *w) {
         FirstOf(*w, "/Type1")
             .getKey("/Encoding")
             .getKey("/Differences")
             .appendItem(Handle::newName("/.notdef"));
     }},

    {"ItsPageIsOfASizeThatReadersTake", kA, [](Written &w) { return SidesAreFit(w); },
     [](Written *w) { w->Page().replaceKey("/MediaBox", Handle::parse("[0 0 100 2.9]")); }},
    {"ItsPageIsTrimmed", kX, [](Written &w) { return TrimsWithinItsMedia(w); },
     [](Written *w) { w->Page().removeKey("/TrimBox"); }},
    {"ItIsTrimmedWithinItsPage", kX, [](Written &w) { return TrimsWithinItsMedia(w); },
     [](Written *w) { w->Page().replaceKey("/TrimBox", Handle::parse("[0 0 101 50]")); }},

    {"ItHasNoLayers", kOf2003,
     [](Written &w) { return !w.Root().hasKey("/OCProperties") && !HasKey(w, "/OCGs"); },
     [](Written *w) { w->Root().replaceKey("/OCProperties", Handle::newDictionary()); }},
    {"LayersStay", kX4 | kA,
     [](Written &w) {
         return Layers(w).isDictionary() && Layers(w).getKey("/OCGs").getArrayNItems() == 2 &&
                w.program.find("/OC /Layer2 BDC") != std::string::npos;
     },
     [](Written *w) { w->Root().removeKey("/OCProperties"); }, kOf2003},
    {"LayersThatDoNotPrintAreOff", kX4 | kA,
     [](Written &w) {
         Handle off = Layers(w).getKey("/D").getKey("/OFF");
         return off.getArrayNItems() == 1 && off.getArrayItem(0).getKey("/Name").getUTF8Value() == "Notes";
     },
     [](Written *w) { Layers(*w).getKey("/D").replaceKey("/OFF", Handle::newArray()); }, kOf2003},
    {"TheConfigurationOfLayersHasAName", kX4 | kA,
     [](Written &w) { return Layers(w).getKey("/D").hasKey("/Name") && !Layers(w).hasKey("/Configs"); },
     [](Written *w) { Layers(*w).getKey("/D").removeKey("/Name"); }, kOf2003},
    {"TheOrderOfLayersHasAll", kX4 | kA, [](Written &w) { return OrdersAllLayers(w); },
     [](Written *w) { Layers(*w).getKey("/D").getKey("/Order").eraseItem(0); }, kOf2003},
    {"LayersDoNotFollowTheReader", kX4 | kA, [](Written &w) { return !HasKey(w, "/AS"); },
     [](Written *w) { Layers(*w).getKey("/D").replaceKey("/AS", Handle::newArray()); }, kOf2003},

    {"ItDoesNothing", kAll,
     [](Written &w) {
         return !HasKey(w, "/OpenAction") && !HasKey(w, "/AA") && !HasKey(w, "/Names") &&
                !HasKey(w, "/AcroForm");
     },
     [](Written *w) { w->Root().replaceKey("/OpenAction", Handle::newDictionary()); }},
    {"ItHasNoNotes", kX, [](Written &w) { return !HasKey(w, "/Annots"); },
     [](Written *w) { w->Page().replaceKey("/Annots", Handle::newArray()); }},
    {"ItsStreamsAreOfKnownKinds", kAll,
     [](Written &w) {
         return !Any(w, [](Handle value) {
             return IsName(value, "/LZWDecode") || IsName(value, "/Crypt") ||
                    (value.isStream() && value.getDict().hasKey("/F"));
         });
     },
     [](Written *w) { w->Root().getKey("/OutputIntents").appendItem(Handle::newName("/LZWDecode")); }},
    {"ItHasNoPostScript", kAll,
     [](Written &w) {
         return !Any(w, [](Handle value) {
             return IsName(value, "/PS") || (value.isDictionary() && value.hasKey("/PS"));
         });
     },
     [](Written *w) {
         w->Page().getKey("/Resources").replaceKey("/XObject", Handle::parse("<< /A << /Subtype /PS >> >>"));
     }},
    {"ItsNamesAreFit", kA, [](Written &w) { return NamesAreFit(w); },
     [](Written *w) {
         w->Resource("/ColorSpace").replaceKey("/" + std::string(128, 'a'), Handle::newName("/DeviceGray"));
     }},
    {"ItsStringsAreFit", kA, [](Written &w) { return StringsAreFit(w); },
     [](Written *w) { w->Info().replaceKey("/Subject", Handle::newString(std::string(32768, 'a'))); }},
};

struct Choice {
    const char *name;
    PdfX press;
    PdfA archive;
    unsigned levels;
};

const Choice kChoices[] = {
    {"X1a", PdfX::X1a, PdfA::None, kX1a},
    {"X3", PdfX::X3, PdfA::None, kX3},
    {"X4", PdfX::X4, PdfA::None, kX4},
    {"A2b", PdfX::None, PdfA::A2b, kA2b},
    {"A2u", PdfX::None, PdfA::A2u, kA2u},
    {"X1aAndA2u", PdfX::X1a, PdfA::A2u, kX1a | kA2u},
    {"X3AndA2b", PdfX::X3, PdfA::A2b, kX3 | kA2b},
    {"X4AndA2b", PdfX::X4, PdfA::A2b, kX4 | kA2b},
    {"X4AndA2u", PdfX::X4, PdfA::A2u, kX4 | kA2u},
};

class PdfLevels : public testing::TestWithParam<Choice>
{
};

TEST_P(PdfLevels, AreKeptToAndABrokenTwinIsSeen)
{
    const Choice &choice = GetParam();
    PdfOptions options;
    options.standard = choice.press;
    options.archive = choice.archive;
    const Written written = Write(options, choice.levels);
    ASSERT_FALSE(HasFailure());
    for (const Requirement &row : kRequirements) {
        if ((row.levels & choice.levels) == 0 || (row.unless & choice.levels) != 0)
            continue;
        Written whole = Copy(written), broken = Copy(written);
        EXPECT_TRUE(row.holds(whole)) << row.name;
        row.breaks(&broken);
        EXPECT_FALSE(row.holds(broken)) << row.name << ": the twin is not broken, or nobody looks";
    }
}

INSTANTIATE_TEST_SUITE_P(Pdf, PdfLevels, testing::ValuesIn(kChoices),
                         [](const auto &choice) { return std::string(choice.param.name); });

} // namespace
