// What a long font list costs: 100,000 strings against a host of 3,000 fonts, beside the same with 30. The counter
// "ratio" is the one of the other, start-up aside; both are taken in turns in one run.
#include "bench/Documents.h"
#include "bench/IdleHost.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <span>

namespace
{

constexpr int kStrings = 100000;
constexpr int kFewFonts = 30;
constexpr int kManyFonts = 3000;

// The fonts that the document asks for are the last ones of the list.
vxhost::FixedFontList MakeFonts(int count)
{
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        names.push_back("Unasked-" + std::to_string(i));
    for (int i = 0; i < vxbench::kTextFonts; ++i)
        names[names.size() - 1 - static_cast<size_t>(i)] = vxbench::TextFontName(i);
    return vxhost::FixedFontList(names);
}

class IdleParse
{
  public:
    IdleParse(const vxhost::Plugin *plugin, const std::string &text)
        : plugin_(plugin), text_(text),
          document_(vxhost::Document::FromMemory(std::as_bytes(std::span(text_)), &error_))
    {
    }

    // The processor's seconds, to which other work on the machine does not add; below 0 when the parse failed.
    double Time(vxhost::FixedFontList &fonts) const
    {
        vxhost::ParseOptions options;
        options.fonts = &fonts;
        options.widths = &fonts;
        ZRKProcs procs = vxbench::MakeIdleTable();
        int64_t calls = 0;
        const std::clock_t start = std::clock();
        const vxhost::Outcome outcome = plugin_->Parse(*document_, options, &procs, &calls);
        const double took = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        return outcome.result == kVXOk ? took : -1;
    }

  private:
    const vxhost::Plugin *plugin_;
    std::string error_;
    std::string text_;
    std::unique_ptr<vxhost::Document> document_;
};

void LooksUpFonts(benchmark::State &state)
{
    std::string error;
    const auto plugin = vxhost::Plugin::Load(VX_PLUGIN_FILE, &error);
    if (plugin == nullptr) {
        state.SkipWithError(error.c_str());
        return;
    }
    vxhost::FixedFontList few = MakeFonts(kFewFonts);
    vxhost::FixedFontList many = MakeFonts(kManyFonts);
    const IdleParse text(plugin.get(), vxbench::MakeTextDocument(kStrings));
    const IdleParse start(plugin.get(), vxbench::MakeTextDocument(0));
    // The fastest run of each says most about the code and least about the machine's other work.
    double fewText = std::numeric_limits<double>::max();
    double fewStart = fewText, manyText = fewText, manyStart = fewText;
    while (state.KeepRunning()) {
        fewStart = std::min(fewStart, start.Time(few));
        fewText = std::min(fewText, text.Time(few));
        manyStart = std::min(manyStart, start.Time(many));
        manyText = std::min(manyText, text.Time(many));
        if (std::min({fewStart, fewText, manyStart, manyText}) < 0)
            state.SkipWithError("the parse failed");
        state.SetIterationTime(manyText - manyStart);
    }
    state.counters["ratio"] = (manyText - manyStart) / (fewText - fewStart);
    state.SetItemsProcessed(state.iterations() * kStrings);
}
BENCHMARK(LooksUpFonts)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);

} // namespace
