#include "cli/RenderSettings.h"

#include "cli/CommonOptions.h"
#include "cli/Values.h"
#include "devices/raster/RasterDevice.h"

#include <fmt/format.h>

#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

constexpr double kMaxDpi = 100000;
constexpr double kPointsPerInch = 72;
constexpr int32_t kMaxPixels = 131072;     // a side
constexpr int64_t kMaxDate = 253402300799; // the end of the year 9999, the last that a PDF can write
constexpr std::string_view kPlainProfile = "none";

// The one of choices that text names, or standard where there is no text; told with all of them otherwise.
template <typename Value, size_t kCount>
Value Choose(std::string_view option, const std::string &text, std::string_view standard,
             const std::pair<const char *, Value> (&choices)[kCount])
{
    std::string names;
    for (const auto &[name, value] : choices) {
        if ((text.empty() ? standard : text) == name)
            return value;
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    throw UsageError(fmt::format("{} {}: not known: give one of {}", option, text, names));
}

double ReadScale(std::string_view option, const std::string &text, double most)
{
    const std::optional<double> value = ReadNumber(text);
    if (!value || *value <= 0 || *value > most)
        throw UsageError(fmt::format("{} {}: not a number above 0 and up to {}: give one as 300 or 1.5",
                                     option, text, most));
    return *value;
}

// 0 when nothing was given.
int ReadPixels(std::string_view option, const std::string &text)
{
    const std::optional<int32_t> value = text.empty() ? 0 : ReadInteger(text);
    if (!value || (!text.empty() && *value < 1) || *value > kMaxPixels)
        throw UsageError(fmt::format("{} {}: not a whole number of pixels from 1 to {}: give one as 1024",
                                     option, text, kMaxPixels));
    return *value;
}

std::optional<Rgb> ReadBackground(const std::string &text, std::optional<Rgb> standard)
{
    if (text.empty())
        return standard;
    if (text == "none")
        return std::nullopt;
    const std::optional<Rgb> colour = ReadColour(text);
    if (!colour)
        throw UsageError(
            fmt::format("--background {}: not a colour: give none, #rrggbb, or a name such as white", text));
    return colour;
}

// An inverted box is turned.
std::optional<Box> ReadShownBox(const std::string &text)
{
    if (text.empty() || text == "bbox")
        return std::nullopt;
    std::optional<Box> box = ReadBox(text);
    if (!box)
        throw UsageError(
            fmt::format("--box {}: not a box: give bbox, or left,bottom,right,top in points", text));
    if (box->Width() == 0 || box->Height() == 0)
        throw UsageError(
            fmt::format("--box {}: the box is empty: give left,bottom,right,top in points", text));
    return box;
}

void ReadPictureSize(const RenderWords &words, RasterOptions *png)
{
    const int ways = !words.dpi.empty() + !words.zoom.empty() +
                     (!words.width.empty() || !words.height.empty()) + !words.fit.empty();
    if (ways > 1)
        throw UsageError("more than one size: give --dpi, or --zoom, or --fit, or --width and --height");
    if (!words.dpi.empty())
        png->dpi = ReadScale("--dpi", words.dpi, kMaxDpi);
    if (!words.zoom.empty())
        png->dpi = ReadScale("--zoom", words.zoom, kMaxDpi) * kPointsPerInch;
    png->width = ReadPixels("--width", words.width);
    png->height = ReadPixels("--height", words.height);
    png->fit = ReadPixels("--fit", words.fit);
}

ScreenOptions ReadScreen(const RenderWords &words)
{
    ScreenOptions screen;
    if (!words.profile.empty())
        screen.profile = words.profile;
    screen.intent = Choose<Intent>("--intent", words.intent, "relative",
                                   {{"relative", Intent::Relative}, {"perceptual", Intent::Perceptual}});
    return screen;
}

// What those who build archives and packages set, so that the same source gives the same bytes on every day.
std::optional<int64_t> ReadSourceDate()
{
    const char *text = std::getenv("SOURCE_DATE_EPOCH");
    if (text == nullptr)
        return std::nullopt;
    const std::optional<int64_t> seconds = ReadSeconds(text);
    if (!seconds || *seconds > kMaxDate)
        throw UsageError(
            fmt::format("SOURCE_DATE_EPOCH \"{}\": not a whole number of seconds since 1970, up to {}: "
                        "set it right, or unset it",
                        text, kMaxDate));
    return seconds;
}

} // namespace

RenderSettings ReadSettings(const RenderWords &words, int64_t memory)
{
    RenderSettings settings;
    settings.box = ReadShownBox(words.box);
    const ScreenOptions screen = ReadScreen(words);
    const TextOutput text = Choose<TextOutput>(
        "--text", words.text, "text", {{"text", TextOutput::Text}, {"outlines", TextOutput::Outlines}});

    RasterOptions &png = settings.png;
    static_cast<ScreenOptions &>(png) = screen;
    ReadPictureSize(words, &png);
    png.background = ReadBackground(words.background, png.background);
    png.overprint =
        Choose<bool>("--overprint", words.overprint, "simulate", {{"simulate", true}, {"ignore", false}});
    png.samples = Choose<int>("--samples", words.samples, "4", {{"1", 1}, {"2", 2}, {"4", 4}, {"8", 8}});
    png.memoryLimit = memory > 0 ? static_cast<uint64_t>(memory) : std::numeric_limits<uint64_t>::max();

    SvgOptions &svg = settings.svg;
    static_cast<ScreenOptions &>(svg) = screen;
    svg.background = ReadBackground(words.background, std::nullopt);
    svg.text = text;
    svg.overprint = png.overprint;

    PdfOptions &pdf = settings.pdf;
    pdf.background = svg.background;
    pdf.text = text;
    pdf.standard = Choose<PdfX>("--pdf-x", words.pdfX, "none",
                                {{"none", PdfX::None}, {"x1a", PdfX::X1a}, {"x3", PdfX::X3}});
    if (pdf.standard != PdfX::None && screen.profile == kPlainProfile)
        throw UsageError(
            "--pdf-x and --profile none: PDF/X names the press it is made for: give a profile, or leave "
            "--profile out");
    // Without PDF/X it is not looked at: the profile may be one for the other formats of the run.
    if (pdf.standard != PdfX::None)
        pdf.profile = screen.profile;
    pdf.date = ReadSourceDate();
    return settings;
}

std::unique_ptr<Device> MakeDevice(Format format, const RenderSettings &settings, ByteSink sink,
                                   std::string *error)
{
    switch (format) {
    case Format::Pdf:
        return MakePdfDevice(settings.pdf, std::move(sink), error);
    case Format::Svg:
        return MakeSvgDevice(settings.svg, std::move(sink), error);
    case Format::Png:
        return MakePngDevice(settings.png, std::move(sink), error);
    }
    return nullptr;
}

void CheckDevices(std::span<const Format> formats, const RenderSettings &settings)
{
    for (const Format format : formats) {
        std::string error;
        if (MakeDevice(format, settings, nullptr, &error) != nullptr)
            continue;
        if (format == Format::Pdf) // says what to do itself: it may be something else than the profile
            throw UsageError(error);
        throw UsageError(
            fmt::format("--profile: {}: give fogra39, none, or an ICC profile of a CMYK press", error));
    }
}

} // namespace vxhost
