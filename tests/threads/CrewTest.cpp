// One drawing by several threads: the picture is that of one.
#include "devices/raster/RasterDevice.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "jobs/ThreadCrew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace vxhost;

std::vector<std::string> Drawings()
{
    std::vector<std::string> drawings;
    for (const auto &entry : std::filesystem::directory_iterator(VX_SOURCE_DIR "/samples")) {
        if (entry.path().extension() == ".vx")
            drawings.push_back(entry.path().string());
    }
    std::ranges::sort(drawings);
    return drawings;
}

TEST(CrewThreads, DrawWhatOneDraws)
{
    std::string error;
    Installation installation;
    installation.plugin = Plugin::Load(VX_PLUGIN_PATH, &error);
    ASSERT_NE(installation.plugin, nullptr) << error;
    installation.fonts = MakeFontconfigFonts({false, {"/usr/share/fonts/opentype/urw-base35"}});

    const auto draw = [&](const Document &document, Crew *crew) {
        RasterOptions options;
        options.fit = 400;
        options.crew = crew;
        Picture picture;
        const auto device = MakePictureDevice(options, &picture, &error);
        Reading reading(installation, document, {});
        (void)reading.Draw(reading.PageFor(), *device);
        return picture.rgba;
    };
    int drawings = 0;
    for (const size_t size : {2, 3, 8, 64}) {
        ThreadCrew crew;
        crew.Start(size);
        ASSERT_EQ(crew.Size(), size);
        for (const std::string &path : Drawings()) {
            const auto document = Document::Open(path, &error);
            ASSERT_NE(document, nullptr) << error;
            const std::vector<uint8_t> alone = draw(*document, nullptr);
            EXPECT_TRUE(draw(*document, &crew) == alone) << path << " by " << size;
            ++drawings;
        }
    }
    EXPECT_GT(drawings, 4 * 20);
}

} // namespace
