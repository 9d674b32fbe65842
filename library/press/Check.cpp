#include "library/press/Check.h"

#include "devices/colour/InkShares.h"
#include "devices/colour/ScreenColours.h"
#include "devices/preflight/DocumentFindings.h"
#include "devices/preflight/PreflightDevice.h"
#include "devices/raster/RasterDevice.h"
#include "library/press/FindingsReport.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

namespace
{

constexpr double kPercent = 100;

// The text must outlive the sink.
ByteSink AppendTo(std::string *text)
{
    return [text](std::span<const std::byte> bytes) {
        text->append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Failure();
    };
}

// Returns the colour that a screen shows for all of an ink.
Rgb ColourOf(const std::string &ink, const std::vector<SpotUse> &spots, ScreenColours *colours)
{
    Colour colour;
    colour.space = ColourSpace::Cmyk;
    const auto process = std::ranges::find(kProcessInks, ink, &SpotInk::name);
    const auto spot = std::ranges::find(spots, ink, &SpotUse::name);
    if (process != std::end(kProcessInks))
        std::ranges::copy(process->alternate, colour.ink);
    else if (spot != spots.end())
        std::ranges::copy(spot->alternate, colour.ink);
    return colours->Convert(InksOf(colour));
}

} // namespace

Check::Check(CheckTask task)
    : task_(std::move(task)), coverage_(task_.limits.totalInk / kPercent),
      plates_(PlateFormat::Png,
              [this](const std::string &ink) {
                  PagePlate &plate = page_.plates.emplace_back();
                  plate.ink = ink;
                  return ByteSinks{AppendTo(&plate.png)};
              }),
      findings_(task_.limits)
{
}

std::unique_ptr<PlateSink> Check::MakeSink()
{
    std::vector<PlateSink *> sinks = {&coverage_, &inks_};
    if (task_.makesPage)
        sinks.push_back(&plates_);
    return std::make_unique<PlateTee>(std::move(sinks));
}

Outcome Check::DrawPicture(Reading &reading)
{
    std::string error;
    const std::unique_ptr<Device> device =
        MakePngDevice(task_.settings.png, AppendTo(&page_.picture), &error);
    if (device == nullptr) {
        Outcome outcome;
        outcome.failure = {FailureKind::BadInput, error};
        return outcome;
    }
    return DrawPage(
        task_.settings.page, [](const Page &) { return Failure(); }, device.get(), reading);
}

Outcome Check::Look(Reading &reading)
{
    inks_.Sum();
    PreflightDevice device(inks_, &findings_);
    Page page;
    const auto takePage = [&page](const Page &of) {
        page = of;
        return Failure();
    };
    Outcome outcome = DrawPage(task_.settings.page, takePage, &device, reading);
    if (outcome.result != kVXOk || outcome.failure)
        return outcome;
    AddDocumentFindings(reading.Header(), outcome, coverage_.Measure(), device.PlacesOfFonts(), &findings_);
    outcome.objections = findings_.CountObjections();
    spots_ = outcome.spots;
    if (!task_.name.empty())
        json_["file"] = task_.name;
    AddFindings(page.title, page.box, findings_, &json_);
    return outcome;
}

std::string Check::Text() const
{
    return FindingLines(findings_);
}

Failure Check::WritePage(const ByteSink &sink)
{
    std::string error;
    const std::unique_ptr<ScreenColours> colours = ScreenColours::Make(task_.settings.png, &error);
    if (colours == nullptr)
        return {FailureKind::BadInput, error};
    for (PagePlate &plate : page_.plates)
        plate.colour = ColourOf(plate.ink, spots_, colours.get());
    page_.facts = json_;
    if (Failure failure = coverage_.WriteHeatMap(AppendTo(&page_.heatMap)))
        return failure;
    return WritePressPage(std::move(page_), sink);
}

} // namespace vxhost
