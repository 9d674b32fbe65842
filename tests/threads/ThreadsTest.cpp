// Many readings at once, of documents that they share, with one plug-in, one list of the machine's fonts, and one list of a
// document's: each gives what it gives alone. And one reading whose picture several threads paint. Worth most under ThreadSanitizer.
#include "devices/raster/RasterDevice.h"
#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "host/trace/TraceLines.h"
#include "jobs/ThreadCrew.h"

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
        installation_.plugin = Plugin::Load(VX_PLUGIN_PATH, &error);
        ASSERT_NE(installation_.plugin, nullptr) << error;
        installation_.fonts = MakeFontconfigFonts({false, {"/usr/share/fonts/opentype/urw-base35"}});
        for (const std::string &sample : Samples()) {
            documents_.push_back(Document::Open(sample, &error));
            ASSERT_NE(documents_.back(), nullptr) << error;
        }
        ASSERT_GT(documents_.size(), 20U);
    }

    // Draws the pixels with a crew; null: alone.
    std::vector<uint8_t> DrawPixels(const Document &document, Crew *crew) const
    {
        RasterOptions raster;
        raster.fit = 400;
        raster.crew = crew;
        Picture picture;
        std::string error;
        const auto device = MakePictureDevice(raster, &picture, &error);
        Reading reading(installation_, document, {});
        (void)reading.Draw(reading.PageFor(), *device);
        return picture.rgba;
    }

    // What is not shared is made here.
    Drawn Draw(const Document &document) const
    {
        Drawn drawn;
        Reading reading(installation_, document, {});
        TraceLines writer({AddLine, &drawn.calls});
        (void)reading.Trace(writer);

        RasterOptions raster;
        raster.fit = 64;
        std::string error;
        const auto device = MakePictureDevice(raster, &drawn.picture, &error);
        (void)reading.Draw(reading.PageFor(), *device);
        return drawn;
    }

    Installation installation_;
    std::vector<std::unique_ptr<Document>> documents_;
};

TEST_F(Threads, GiveWhatOneGives)
{
    std::vector<Drawn> alone;
    for (const auto &document : documents_)
        alone.push_back(Draw(*document));
    ASSERT_NE(alone.front().calls, "");

    std::atomic<int> differing = 0, compared = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            // Each thread begins elsewhere, so that one document is drawn twice at a time, and different ones meet.
            for (size_t i = 0; i < documents_.size(); ++i) {
                const size_t at = (i + static_cast<size_t>(thread) / 2 * 7) % documents_.size();
                differing += Draw(*documents_[at]) == alone[at] ? 0 : 1;
                ++compared;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(differing, 0);
    EXPECT_EQ(compared, kThreads * static_cast<int>(documents_.size()));
}

TEST_F(Threads, OfACrewDrawWhatOneDraws)
{
    for (const size_t size : {2, 3, 8, 64}) {
        ThreadCrew crew;
        crew.Start(size);
        ASSERT_EQ(crew.Size(), size);
        for (size_t i = 0; i < documents_.size(); ++i)
            EXPECT_TRUE(DrawPixels(*documents_[i], &crew) == DrawPixels(*documents_[i], nullptr))
                << Samples()[i] << " by " << size;
    }
}

// The list of a document's fonts is made once; each parse opens the files for itself.
TEST_F(Threads, ShareTheListOfADocumentsFonts)
{
    std::string error;
    const auto document = Document::Open(VX_SOURCE_DIR "/samples/text-point.vx", &error);
    ASSERT_NE(document, nullptr) << error;
    DocumentFontOptions fontOptions;
    fontOptions.asked = ScanFontNames(*document);
    ASSERT_FALSE(fontOptions.asked.empty());
    const DocumentFonts fonts(*installation_.fonts, fontOptions);
    const auto draw = [&] {
        OpenFonts openFonts(fonts);
        DocumentGlyphs glyphs(&openFonts);
        ParseOptions options;
        options.fonts = &fonts;
        options.widths = &openFonts;
        options.glyphs = &glyphs;
        RasterOptions raster;
        raster.fit = 64;
        Picture picture;
        std::string problem;
        const auto device = MakePictureDevice(raster, &picture, &problem);
        Page page;
        page.box = installation_.plugin->ReadInfo(*document, options).box.Upright();
        (void)installation_.plugin->Draw(*document, options, page, *device);
        return picture.rgba;
    };
    const std::vector<uint8_t> alone = draw();
    ASSERT_FALSE(alone.empty());
    std::atomic<int> same = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&] { same += draw() == alone ? 1 : 0; });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(same, kThreads);
}

} // namespace
