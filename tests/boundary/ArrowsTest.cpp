// Arrows point one way: cli -> jobs -> library -> devices -> host -> sdk, web -> library, and plugin -> sdk. Within the plug-in all begin at
// its entry: no other folder of it includes that.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

struct FolderCase {
    const char *name;
    std::vector<std::string> mayInclude; // beside the headers of other projects, in < >
};

void PrintTo(const FolderCase &folder, std::ostream *stream)
{
    *stream << folder.name;
}

const FolderCase kFolders[] = {
    {"plugin", {"plugin"}},
    {"host", {"host"}},
    {"devices", {"devices", "host"}},
    {"library", {"library", "devices", "host", "plugin/entry"}},
    {"jobs", {"jobs", "library", "devices", "host"}},
    {"cli", {"cli", "jobs", "library", "devices", "host"}},
    {"web", {"web", "library", "host"}},
};

class Arrows : public testing::TestWithParam<FolderCase>
{
};

bool MayInclude(const FolderCase &folder, const std::string &included)
{
    for (const std::string &allowed : folder.mayInclude)
        if (included.starts_with(allowed + "/"))
            return true;
    return included.find('/') == std::string::npos; // generated, or beside the source
}

TEST_P(Arrows, PointOneWay)
{
    const std::filesystem::path root = VX_SOURCE_DIR;
    int files = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(root / GetParam().name)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp" && extension != ".c")
            continue;
        ++files;
        std::ifstream stream(entry.path());
        for (std::string line; std::getline(stream, line);) {
            const std::string start = "#include \"";
            if (!line.starts_with(start))
                continue;
            const std::string included =
                line.substr(start.size(), line.find('"', start.size()) - start.size());
            EXPECT_TRUE(MayInclude(GetParam(), included)) << entry.path() << " includes " << included;
        }
    }
    EXPECT_GT(files, 0);
}

TEST(EntryArrow, PointsOutOfThePluginsEntryAlone)
{
    const std::filesystem::path plugin = std::filesystem::path(VX_SOURCE_DIR) / "plugin";
    int files = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(plugin)) {
        if (!entry.is_regular_file() || entry.path().parent_path() == plugin / "entry")
            continue;
        ++files;
        std::ifstream stream(entry.path());
        for (std::string line; std::getline(stream, line);)
            EXPECT_FALSE(line.starts_with("#include \"plugin/entry/")) << entry.path() << ": " << line;
    }
    EXPECT_GT(files, 0);
}

INSTANTIATE_TEST_SUITE_P(Folders, Arrows, testing::ValuesIn(kFolders),
                         [](const auto &tested) { return tested.param.name; });

} // namespace
