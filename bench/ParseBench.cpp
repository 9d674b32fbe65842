// Bytes a second of the plug-in against a host that does nothing, beside the floor: a loop over the same document
// that only finds lines, splits words and converts numbers. Quote the ratio of the two, taken in one run.
#include "bench/Documents.h"
#include "bench/IdleHost.h"
#include "bench/TokenLoop.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"
#include "host/reading/Structure.h"
#include "host/reading/StructureCompanion.h"

#include <benchmark/benchmark.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace
{

constexpr int64_t kMegabyte = 1 << 20;

void ParseDocument(benchmark::State &state, const std::string &text, vxhost::FixedFontList fonts)
{
    std::string error;
    const auto plugin = vxhost::Plugin::Load(VX_PLUGIN_FILE, &error);
    const auto document = vxhost::Document::FromMemory(std::as_bytes(std::span(text)), &error);
    if (plugin == nullptr || document == nullptr) {
        state.SkipWithError(error.c_str());
        return;
    }
    vxhost::ParseOptions options;
    options.fonts = &fonts;
    options.widths = &fonts;
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

void ParsePaths(benchmark::State &state)
{
    ParseDocument(state, vxbench::MakePathDocument(static_cast<size_t>(state.range(0))),
                  vxhost::FixedFontList({"Helvetica"}));
}
BENCHMARK(ParsePaths)->Arg(kMegabyte)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

// The fonts have widths, so that each character moves the pen: a host without any has less to do.
void ParseText(benchmark::State &state)
{
    ParseDocument(state, vxbench::MakeTextPage(static_cast<size_t>(state.range(0))),
                  vxhost::FixedFontList({std::begin(vxbench::kPageFonts), std::end(vxbench::kPageFonts)}));
}
BENCHMARK(ParseText)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

// A document in which so many lines of a hundred are operators that are read beside the plug-in: the cost of looking for
// them, which is all that a document without any pays, and of following them.
void ParseWithTheCompanion(benchmark::State &state)
{
    std::string error;
    const auto plugin = vxhost::Plugin::Load(VX_PLUGIN_FILE, &error);
    const std::string text = vxbench::WithStructure(vxbench::MakePathDocument(16 * kMegabyte),
                                                    static_cast<size_t>(state.range(0)));
    const auto document = vxhost::Document::FromMemory(std::as_bytes(std::span(text)), &error);
    if (plugin == nullptr || document == nullptr) {
        state.SkipWithError(error.c_str());
        return;
    }
    const vxhost::FixedFontList fonts({"Helvetica"});
    const bool isFollowed = state.range(1) != 0;
    while (state.KeepRunning()) {
        vxhost::ParseOptions options;
        options.fonts = &fonts;
        vxhost::Structure structure;
        std::optional<vxhost::StructureCompanion> companion;
        if (isFollowed) {
            structure = vxhost::ScanStructure(*document, text, 3, {});
            if (structure.isThere)
                options.structure = &companion.emplace(
                    text, 0, 3, structure, [](std::string_view name) { return std::string(name); });
        }
        ZRKProcs procs = vxbench::MakeIdleTable();
        int64_t calls = 0;
        if (plugin->Parse(*document, options, &procs, &calls).result != kVXOk)
            state.SkipWithError("the parse failed");
        benchmark::DoNotOptimize(calls);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(ParseWithTheCompanion)
    ->ArgNames({"percent", "followed"})
    ->ArgsProduct({{0, 10}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void TakeTokens(benchmark::State &state, const std::string &text)
{
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(vxbench::SumOfTokens(text));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void TokensOfPaths(benchmark::State &state)
{
    TakeTokens(state, vxbench::MakePathDocument(static_cast<size_t>(state.range(0))));
}
BENCHMARK(TokensOfPaths)->Arg(kMegabyte)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

void TokensOfText(benchmark::State &state)
{
    TakeTokens(state, vxbench::MakeTextPage(static_cast<size_t>(state.range(0))));
}
BENCHMARK(TokensOfText)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

} // namespace
