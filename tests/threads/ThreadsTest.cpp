// Many parses at once, with one plug-in and one font list: each gives what it gives alone. Worth most under
// ThreadSanitizer.
#include "devices/raster/RasterDevice.h"
#include "devices/trace/TraceLines.h"
#include "devices/trace/TraceTable.h"
#include "host/Document.h"
#include "host/Plugin.h"
#include "host/fonts/DocumentFonts.h"
#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontconfigFonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace vxhost;

constexpr int kThreads = 8;

struct Drawn {
    std::string calls;
    Picture picture;

    bool operator==(const Drawn &other) const
    {
        return calls == other.calls && picture.width == other.picture.width &&
               picture.rgba == other.picture.rgba;
    }
};

void AddLine(void *to, std::string_view line)
{
    static_cast<std::string *>(to)->append(line).append("\n");
}

std::vector<std::string> Samples()
{
    std::vector<std::string> samples;
    for (const auto &entry : std::filesystem::directory_iterator(VX_SOURCE_DIR "/samples")) {
        if (entry.path().extension() == ".vx")
            samples.push_back(entry.path().string());
    }
    std::ranges::sort(samples);
    return samples;
}

class Threads : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string error;
        plugin_ = Plugin::Load(VX_PLUGIN_PATH, &error);
        ASSERT_NE(plugin_, nullptr) << error;
        fonts_ = MakeFontconfigFonts({false, {"/usr/share/fonts/opentype/urw-base35"}});
    }

    // Everything but the plug-in and the list of fonts is a parse's own.
    Drawn Draw(const std::string &path) const
    {
        Drawn drawn;
        std::string error;
        const auto document = Document::Open(path, &error);
        DocumentFontOptions fontOptions;
        fontOptions.asked = ScanFontNames(*document);
        const DocumentFonts fonts(*fonts_, fontOptions);
        DocumentGlyphs glyphs(&fonts);
        ParseOptions options;
        options.fonts = &fonts;
        options.glyphs = &glyphs;

        TraceLines writer({AddLine, &drawn.calls});
        TraceTable table(&writer);
        const Outcome traced = plugin_->Parse(*document, options, table.Procs(), table.Drawing());
        AddLine(&drawn.calls, std::to_string(traced.result));

        RasterOptions raster;
        raster.fit = 64;
        Page page;
        page.box = plugin_->ReadInfo(*document, options).box.Upright();
        const auto device = MakePictureDevice(raster, &drawn.picture, &error);
        plugin_->Draw(*document, options, page, *device);
        return drawn;
    }

    std::unique_ptr<Plugin> plugin_;
    std::unique_ptr<FontList> fonts_;
};

TEST_F(Threads, GiveWhatOneGives)
{
    const std::vector<std::string> samples = Samples();
    ASSERT_GT(samples.size(), 20U);
    std::vector<Drawn> alone;
    for (const std::string &sample : samples)
        alone.push_back(Draw(sample));
    ASSERT_NE(alone.front().calls, "");

    std::atomic<int> differing = 0, compared = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            // Each begins elsewhere, so that the same document is at work twice and different ones meet.
            for (size_t i = 0; i < samples.size(); ++i) {
                const size_t at = (i + static_cast<size_t>(thread) / 2 * 7) % samples.size();
                differing += Draw(samples[at]) == alone[at] ? 0 : 1;
                ++compared;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(differing, 0);
    EXPECT_EQ(compared, kThreads * static_cast<int>(samples.size()));
}

} // namespace
