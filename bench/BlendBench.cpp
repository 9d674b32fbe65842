// A picture of a thousand gradients, from the document to the pixels, beside one of the same areas filled flat. The two are
// drawn in turn, so that the ratio is one of times under the same load.
#include "bench/Documents.h"
#include "devices/raster/RasterDevice.h"
#include "host/fonts/FixedFontList.h"
#include "host/reading/Reading.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <span>

namespace
{

constexpr int kInstances = 1000;

class Drawer
{
  public:
    // Returns the error, empty on success.
    std::string Load()
    {
        installation_.plugin = vxhost::Plugin::Load(VX_PLUGIN_FILE, &error_);
        return installation_.plugin == nullptr ? error_ : "";
    }

    // The processor's seconds; below 0 when the drawing failed.
    double Time(const std::string &text, double dpi)
    {
        const auto document = vxhost::Document::FromMemory(std::as_bytes(std::span(text)), &error_);
        vxhost::RasterOptions options;
        options.dpi = dpi;
        vxhost::Reading reading(installation_, *document, {});
        vxhost::Picture picture;
        const auto device = vxhost::MakePictureDevice(options, &picture, &error_);
        const vxhost::Page page = {{0, 0, vxbench::kPageWidth, vxbench::kPageHeight}, {}, {}};
        const std::clock_t start = std::clock();
        const vxhost::Outcome outcome = reading.Draw(page, *device);
        const double time = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        benchmark::DoNotOptimize(picture.rgba.data());
        return outcome.result == kVXOk && !outcome.failure ? time : -1;
    }

  private:
    std::string error_;
    vxhost::Installation installation_ = {
        nullptr, std::make_unique<vxhost::FixedFontList>(std::vector<std::string>{"Helvetica"})};
};

void DrawsGradients(benchmark::State &state)
{
    Drawer drawer;
    if (const std::string error = drawer.Load(); !error.empty()) {
        state.SkipWithError(error.c_str());
        return;
    }
    const std::string gradients = vxbench::MakeGradientDocument(kInstances);
    const std::string flat = vxbench::MakeFlatDocument(kInstances);
    const auto dpi = static_cast<double>(state.range(0));
    double flatTime = 0, gradientTime = 0;
    while (state.KeepRunning()) {
        const double flatOnce = drawer.Time(flat, dpi), gradientOnce = drawer.Time(gradients, dpi);
        if (flatOnce < 0 || gradientOnce < 0)
            state.SkipWithError("the drawing failed");
        state.SetIterationTime(gradientOnce);
        flatTime += flatOnce;
        gradientTime += gradientOnce;
    }
    state.counters["timesFlat"] = gradientTime / flatTime;
}
BENCHMARK(DrawsGradients)->Arg(72)->Arg(150)->Arg(300)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
