// Documents drawn as a user draws them: the plug-in, the drawing state, fonts, and every device that makes a file, under
// the options that a person may choose. What a device completes must be a file of its kind; what it cannot write, because
// the reader leaves or the disk is full, it must say.
#include "fuzz/HostileHost.h"
#include "fuzz/Require.h"

#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterDevice.h"
#include "devices/svg/SvgDevice.h"
#include "host/Document.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "plugin/entry/VXParser.h"

#include <pugixml.hpp>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace
{

using namespace vxhost;
using vxfuzz::Require;

// It has the fonts of the tests' packages, so that every machine draws the same.
const Installation &Installed()
{
    static const Installation installation = {
        Plugin::FromEntry(VXParserMain),
        MakeFontconfigFonts(
            {false, {"/usr/share/fonts/opentype/urw-base35", "/usr/share/fonts/opentype/ipafont-gothic"}})};
    return installation;
}

// The options of a drawing, as the bytes at the input's end choose them.
struct Choice {
    explicit Choice(const vxfuzz::Behaviour &bytes)
        : kind(static_cast<Kind>(bytes.seed % 4)), options(bytes.selector), writes(bytes.failures),
          limits(bytes.missing), fonts(bytes.fonts), stops(bytes.stops)
    {
    }
    bool Has(unsigned option) const { return (options >> option & 1) != 0; }

    enum class Kind : uint8_t { Pdf, Svg, Png, Picture } kind;
    uint8_t options;
    uint8_t writes; // 0: all succeed; else the one that fails, counted from 1
    uint8_t limits; // 0: ample memory; else little
    uint8_t
        fonts; // bits: nothing is substituted; the script is said, and which; what is malformed is left out
    uint8_t stops; // bits: reports that are answered with "stop"
};

constexpr const char *kNoRoom = "no room for this write";

// Where the output goes, up to the write that fails.
class Output
{
  public:
    explicit Output(const Choice &choice) : writesLeft_(choice.writes == 0 ? -1 : choice.writes - 1) {}

    ByteSink Sink()
    {
        return [this](std::span<const std::byte> bytes) -> Failure {
            Require(!hasFailed_, "a write after one that failed");
            hasFailed_ = writesLeft_ == 0;
            if (hasFailed_)
                return {FailureKind::CannotWrite, kNoRoom};
            --writesLeft_;
            bytes_.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            return {};
        };
    }
    bool HasFailed() const { return hasFailed_; }
    const std::string &Bytes() const { return bytes_; }

  private:
    int writesLeft_;
    bool hasFailed_ = false;
    std::string bytes_;
};

std::unique_ptr<Device> MakePdf(const Choice &choice, ByteSink sink, std::string *error)
{
    PdfOptions options;
    if (choice.Has(0))
        options.text = TextOutput::Outlines;
    options.compression = choice.Has(1)   ? Compression::None
                          : choice.Has(4) ? Compression::Fast
                                          : Compression::Default;
    if (choice.Has(2)) {
        options.standard = choice.Has(3) ? PdfX::X1a : PdfX::X4;
        options.archive = choice.Has(5) ? PdfA::A2u : PdfA::None;
        options.date = 86400;
    } else if (choice.Has(3)) {
        options.background = Rgb{1, 2, 3};
    }
    return MakePdfDevice(options, std::move(sink), error);
}

void ChooseScreen(const Choice &choice, ScreenOptions *screen)
{
    screen->profile = choice.Has(6) && choice.Has(7) ? "fogra39" : "none";
    if (choice.Has(5))
        screen->intent = Intent::Perceptual;
}

std::unique_ptr<Device> MakeSvg(const Choice &choice, ByteSink sink, std::string *error)
{
    SvgOptions options;
    ChooseScreen(choice, &options);
    if (choice.Has(0))
        options.text = TextOutput::Outlines;
    options.overprint = !choice.Has(1);
    if (choice.Has(2))
        options.background = Rgb{1, 2, 3};
    return MakeSvgDevice(options, std::move(sink), error);
}

RasterOptions ChooseRaster(const Choice &choice)
{
    RasterOptions options;
    ChooseScreen(choice, &options);
    options.fit = choice.Has(4) ? 130 : 40;
    options.samples = 1 << (choice.options & 3);
    if (choice.Has(2))
        options.background.reset();
    options.overprint = !choice.Has(3);
    options.memoryLimit =
        choice.limits % 4 == 0 ? uint64_t{64} << 20 : uint64_t{1} << (14 + choice.limits % 8);
    return options;
}

bool IsPng(std::string_view bytes)
{
    constexpr std::string_view kEnd("\0\0\0\0IEND\xAE\x42\x60\x82", 12);
    return bytes.starts_with("\x89PNG\r\n\x1a\n") && bytes.ends_with(kEnd);
}

// Saves and restores pair, and no text is left open: a viewer would drop the page, or what comes after it.
class ProgramReader final : public QPDFObjectHandle::ParserCallbacks
{
  public:
    void handleObject(QPDFObjectHandle object) override
    {
        if (!object.isOperator())
            return;
        const std::string name = object.getOperatorValue();
        depth_ += name == "q" ? 1 : name == "Q" ? -1 : 0;
        texts_ += name == "BT" ? 1 : name == "ET" ? -1 : 0;
        Require(depth_ >= 0 && (texts_ == 0 || texts_ == 1), "a pdf restores or ends text too often");
        Require(texts_ == 0 || (name != "q" && name != "Q" && name != "f" && name != "S"),
                "a pdf paints or saves inside of text");
    }
    void handleEOF() override { Require(depth_ == 0 && texts_ == 0, "a pdf saves or starts text too often"); }

  private:
    int depth_ = 0;
    int texts_ = 0;
};

void CheckPdf(const std::string &bytes)
{
    try {
        QPDF file;
        file.setSuppressWarnings(true);
        file.processMemoryFile("output", bytes.data(), bytes.size());
        std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(file).getAllPages();
        Require(pages.size() == 1, "a pdf of other than one page");
        constexpr size_t kQuicklyRead = 32768;
        ProgramReader reader;
        if (bytes.size() < kQuicklyRead)
            pages.front().parseContents(&reader);
        for (QPDFObjectHandle &object : file.getAllObjects()) {
            if (object.isStream() && object.getDict().hasKey("/Filter"))
                object.getStreamData();
        }
        for (const QPDFExc &warning : file.getWarnings())
            Require(false, std::string("a pdf with an error: ") + warning.what());
    } catch (const std::exception &failure) {
        Require(false, std::string("a pdf that cannot be read: ") + failure.what());
    }
}

void CheckSvg(const std::string &bytes)
{
    pugi::xml_document svg;
    const pugi::xml_parse_result result = svg.load_buffer(bytes.data(), bytes.size());
    Require(result, std::string("an svg that is no XML: ") + result.description());
    for (const char byte : bytes)
        Require(static_cast<unsigned char>(byte) >= ' ' || byte == '\n' || byte == '\t',
                "an svg with a character that XML does not have");
    for (const char *name : {"d", "x", "y", "width", "height", "transform", "stroke-width"}) {
        for (const pugi::xpath_node &found : svg.select_nodes((std::string("//@") + name).c_str())) {
            const std::string_view value = found.attribute().value();
            Require(value.find("nan") == value.npos && value.find("inf") == value.npos,
                    "an svg with no number");
        }
    }
}

struct Made {
    Choice choice;
    Output output;
    Picture picture;
    std::unique_ptr<Device> device;

    explicit Made(const Choice &chosen) : choice(chosen), output(chosen)
    {
        std::string error;
        switch (choice.kind) {
        case Choice::Kind::Pdf:
            device = MakePdf(choice, output.Sink(), &error);
            break;
        case Choice::Kind::Svg:
            device = MakeSvg(choice, output.Sink(), &error);
            break;
        case Choice::Kind::Png:
            device = MakePngDevice(ChooseRaster(choice), output.Sink(), &error);
            break;
        case Choice::Kind::Picture:
            device = MakePictureDevice(ChooseRaster(choice), &picture, &error);
            break;
        }
        Require(device != nullptr, error);
    }

    void Check(const Failure &failure) const
    {
        Require(failure.text.find('\n') == std::string::npos, "an error of two lines");
        if (output.HasFailed())
            Require(failure.text.find(kNoRoom) != std::string::npos, "a failed write is not told");
        if (failure)
            return;
        switch (choice.kind) {
        case Choice::Kind::Pdf:
            return CheckPdf(output.Bytes());
        case Choice::Kind::Svg:
            return CheckSvg(output.Bytes());
        case Choice::Kind::Png:
            return Require(IsPng(output.Bytes()), "a png that is none");
        case Choice::Kind::Picture:
            return Require(!picture.rgba.empty(), "a picture without pixels");
        }
    }
};

// isSalvaged: nothing is malformed any more but a document that draws nothing.
void CheckFault(const Outcome &outcome, bool isSalvaged)
{
    const DocumentFault &fault = outcome.fault;
    Require(fault.text.size() <= DocumentFault::kMostText, "a long text about a fault");
    for (const char byte : fault.text)
        Require(byte >= ' ' && byte <= '~', "a text about a fault that is not ASCII");
    Require(fault.line >= 0 && fault.column >= 0 && (fault.line > 0 || fault.column == 0), "a fault nowhere");
    Require(!isSalvaged || outcome.result != kVXBadFormat || fault.column == 0,
            "a fault that was not left out");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const vxfuzz::Input input(data, size);
    const Choice choice(input.behaviour);
    const auto bytes = std::as_bytes(input.document);
    std::string error;
    const std::unique_ptr<Document> document = Document::FromMemory(bytes, &error);
    Require(document != nullptr, error);
    ReadingOptions options;
    options.substitute = (choice.fonts & 1) == 0;
    if ((choice.fonts & 2) != 0)
        options.script = static_cast<Script>(choice.fonts >> 2 & 3);
    options.salvage = (choice.fonts & 16) != 0;
    options.maxMemory = choice.limits == 0 ? int64_t{16} << 20 : int64_t{1} << (12 + choice.limits % 12);
    options.onReport = [&choice](const Report &report) { return (choice.stops >> report.number & 1) != 0; };
    Reading reading(Installed(), *document, options);

    Page page = reading.PageFor();
    if (reading.ReadInfo().result != kVXOk || page.box.Width() <= 0 || page.box.Height() <= 0)
        page.box = {0, 0, 400, 400};
    const Made made(choice);
    const Outcome outcome = reading.Draw(page, *made.device);
    CheckFault(outcome, options.salvage && choice.limits == 0);
    if (outcome.result != kVXOutOfMemory) // without memory there is no output
        made.Check(outcome.failure);
    return 0;
}
