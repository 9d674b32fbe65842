// Bytes a second of the plug-in against a host that does nothing, beside the floor: a loop over the same document
// that only finds lines, splits words and converts numbers. Quote the ratio of the two, taken in one run.
#include "bench/Documents.h"
#include "bench/IdleHost.h"
#include "bench/TokenLoop.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"

#include <benchmark/benchmark.h>

#include <span>

namespace
{

constexpr int64_t kMegabyte = 1 << 20;

void ParseWithIdleHost(benchmark::State &state)
{
    std::string error;
    const auto plugin = vxhost::Plugin::Load(VX_PLUGIN_FILE, &error);
    const std::string text = vxbench::MakePathDocument(static_cast<size_t>(state.range(0)));
    const auto document = vxhost::Document::FromMemory(std::as_bytes(std::span(text)), &error);
    if (plugin == nullptr || document == nullptr) {
        state.SkipWithError(error.c_str());
        return;
    }
    const vxhost::FixedFontList fonts({"Helvetica"});
    vxhost::ParseOptions options;
    options.fonts = &fonts;
    int64_t peakHeap = 0;
    while (state.KeepRunning()) {
        ZRKProcs procs = vxbench::MakeIdleTable();
        int64_t calls = 0;
        const vxhost::Outcome outcome = plugin->Parse(*document, options, &procs, &calls);
        if (outcome.result != kVXOk)
            state.SkipWithError("the parse failed");
        peakHeap = outcome.peakHeap;
        benchmark::DoNotOptimize(calls);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
    state.counters["heap"] = static_cast<double>(peakHeap);
}
BENCHMARK(ParseWithIdleHost)->Arg(kMegabyte)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

void TokensOnly(benchmark::State &state)
{
    const std::string text = vxbench::MakePathDocument(static_cast<size_t>(state.range(0)));
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(vxbench::SumOfTokens(text));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(TokensOnly)->Arg(kMegabyte)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

} // namespace
