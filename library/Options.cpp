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
constexpr double kMaxSeconds = 1e9;        // the most that can be said
constexpr int64_t kMaxDate = 253402300799; // the end of the year 9999, the last that a PDF can write
constexpr int64_t kLeastMemory = int64_t{1} << 20;
constexpr int64_t kLeastOutput = int64_t{1} << 10;
constexpr std::string_view kPlainProfile = "none";
constexpr std::string_view kOwnProfile = "fogra39";
constexpr unsigned kAll = kPdf | kSvg | kPng;

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
    settings->box.reset();
    if (text == "bbox")
        return;
    const std::optional<Box> box = ReadBox(text);
    if (!box)
        Refuse(option, text, "not a box: give bbox, or left,bottom,right,top in points");
    if (box->Width() == 0 || box->Height() == 0)
        Refuse(option, text, "the box is empty: give left,bottom,right,top in points");
    settings->box = box;
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
    settings->pdf.text = settings->svg.text =
        Choose(option, text) == 0 ? TextOutput::Text : TextOutput::Outlines;
}

void SetStandard(const Option &option, const std::string &text, Settings *settings)
{
    constexpr PdfX kStandards[] = {PdfX::X1a, PdfX::X3, PdfX::None};
    settings->pdf.standard = kStandards[Choose(option, text)];
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
    {"dpi", 'r', "N", kPng, "150", "png: pixels an inch (150)", SetDpi, "", 0, kMaxDpi, true},
    {"zoom", 'z', "F", kPng, "", "png: pixels a point", SetZoom, "", 0, kMaxDpi, true},
    {"width", 0, "N", kPng, "", "png: its width in pixels; alone it keeps the aspect",
     SetSide<&RasterOptions::width>, "", 1, kMaxSide, true},
    {"height", 0, "N", kPng, "", "png: its height in pixels; alone it keeps the aspect",
     SetSide<&RasterOptions::height>, "", 1, kMaxSide, true},
    {"fit", 0, "N", kPng, "", "png: at most N x N pixels", SetSide<&RasterOptions::fit>, "", 1, kMaxSide,
     true},
    {"background", 'b', "COLOR", kAll, "",
     "what is behind the drawing: none, #rrggbb or a name (png white; pdf, svg none)", SetBackground},
    {"box", 0, "BOX", kAll, "bbox", "what to show: bbox, or L,B,R,T in points (bbox)", SetBox},
    {"layers", 0, "WHICH", kAll, "printing",
     "the layers to paint: printing, all, or these alone, as NAME,NAME (printing)", SetLayers},
    {"hide", 0, "NAME,...", kAll, "", "layers to leave out, with all that is in them", SetHidden},
    {"profile", 0, "FILE", kAll, "fogra39",
     "press profile: fogra39, none (plain arithmetic), or an ICC file; for pdf with --pdf-x (fogra39)",
     SetProfile},
    {"intent", 0, "INTENT", kSvg | kPng, "relative",
     "svg, png: relative (with black point compensation) or perceptual (relative)", SetIntent,
     "relative,perceptual"},
    {"overprint", 0, "HOW", kSvg | kPng, "simulate",
     "svg, png: simulate or ignore (simulate); pdf always carries it", SetOverprint, "simulate,ignore"},
    {"samples", 0, "N", kPng, "4", "png: samples a pixel, each way: 1, 2, 4 or 8 (4)", SetSamples, "1,2,4,8"},
    {"text", 0, "HOW", kPdf | kSvg, "text", "pdf, svg: text, in embedded fonts, or outlines (text)", SetText,
     "text,outlines"},
    {"spots", 0, "HOW", kPdf | kSvg, "keep",
     "pdf, svg: spot inks: keep, a plate of its own for each, or process, the inks that stand in (keep)",
     SetSpots, "keep,process"},
    {"pdf-x", 0, "LEVEL", kPdf, "none", "pdf: the standard to keep to: x1a, x3 or none (none)", SetStandard,
     "x1a,x3,none"},
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
    return profile != kPlainProfile && profile != kOwnProfile;
}

ReadingOptions ReadingOptionsOf(const Settings &settings)
{
    ReadingOptions reading;
    reading.substitute = settings.substitute;
    reading.script = settings.script;
    reading.dateOrder = settings.dateOrder;
    reading.layers = settings.layers;
    reading.keepsSpots = settings.keepsSpots;
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
    const bool hasSize =
        std::ranges::any_of(kOptions, [&](const Option &option) { return option.isSize && isSaid(option); });
    for (const Option &option : kOptions) {
        if (isSaid(option) || (option.isSize && hasSize))
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
    const std::string &standard = Of("pdf-x");
    if (!Of("profile").empty() && formats == kPdf && (standard.empty() || standard == "none"))
        throw OptionError(
            "--profile: a pdf keeps the document's inks, it takes a profile under --pdf-x alone: "
            "leave it out, or add --pdf-x");
}

Settings OptionTexts::Read(const std::map<std::string, ProfileBytes> &profiles) const
{
    const auto isSaid = [this](std::string_view name) { return !Of(name).empty(); };
    if (isSaid("dpi") + isSaid("zoom") + (isSaid("width") || isSaid("height")) + isSaid("fit") > 1)
        throw OptionError("more than one size: give --dpi, or --zoom, or --fit, or --width and --height");
    Settings settings;
    for (const Option &option : kOptions) {
        const std::string &text = texts_[PlaceOf(option)];
        if (!text.empty())
            option.read(option, text, &settings);
    }
    settings.png.memoryLimit =
        settings.memory > 0 ? static_cast<uint64_t>(settings.memory) : std::numeric_limits<uint64_t>::max();
    if (settings.pdf.standard == PdfX::None)
        settings.pdf.profile =
            PdfOptions().profile; // the one that was named is for the other formats, and may be no file
    else if (settings.pdf.profile == kPlainProfile)
        throw OptionError(
            "--pdf-x and --profile none: PDF/X names the press it is made for: give a profile, or leave "
            "--profile out");
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
