// Bytes a second of the plug-in against a host that does nothing, beside the floor: a loop over the same document
// that only finds lines, splits words and converts numbers. Quote the ratio of the two, taken in one run.
#include "bench/Documents.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstring>
#include <span>

namespace
{

constexpr int64_t kMegabyte = 1 << 20;

void DoNothing(void *drawing)
{
    ++*static_cast<int64_t *>(drawing);
}

ZRKProcs MakeIdleTable()
{
    ZRKProcs procs = {};
    procs.version = kZRKProcsVersion;
    procs.count = kZRKProcCount;
    // The C calling convention lets a procedure ignore the arguments after those that it names.
    for (ZRKProc &entry : procs.entry)
        entry = reinterpret_cast<ZRKProc>(DoNothing);
    return procs;
}

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
        ZRKProcs procs = MakeIdleTable();
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

bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The sum of a line's numbers in 16.16.
int64_t SumOfLine(const char *text, const char *end)
{
    int64_t sum = 0;
    while (text < end) {
        if (IsSpace(*text)) {
            ++text;
            continue;
        }
        const char *word = text;
        while (text < end && !IsSpace(*text))
            ++text;
        double value;
        const auto [stop, error] = std::from_chars(word, text, value, std::chars_format::fixed);
        if (error == std::errc() && stop == text)
            // The sum only keeps the loop alive. NOLINTNEXTLINE(bugprone-incorrect-roundings)
            sum += static_cast<int64_t>(value * 65536.0 + 0.5);
    }
    return sum;
}

void TokensOnly(benchmark::State &state)
{
    const std::string text = vxbench::MakePathDocument(static_cast<size_t>(state.range(0)));
    while (state.KeepRunning()) {
        int64_t sum = 0;
        const char *line = text.data();
        const char *end = line + text.size();
        while (const auto *lineEnd =
                   static_cast<const char *>(memchr(line, '\n', static_cast<size_t>(end - line)))) {
            sum += SumOfLine(line, lineEnd);
            line = lineEnd + 1;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(TokensOnly)->Arg(kMegabyte)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

} // namespace
