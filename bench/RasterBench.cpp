// How fast the raster device paints: pixels of large areas, small shapes and strokes a second, whole pages
// out to PNG.
#include "devices/raster/RasterDevice.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>

namespace
{

using namespace vxhost;

constexpr double kPageWidth = 1000, kPageHeight = 800; // points, and pixels at 72 an inch

RasterOptions Options(double zoom = 1)
{
    RasterOptions options;
    options.dpi = 72;
    options.dpi = 72 * zoom;
    return options;
}

Paint Cmyk(double c, double m, double y, double k)
{
    Paint paint;
    paint.colour = {ColourSpace::Cmyk, {c, m, y, k}};
    return paint;
}

Path Rectangle(double left, double bottom, double right, double top)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
}

// The same numbers every time.
class Random
{
  public:
    double Below(double limit)
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return limit * static_cast<double>(state_ >> 40) / (1 << 24);
    }

  private:
    uint64_t state_ = 1;
};

// A closed outline of curves around a place: what drawings consist of.
Path Blob(Random *random, double radius, int curves)
{
    const auto below = [&](double limit) { return random->Below(limit); };
    const Point centre = {below(kPageWidth), below(kPageHeight)};
    const auto around = [&](double turn) {
        const double far = radius * (0.6 + below(0.4));
        return Point{centre.x + far * std::cos(turn), centre.y + far * std::sin(turn)};
    };
    const double step = 6.283185307 / (3 * curves);
    Path path;
    path.verbs.push_back(Verb::Move);
    path.points.push_back(around(0));
    for (int i = 0; i < curves; ++i) {
        path.verbs.push_back(Verb::Curve);
        for (int k = 1; k <= 3; ++k)
            path.points.push_back(around((3 * i + k) * step));
    }
    path.verbs.push_back(Verb::Close);
    return path;
}

std::vector<Path> Blobs(double radius, int curves)
{
    Random random;
    std::vector<Path> blobs;
    blobs.reserve(1024);
    for (int i = 0; i < 1024; ++i)
        blobs.push_back(Blob(&random, radius, curves));
    return blobs;
}

std::unique_ptr<Device> BeginPicture(const RasterOptions &options, Picture *picture)
{
    std::string error;
    auto device = MakePictureDevice(options, picture, &error);
    device->BeginPage({{0, 0, kPageWidth, kPageHeight}, {}, {}});
    return device;
}

void FillsThePage(benchmark::State &state)
{
    Picture picture;
    const auto device = BeginPicture(Options(4), &picture);
    const Path page = Rectangle(0, 0, kPageWidth, kPageHeight);
    double level = 0;
    while (state.KeepRunning()) {
        level = level < 1 ? level + 1.0 / 256 : 0;
        device->FillPath(page, Cmyk(level, 0, 0, 0));
    }
    state.counters["pixels"] =
        benchmark::Counter(kPageWidth * kPageHeight * 16, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(FillsThePage);

void FillsBlobs(benchmark::State &state)
{
    Picture picture;
    const auto device = BeginPicture(Options(), &picture);
    const auto blobs = Blobs(static_cast<double>(state.range(0)), 10);
    size_t next = 0;
    while (state.KeepRunning()) {
        device->FillPath(blobs[next % 1024], Cmyk(0, static_cast<double>(next % 256) / 255, 1, 0));
        ++next;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(FillsBlobs)->Arg(3)->Arg(10)->Arg(40);

void StrokesBlobs(benchmark::State &state)
{
    Picture picture;
    const auto device = BeginPicture(Options(), &picture);
    const auto blobs = Blobs(static_cast<double>(state.range(0)), 10);
    StrokeStyle style;
    if (state.range(1) != 0)
        style.dashes = {4, 2};
    size_t next = 0;
    while (state.KeepRunning()) {
        device->StrokePath(blobs[next % 1024], style, Cmyk(0, static_cast<double>(next % 256) / 255, 1, 0));
        ++next;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(StrokesBlobs)->Args({3, 0})->Args({10, 0})->Args({40, 0})->Args({10, 1});

void ClipsToBlobs(benchmark::State &state)
{
    Picture picture;
    const auto device = BeginPicture(Options(), &picture);
    const auto blobs = Blobs(40, 10);
    size_t next = 0;
    while (state.KeepRunning()) {
        device->Save();
        device->ClipPath(blobs[next % 1024]);
        device->FillPath(blobs[next % 1024], Cmyk(0, 0, 1, 0));
        device->Restore();
        ++next;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ClipsToBlobs);

void WritesPng(benchmark::State &state)
{
    const auto blobs = Blobs(40, 10);
    RasterOptions options = Options();
    if (state.range(0) == 0)
        options.profile = "none";
    size_t bytes = 0;
    while (state.KeepRunning()) {
        state.PauseTiming();
        bytes = 0;
        const auto count = [&](std::span<const std::byte> more) {
            bytes += more.size();
            return Failure{};
        };
        std::string error;
        const auto device = MakePngDevice(options, count, &error);
        device->BeginPage({{0, 0, kPageWidth, kPageHeight}, {}, {}});
        for (size_t i = 0; i < blobs.size(); ++i)
            device->FillPath(blobs[i],
                             Cmyk(static_cast<double>(i % 7) / 6, static_cast<double>(i % 5) / 4, 1, 0));
        state.ResumeTiming();
        if (device->EndPage())
            state.SkipWithError("the page could not be written");
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(WritesPng)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
