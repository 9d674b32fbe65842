// A folder for one test, and an engine as the command has it.
#pragma once

#include "jobs/Engine.h"
#include "library/LinkedPlugin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

class JobsFolder : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (std::filesystem::temp_directory_path() / "vx-jobs-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }

    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string Path(std::string_view name) const { return (folder_ / name).string(); }

    std::string Write(std::string_view name, std::string_view bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    std::string Read(std::string_view name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder_))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    static std::string DocumentOf(std::string_view body)
    {
        std::string document = "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 72 36\n%VX5_FileFormat 3\n%%EndComments\n"
                               "%%BeginSetup\n%%EndSetup\n";
        return document.append(body) + "%%PageTrailer\n%%EOF\n";
    }

    // Text of one font.
    static std::string TextOf(std::string_view font)
    {
        return "0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n" + std::string(font) + " 12 Tf\n(Hand) Tx\nTO\n";
    }

    static EngineOptions OptionsOfEngine()
    {
        EngineOptions options;
        options.plugin = MakeLinkedPlugin();
        options.fonts = {false, {"/usr/share/fonts/opentype/urw-base35"}};
        return options;
    }

    std::filesystem::path folder_;
};

inline constexpr std::string_view kSquare = "0 g\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n";

} // namespace vxhost
