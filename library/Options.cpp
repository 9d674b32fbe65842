#include "library/Options.h"

#include "library/OptionValues.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <utility>

namespace vxhost
{

namespace
{

constexpr double kMaxDpi = 100000;
constexpr double kPointsPerInch = 72;
constexpr double kMaxLength = 200 * kPointsPerInch; // that viewers of PDF show
constexpr double kMaxSeconds = 1e9;                 // the most that can be said
constexpr int64_t kMaxDate = 253402300799;          // the end of the year 9999, the last that a PDF can write
constexpr int64_t kLeastMemory = int64_t{1} << 20;
constexpr int64_t kLeastOutput = int64_t{1} << 10;
constexpr std::string_view kPlainProfile = "none";
constexpr std::string_view kOwnProfile = "fogra39";
constexpr unsigned kPixels = kPng | kTiff;
constexpr unsigned kAll = kPdf | kSvg | kPixels;

std::string Whole(double number)
{
    return std::to_string(static_cast<int64_t>(number));
}

[[noreturn]] void Refuse(const Option &option, const std::string &text, const std::string &why)
{
    throw OptionError("--" + std::string(option.name) + " " + text + ": " + why);
}

// Returns the place of text among the option's choices.
size_t Choose(const Option &option, const std::string &text)
{
    std::string names;
    std::string_view left = option.choices;
    for (size_t i = 0; !left.empty(); ++i) {
        const std::string_view choice = left.substr(0, left.find(','));
        if (choice == text)
            return i;
        names.append(names.empty() ? "" : ", ").append(choice);
        left.remove_prefix(std::min(choice.size() + 1, left.size()));
    }
    Refuse(option, text, "not known: give one of " + names);
}

double ReadScale(const Option &option, const std::string &text)
{
    const std::optional<double> value = ReadNumber(text);
    if (!value || *value <= 0 || *value > option.most)
        Refuse(option, text,
               "not a number above 0 and up to " + Whole(option.most) + ": give one as 300 or 1.5");
    return *value;
}

int ReadPixels(const Option &option, const std::string &text)
{
    const std::optional<int32_t> value = ReadInteger(text);
    if (!value || *value < option.least || *value > option.most)
        Refuse(option, text,
               "not a whole number of pixels from 1 to " + Whole(option.most) + ": give one as 1024");
    return *value;
}

int64_t ReadLimit(const Option &option, const std::string &text)
{
    const std::optional<int64_t> size = ReadSize(text);
    if (!size || (*size > 0 && static_cast<double>(*size) < option.least))
        Refuse(option, text,
               "not a size of " + SizeText(static_cast<int64_t>(option.least)) +
                   " or more: give one as 512M or 2G, or 0 for no limit");
    return *size;
}

void SetDpi(const Option &option, const std::string &text, Settings *settings)
{
    settings->png.dpi = ReadScale(option, text);
}

void SetZoom(const Option &option, const std::string &text, Settings *settings)
{
    settings->png.dpi = ReadScale(option, text) * kPointsPerInch;
}

template <int RasterOptions::*kSide>
void SetSide(const Option &option, const std::string &text, Settings *settings)
{
    settings->png.*kSide = ReadPixels(option, text);
}

void SetBackground(const Option &option, const std::string &text, Settings *settings)
{
    std::optional<Rgb> colour;
    if (text != "none" && text != "transparent") {
        colour = ReadColour(text);
        if (!colour)
            Refuse(option, text, "not a colour: give none, #rrggbb, or a name such as white");
    }
    settings->pdf.background = settings->svg.background = settings->png.background = colour;
}

// An inverted box is kept as it is: it is turned when it is shown.
void SetBox(const Option &option, const std::string &text, Settings *settings)
{
    settings->page.box.reset();
    if (text == "bbox")
        return;
    const std::optional<Box> box = ReadBox(text);
    if (!box)
        Refuse(option, text, "not a box: give bbox, or left,bottom,right,top in points");
    if (box->Width() == 0 || box->Height() == 0)
        Refuse(option, text, "the box is empty: give left,bottom,right,top in points");
    settings->page.box = box;
}

double ReadOptionLength(const Option &option, const std::string &text)
{
    const std::optional<double> length = ReadLength(text);
    if (!length || *length < 0 || *length > kMaxLength)
        Refuse(option, text,
               "not a length from 0 to 200 inches: give one as 3mm, 0.125in or 9, which is in points");
    return *length;
}

void SetPage(const Option &option, const std::string &text, Settings *settings)
{
    settings->page.isPainted = text == "drawing";
    settings->page.size.reset();
    if (settings->page.isPainted)
        return;
    settings->page.size = ReadPageSize(text);
    const auto isWithin = [](double side) { return side > 0 && side <= kMaxLength; };
    if (!settings->page.size || !isWithin(settings->page.size->width) ||
        !isWithin(settings->page.size->height))
        Refuse(option, text,
               "not a size of a page: give drawing, a name as a4, letter or a4-landscape, or width and "
               "height up to "
               "200 inches as 210x297mm");
}

template <double PageOptions::*kLength>
void SetLength(const Option &option, const std::string &text, Settings *settings)
{
    settings->page.*kLength = ReadOptionLength(option, text);
}

void SetMarks(const Option &option, const std::string &text, Settings *settings)
{
    settings->page.hasMarks = Choose(option, text) == 0;
}

void SetProfile(const Option &, const std::string &text, Settings *settings)
{
    settings->pdf.profile = settings->svg.profile = settings->png.profile = text;
}

void SetIntent(const Option &option, const std::string &text, Settings *settings)
{
    settings->svg.intent = settings->png.intent =
        Choose(option, text) == 0 ? Intent::Relative : Intent::Perceptual;
}

void SetOverprint(const Option &option, const std::string &text, Settings *settings)
{
    settings->svg.overprint = settings->png.overprint = Choose(option, text) == 0;
}

void SetSamples(const Option &option, const std::string &text, Settings *settings)
{
    settings->png.samples = 1 << Choose(option, text);
}

void SetText(const Option &option, const std::string &text, Settings *settings)
{
    constexpr TextOutput kOutputs[] = {TextOutput::Text, TextOutput::Outlines, TextOutput::Editable};
    settings->svg.text = kOutputs[Choose(option, text)];
    settings->pdf.text = settings->svg.text == TextOutput::Outlines ? TextOutput::Outlines : TextOutput::Text;
}

void SetStandard(const Option &option, const std::string &text, Settings *settings)
{
    constexpr PdfX kStandards[] = {PdfX::X1a, PdfX::X3, PdfX::X4, PdfX::None};
    settings->pdf.standard = kStandards[Choose(option, text)];
}

void SetArchive(const Option &option, const std::string &text, Settings *settings)
{
    constexpr PdfA kLevels[] = {PdfA::A2b, PdfA::A2u, PdfA::None};
    settings->pdf.archive = kLevels[Choose(option, text)];
}

void SetDate(const Option &option, const std::string &text, Settings *settings)
{
    settings->pdf.date.reset();
    settings->pdf.dateFrom = text == "file"  ? PdfDateFrom::File
                             : text == "now" ? PdfDateFrom::Clock
                                             : PdfDateFrom::Drawing;
    if (settings->pdf.dateFrom != PdfDateFrom::Drawing)
        return;
    std::optional<int64_t> seconds = ReadSeconds(text);
    if (!seconds)
        seconds = ReadDay(text);
    if (!seconds || *seconds > kMaxDate)
        Refuse(option, text,
               "not a date from 1970 to 9999: give one as 2026-11-22 or 2026-11-22T10:30, seconds since "
               "1970, file or now");
    settings->pdf.date = seconds;
}

void SetCompression(const Option &option, const std::string &text, Settings *settings)
{
    settings->pdf.compression = static_cast<Compression>(Choose(option, text));
}

void SetDateOrder(const Option &option, const std::string &text, Settings *settings)
{
    settings->dateOrder = static_cast<DateOrder>(Choose(option, text));
}

void SetScript(const Option &option, const std::string &text, Settings *settings)
{
    const size_t choice = Choose(option, text);
    settings->script.reset();
    if (choice > 0) // 0 is "auto"
        settings->script = static_cast<Script>(choice - 1);
}

void SetMissingFonts(const Option &option, const std::string &text, Settings *settings)
{
    settings->substitute = Choose(option, text) == 0;
}

// Takes a list of names apart at its commas; what follows a backslash is a part of the name.
std::vector<std::string> NamesOf(const Option &option, const std::string &text)
{
    std::vector<std::string> names = {""};
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ',')
            names.emplace_back();
        else if (text[i] == '\\' && i + 1 < text.size())
            names.back() += text[++i];
        else
            names.back() += text[i];
    }
    if (std::ranges::find(names, "") != names.end())
        Refuse(option, text,
               "a name is missing: give names with commas between them, and \\, for a comma in a name");
    return names;
}

void SetLayers(const Option &option, const std::string &text, Settings *settings)
{
    settings->layers.isAll = text == "all";
    settings->layers.shown.clear();
    if (text != "all" && text != "printing")
        settings->layers.shown = NamesOf(option, text);
}

void SetHidden(const Option &option, const std::string &text, Settings *settings)
{
    settings->layers.hidden = NamesOf(option, text);
}

void SetSpots(const Option &option, const std::string &text, Settings *settings)
{
    settings->keepsSpots = Choose(option, text) == 0;
}

void SetPlates(const Option &option, const std::string &text, Settings *settings)
{
    settings->png.plates.reset();
    if (text != "all")
        settings->png.plates = {text == "none" ? std::vector<std::string>() : NamesOf(option, text)};
}

void SetPlateColours(const Option &option, const std::string &text, Settings *settings)
{
    settings->arePlatesGray = Choose(option, text) == 1;
}

void SetSalvage(const Option &option, const std::string &text, Settings *settings)
{
    settings->salvage = Choose(option, text) == 1;
}

void SetTime(const Option &option, const std::string &text, Settings *settings)
{
    const std::optional<double> seconds = ReadNumber(text);
    if (!seconds || *seconds < 0 || *seconds > option.most)
        Refuse(option, text, "not a time: give seconds, or 0 for no limit");
    settings->seconds = *seconds;
}

void SetMemory(const Option &option, const std::string &text, Settings *settings)
{
    settings->memory = ReadLimit(option, text);
}

void SetOutput(const Option &option, const std::string &text, Settings *settings)
{
    settings->output.reset();
    if (text != "auto")
        settings->output = ReadLimit(option, text);
}

static_assert(static_cast<int>(Compression::None) == 0 && static_cast<int>(Compression::Small) == 3);
static_assert(static_cast<int>(Script::Roman) == 0 && static_cast<int>(Script::Japanese) == 1 &&
              static_cast<int>(Script::TraditionalChinese) == 2 && static_cast<int>(Script::Korean) == 3);

constexpr Option kOptions[] = {
    {"dpi", 'r', "N", kPixels, "150", "png, tiff: pixels an inch (150)", SetDpi, "", 0, kMaxDpi,
     OptionGroup::Size},
    {"zoom", 'z', "F", kPixels, "", "png, tiff: pixels a point", SetZoom, "", 0, kMaxDpi, OptionGroup::Size},
    {"width", 0, "N", kPixels, "", "png, tiff: its width in pixels; alone it keeps the aspect",
     SetSide<&RasterOptions::width>, "", 1, kMaxSide, OptionGroup::Size},
    {"height", 0, "N", kPixels, "", "png, tiff: its height in pixels; alone it keeps the aspect",
     SetSide<&RasterOptions::height>, "", 1, kMaxSide, OptionGroup::Size},
    {"fit", 0, "N", kPixels, "", "png, tiff: at most N x N pixels", SetSide<&RasterOptions::fit>, "", 1,
     kMaxSide, OptionGroup::Size},
    {"background", 'b', "COLOR", kPdf | kSvg | kPng, "",
     "what is behind the drawing: none, #rrggbb or a name (png white; pdf, svg none)", SetBackground},
    {"box", 0, "BOX", kAll, "bbox", "what to show: bbox, or L,B,R,T in points (bbox)", SetBox, "", 0, 0,
     OptionGroup::Shown},
    {"page", 0, "SIZE", kAll, "",
     "the page: drawing (what is painted), a4, letter, a4-landscape, ..., or WxH as 210x297mm, with the "
     "drawing in "
     "its middle",
     SetPage, "", 0, 0, OptionGroup::Shown},
    {"margin", 0, "LENGTH", kAll, "",
     "room around the drawing, as 5mm, 0.25in or points; a page of a size keeps it free",
     SetLength<&PageOptions::margin>},
    {"bleed", 0, "LENGTH", kAll, "", "how far to paint beyond where the page is cut, as 3mm",
     SetLength<&PageOptions::bleed>},
    {"marks", 0, "WHICH", kAll, "none",
     "crop: marks outside the bleed that say where to cut, in all inks (none)", SetMarks, "crop,none"},
    {"layers", 0, "WHICH", kAll, "printing",
     "the layers to paint: printing, all, or these alone, as NAME,NAME (printing)", SetLayers},
    {"hide", 0, "NAME,...", kAll, "", "layers to leave out, with all that is in them", SetHidden},
    {"profile", 0, "FILE", kAll, "fogra39",
     "press profile: fogra39, none (plain arithmetic), or an ICC file; pdf: its output intent, which is none "
     "without a level (fogra39)",
     SetProfile},
    {"intent", 0, "INTENT", kSvg | kPng, "relative",
     "svg, png: relative (with black point compensation) or perceptual (relative)", SetIntent,
     "relative,perceptual"},
    {"overprint", 0, "HOW", kSvg | kPixels, "simulate",
     "svg, png, tiff: simulate or ignore (simulate); pdf always carries it", SetOverprint, "simulate,ignore"},
    {"samples", 0, "N", kPixels, "4", "png, tiff: samples a pixel, each way: 1, 2, 4 or 8 (4)", SetSamples,
     "1,2,4,8"},
    {"text", 0, "HOW", kPdf | kSvg, "text",
     "pdf, svg: text, in embedded fonts, or outlines; svg: editable, lines in installed fonts (text)",
     SetText, "text,outlines,editable"},
    {"spots", 0, "HOW", kPdf | kSvg | kTiff, "keep",
     "pdf, svg, tiff: spot inks: keep, a plate of its own for each, or process, the inks that stand in "
     "(keep)",
     SetSpots, "keep,process"},
    {"plates", 0, "NAME,...", kPng, "all",
     "png: only what these inks print, as Cyan,Black, spot inks too; none or all (all)", SetPlates},
    {"plate-colours", 0, "HOW", kPng, "inks",
     "png: these plates in the colours of the inks, or in gray, where black is a full ink (inks)",
     SetPlateColours, "inks,gray"},
    {"pdf-x", 0, "LEVEL", kPdf, "none",
     "pdf: the standard of the press to keep to: x1a, x3, x4 or none (none)", SetStandard, "x1a,x3,x4,none"},
    {"pdf-a", 0, "LEVEL", kPdf, "none", "pdf: the standard of archives to keep to: 2b, 2u or none (none)",
     SetArchive, "2b,2u,none"},
    {"date", 0, "WHEN", kPdf, "",
     "pdf: the date of its creation: as 2026-11-22T10:30, in seconds since 1970, file or now (the document's "
     "own)",
     SetDate},
    {"compress", 0, "HOW", kPdf, "default",
     "pdf: how hard to compress: none, fast, default or small (default)", SetCompression,
     "none,fast,default,small"},

    {"max-time", 0, "S", 0, "60", "seconds that a document may take; 0 is no limit", SetTime, "", 0,
     kMaxSeconds},
    {"max-memory", 0, "SIZE", 0, "1G", "memory that a document may take, as 512M; 0 is no limit (1G)",
     SetMemory, "", static_cast<double>(kLeastMemory)},
    {"max-output", 0, "SIZE", 0, "auto",
     "bytes that an output may take, as 100M; 0 is no limit; auto is 32 times the input's size, and 256M at "
     "least (auto)",
     SetOutput, "", static_cast<double>(kLeastOutput)},
    {"missing-fonts", 0, "HOW", 0, "substitute",
     "what to do for a font that is not there: substitute another, or fail (substitute)", SetMissingFonts,
     "substitute,fail"},
    {"script", 0, "SCRIPT", 0, "auto",
     "the script of text whose font does not say it: auto, roman, japanese, chinese or korean (auto)",
     SetScript, "auto,roman,japanese,chinese,korean"},
    {"date-order", 0, "ORDER", 0, "auto",
     "which comes first in a date as 3/5/94: auto (it stays open), mdy or dmy (auto)", SetDateOrder,
     "auto,mdy,dmy"},
    {"salvage", 0, "HOW", 0, "no",
     "draw a malformed document without what is malformed, and tell what that is: yes or no (no)", SetSalvage,
     "no,yes"},
};

size_t PlaceOf(const Option &option)
{
    return static_cast<size_t>(&option - kOptions);
}

} // namespace

bool IsProfileFile(std::string_view profile)
{
    return !profile.empty() && profile != kPlainProfile && profile != kOwnProfile;
}

ReadingOptions ReadingOptionsOf(const Settings &settings)
{
    ReadingOptions reading;
    reading.substitute = settings.substitute;
    reading.script = settings.script;
    reading.dateOrder = settings.dateOrder;
    reading.layers = settings.layers;
    reading.keepsSpots = settings.keepsSpots;
    reading.readsTexts = settings.svg.text == TextOutput::Editable;
    reading.salvage = settings.salvage;
    reading.salvageSeconds = settings.seconds / 2; // the other half is for the drawing
    // One bound for the interpreter and the drawing: together they stay under that of a worker.
    reading.maxMemory = settings.memory > 0 ? settings.memory : std::numeric_limits<int64_t>::max();
    return reading;
}

// Without a word the limit is more than any real drawing asks for, and less than fills a disk.
int64_t MostOutput(const std::optional<int64_t> &said, size_t documentSize)
{
    constexpr int64_t kLeast = int64_t{256} << 20, kTimesDocument = 32;
    return said.value_or(std::max(kLeast, kTimesDocument * static_cast<int64_t>(documentSize)));
}

std::span<const Option> Options()
{
    return kOptions;
}

const Option *FindOption(std::string_view name)
{
    for (const Option &option : kOptions) {
        if (option.name == name)
            return &option;
    }
    return nullptr;
}

OptionTexts::OptionTexts() : texts_(std::size(kOptions)) {}

const std::string &OptionTexts::Of(std::string_view name) const
{
    return texts_.at(PlaceOf(*FindOption(name)));
}

std::string &OptionTexts::operator[](const Option &option)
{
    return texts_.at(PlaceOf(option));
}

bool OptionTexts::Set(std::string_view name, std::string text)
{
    const Option *option = FindOption(name);
    if (option != nullptr)
        texts_[PlaceOf(*option)] = std::move(text);
    return option != nullptr;
}

OptionTexts OptionTexts::OverriddenBy(const OptionTexts &later) const
{
    OptionTexts texts = *this;
    const auto isSaid = [&later](const Option &option) { return !later.texts_[PlaceOf(option)].empty(); };
    const auto isReplaced = [&isSaid](const Option &option) {
        return option.group != OptionGroup::None && std::ranges::any_of(kOptions, [&](const Option &other) {
                   return other.group == option.group && isSaid(other);
               });
    };
    for (const Option &option : kOptions) {
        if (isSaid(option) || isReplaced(option))
            texts.texts_[PlaceOf(option)] = later.texts_[PlaceOf(option)];
    }
    return texts;
}

void OptionTexts::CheckMeant(unsigned formats) const
{
    for (const Option &option : kOptions) {
        if (!texts_[PlaceOf(option)].empty() && option.formats != 0 && (option.formats & formats) == 0)
            throw OptionError("--" + std::string(option.name) + " is for " + NamesOf(option.formats) +
                              ", and " + NamesOf(formats) +
                              ((formats & (formats - 1)) == 0 ? " is" : " are") +
                              " written: leave it out, or see -f");
    }
}

Settings OptionTexts::Read(const std::map<std::string, ProfileBytes> &profiles) const
{
    const auto isSaid = [this](std::string_view name) { return !Of(name).empty(); };
    if (isSaid("dpi") + isSaid("zoom") + (isSaid("width") || isSaid("height")) + isSaid("fit") > 1)
        throw OptionError("more than one size: give --dpi, or --zoom, or --fit, or --width and --height");
    if (isSaid("page") && isSaid("box"))
        throw OptionError("--page and --box both say what is shown: leave one out");
    Settings settings;
    for (const Option &option : kOptions) {
        const std::string &text = texts_[PlaceOf(option)];
        if (!text.empty())
            option.read(option, text, &settings);
    }
    if (settings.arePlatesGray) {
        if (!settings.png.plates)
            throw OptionError("--plate-colours gray and no plates: give --plates and the name of an ink");
        settings.png.plates->isGray = true;
    }
    settings.png.memoryLimit =
        settings.memory > 0 ? static_cast<uint64_t>(settings.memory) : std::numeric_limits<uint64_t>::max();
    if (settings.pdf.profile == kPlainProfile) {
        for (const auto &[option, isLevel] : {std::pair("--pdf-x", settings.pdf.standard != PdfX::None),
                                              std::pair("--pdf-a", settings.pdf.archive != PdfA::None)}) {
            if (isLevel)
                throw OptionError(std::string(option) +
                                  " and --profile none: the standard names the press that the page is made "
                                  "for: give a profile, or leave --profile out");
        }
        settings.pdf.profile.clear(); // no intent
    }
    const auto give = [&profiles](const std::string &name, ProfileBytes *bytes) {
        if (const auto found = profiles.find(name); found != profiles.end())
            *bytes = found->second;
    };
    give(settings.pdf.profile, &settings.pdf.profileBytes);
    give(settings.svg.profile, &settings.svg.profileBytes);
    give(settings.png.profile, &settings.png.profileBytes);
    return settings;
}

} // namespace vxhost
