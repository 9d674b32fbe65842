// The calls of vx.h that say what a press makes of a document.
#include "library/FactsJson.h"
#include "library/interface/DocumentCall.h"
#include "library/interface/Pass.h"
#include "library/interface/Telling.h"
#include "library/press/Check.h"
#include "library/press/CoverageJson.h"
#include "library/press/LimitsText.h"

#include <deque>

using namespace vxhost;

namespace
{

// Holds the file of a plate until all are made, and hands it over.
class TakenPlate
{
  public:
    TakenPlate(vx_plate take, void *context, std::string ink, int64_t most)
        : take_(take), context_(context), ink_(std::move(ink)), written_(&Write, this, most)
    {
    }
    TakenPlate(const TakenPlate &) = delete;
    TakenPlate &operator=(const TakenPlate &) = delete;

    // A plate that becomes too long ends the call.
    ByteSinks Sinks()
    {
        ByteSinks sinks = written_.Sinks(false);
        sinks.add = [this, add = std::move(sinks.add)](std::span<const std::byte> bytes) {
            Failure failure = add(bytes);
            written_.Check();
            return failure;
        };
        return sinks;
    }
    void HandOver() { written_.HandOver(); }

  private:
    static int Write(void *plate, const void *bytes, size_t size)
    {
        const auto &taken = *static_cast<const TakenPlate *>(plate);
        return taken.take_(taken.context_, taken.ink_.c_str(), bytes, size);
    }

    vx_plate take_;
    void *context_;
    std::string ink_;
    WrittenBytes written_;
};

int64_t MostOutputOf(const vx_document &document)
{
    return MostOutput(document.settings.output, document.bytes->Bytes().size());
}

PlateFormat CheckPlateFormat(const char *name)
{
    const std::string format(CheckText(name, "format"));
    if (format != "png" && format != "tiff")
        throw OptionError("no format of plates \"" + format + "\": give png or tiff");
    return format == "tiff" ? PlateFormat::Tiff : PlateFormat::Png;
}

// Draws the plates of the page that the options show.
void DrawPlates(vx_document *document, std::shared_ptr<PlateSink> sink)
{
    const Page page = LayOutPage(document);
    CheckFailure(FindPictureSize(page.box, document->settings.png).failure);
    std::string error;
    const auto device = MakePlatesDevice(document->settings.png, std::nullopt, std::move(sink), &error);
    DrawPass(document, page, &CheckMade(device, error), nullptr);
}

void MakePlates(vx_document *document, PlateFormat format, vx_plate take, void *context)
{
    std::deque<TakenPlate> plates;
    const auto add = [&](const std::string &ink) {
        return plates.emplace_back(take, context, ink, MostOutputOf(*document)).Sinks();
    };
    DrawPlates(document, std::make_shared<PlateFiles>(format, add));
    for (TakenPlate &plate : plates)
        plate.HandOver();
}

// Hands over what the procedure writes, in order.
void WriteAll(const vx_document &document, vx_write write, void *context,
              const std::function<Failure(const ByteSink &sink)> &procedure)
{
    WrittenBytes written(write, context, MostOutputOf(document));
    const Failure failure = procedure(written.Sinks(true).add);
    written.Check();
    CheckFailure(failure);
}

void MeasureCoverage(vx_document *document, double limit, vx_write heatMap, void *context)
{
    constexpr double kPercent = 100;
    const auto meter = std::make_shared<CoverageMeter>(limit / kPercent);
    DrawPlates(document, meter);
    nlohmann::ordered_json json;
    AddCoverage(meter->Measure(), &json);
    document->coverage = JsonLine(json);
    if (heatMap != nullptr)
        WriteAll(*document, heatMap, context,
                 [&](const ByteSink &sink) { return meter->WriteHeatMap(sink); });
}

// Goes through the document as often as a check does, in one pass with one clock.
Outcome GoThrough(Reading &reading, const Settings &settings, bool makesPage, Check *check)
{
    std::string error;
    const std::shared_ptr<PlateSink> sink = check->MakeSink();
    const auto device = MakePlatesDevice(settings.png, std::nullopt, sink, &error);
    Outcome outcome = DrawPage(
        settings.page, [&](const Page &page) { return FindPictureSize(page.box, settings.png).failure; },
        &CheckMade(device, error), reading);
    const auto isDone = [&] { return outcome.result == kVXOk && !outcome.failure; };
    if (isDone() && makesPage)
        outcome = check->DrawPicture(reading);
    return isDone() ? check->Look(reading) : outcome;
}

PreflightLimits CheckLimits(const char *text)
{
    try {
        return ReadPreflightLimits(CheckText(text, "limits"));
    } catch (const OptionError &wrong) {
        throw OptionError(std::string("limits: ") + wrong.what());
    }
}

void CheckForPress(vx_document *document, vx_check *wanted)
{
    CheckTask task;
    task.settings = document->settings;
    task.makesPage = wanted->page != nullptr;
    if (wanted->name != nullptr)
        task.name = CheckText(wanted->name, "name");
    if (wanted->limits != nullptr)
        task.limits = CheckLimits(wanted->limits);
    Check check(task);
    (void)RunPass(
        document, nullptr,
        [&](Reading &reading, const Watch &) {
            return GoThrough(reading, task.settings, task.makesPage, &check);
        },
        true);
    document->checkedText = check.Text();
    document->checkedJson = JsonLine(check.Json());
    wanted->text = document->checkedText.c_str();
    wanted->json = document->checkedJson.c_str();
    if (task.makesPage)
        WriteAll(*document, wanted->page, wanted->context,
                 [&](const ByteSink &sink) { return check.WritePage(sink); });
}

} // namespace

extern "C" {

vx_status vx_document_plates(vx_document *document, const char *format, vx_plate take, void *context,
                             vx_error *error)
{
    return DocumentCall(document, error, [&] {
        const PlateFormat row = CheckPlateFormat(format);
        CheckThere(reinterpret_cast<const void *>(take), "take");
        MakePlates(document, row, take, context);
    });
}

vx_status vx_document_coverage(vx_document *document, double limit, const char **json, vx_write heat_map,
                               void *context, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        constexpr double kMost = 10000;
        CheckThere(json, "json");
        *json = nullptr;
        if (!(limit > 0 && limit <= kMost))
            throw CallError(VX_WRONG_ARGUMENT,
                            "the limit is no number of percent above 0 and up to 10000: give one as 300");
        MeasureCoverage(document, limit, heat_map, context);
        *json = document->coverage.c_str();
    });
}

vx_status vx_document_check(vx_document *document, vx_check *check, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(check, "check");
        CheckSize(check->size, sizeof *check, "vx_check");
        check->text = check->json = nullptr;
        CheckForPress(document, check);
    });
}
}
