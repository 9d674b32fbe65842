#include "cli/RenderOptions.h"

#include "cli/OutputNames.h"
#include "cli/Values.h"
#include "devices/raster/RasterDevice.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr double kMaxDpi = 100000;
constexpr double kPointsPerInch = 72;
constexpr int32_t kMaxPixels = 131072; // a side

// The one of choices that text names; told with all of them otherwise.
template <typename Value, size_t kCount>
Value Choose(std::string_view option, const std::string &text,
             const std::pair<const char *, Value> (&choices)[kCount])
{
    std::string names;
    for (const auto &[name, value] : choices) {
        if (text == name)
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

std::optional<Rgb> ReadBackground(const std::string &text)
{
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
    if (text == "bbox")
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

std::string FormatOf(const std::string &format, const std::string &output)
{
    if (!format.empty())
        return format;
    std::string extension = fs::path(output).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    if (extension == ".png" || extension == ".svg")
        return extension.substr(1);
    return "pdf";
}

} // namespace

RenderOptionReader::RenderOptionReader(CLI::App *command) : common_("60")
{
    const auto add = [command](const char *names, std::string *to, const char *value, const char *help) {
        return command->add_option(names, *to, help)->type_name(value);
    };
    add("-o,--output", &output_, "PATH",
        "where to write; - is standard output; {stem}, {dir} and {ext} are those of "
        "the input and the format");
    add("-f,--format", &format_, "FORMAT", "png; without it what the output's name says");
    add("-r,--dpi", &dpi_, "N", "pixels an inch (150)");
    add("-z,--zoom", &zoom_, "F", "pixels a point");
    add("--width", &width_, "N", "pixels; alone it keeps the aspect");
    add("--height", &height_, "N", "pixels; alone it keeps the aspect");
    add("--fit", &fit_, "N", "at most N x N pixels");
    add("-b,--background", &background_, "COLOR", "none, #rrggbb or a name (white)");
    add("--box", &box_, "BOX", "what to show: bbox, or L,B,R,T in points (bbox)");
    add("--profile", &profile_, "FILE",
        "press profile: fogra39, none (plain arithmetic), or an ICC file (fogra39)");
    add("--intent", &intent_, "INTENT", "relative (with black point compensation) or perceptual (relative)");
    add("--overprint", &overprint_, "HOW", "simulate or ignore (simulate)");
    add("--samples", &samples_, "N", "samples a pixel, each way: 1, 2, 4 or 8 (4)");

    // Not in the help as long as they are not in the program.
    add("--text", &text_, "HOW", "")->group("");
    add("--pdf-x", &pdfX_, "LEVEL", "")->group("");

    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx render harp.vx -o harp.png\n"
                    "  vx render harp.vx -o small.png --fit 256\n"
                    "  vx render *.vx -o 'pictures/{stem}.png' --dpi 300\n"
                    "  cat harp.vx | vx render - -f png -o - > harp.png");
}

RenderOptions RenderOptionReader::Read() const
{
    RenderOptions options;
    options.common = common_.Read();
    if (output_.empty())
        throw UsageError("no output: add -o and a name, as -o picture.png");
    options.outputs = OutputNames(output_, options.common.inputs, FormatOf(format_, output_));
    CheckFormat();
    RefuseWhatIsToCome();
    options.raster = ReadRaster();
    options.box = ReadShownBox(box_);
    return options;
}

void RenderOptionReader::CheckFormat() const
{
    const std::string format = FormatOf(format_, output_);
    if (format != "png" && format != "pdf" && format != "svg")
        throw UsageError(fmt::format("--format {}: not known: give png", format));
    if (format != "png")
        throw UsageError(
            fmt::format("{} output is not in this version: name a .png file or pass -f png", format));
}

void RenderOptionReader::RefuseWhatIsToCome() const
{
    const std::pair<const char *, bool> toCome[] = {
        {"--text", text_ != "text"},
        {"--pdf-x", pdfX_ != "none"},
    };
    for (const auto &[option, isAsked] : toCome) {
        if (isAsked)
            throw UsageError(fmt::format("{} is not in this version: leave it out", option));
    }
}

RasterOptions RenderOptionReader::ReadRaster() const
{
    RasterOptions raster;
    ReadPictureSize(&raster);
    raster.background = ReadBackground(background_);
    raster.intent = Choose<Intent>("--intent", intent_,
                                   {{"relative", Intent::Relative}, {"perceptual", Intent::Perceptual}});
    raster.overprint = Choose<bool>("--overprint", overprint_, {{"simulate", true}, {"ignore", false}});
    raster.samples = Choose<int>("--samples", samples_, {{"1", 1}, {"2", 2}, {"4", 4}, {"8", 8}});
    raster.profile = profile_;
    // Found wanting here, a profile is one mistake on the command line rather than one a document.
    std::string error;
    if (MakePngDevice(raster, nullptr, &error) == nullptr)
        throw UsageError(
            fmt::format("--profile: {}: give fogra39, none, or an ICC profile of a CMYK press", error));
    return raster;
}

void RenderOptionReader::ReadPictureSize(RasterOptions *raster) const
{
    const int ways = !dpi_.empty() + !zoom_.empty() + (!width_.empty() || !height_.empty()) + !fit_.empty();
    if (ways > 1)
        throw UsageError("more than one size: give --dpi, or --zoom, or --fit, or --width and --height");
    if (!dpi_.empty())
        raster->dpi = ReadScale("--dpi", dpi_, kMaxDpi);
    if (!zoom_.empty())
        raster->dpi = ReadScale("--zoom", zoom_, kMaxDpi) * kPointsPerInch;
    raster->width = ReadPixels("--width", width_);
    raster->height = ReadPixels("--height", height_);
    raster->fit = ReadPixels("--fit", fit_);
}

} // namespace vxhost
