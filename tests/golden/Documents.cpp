#include "tests/golden/Documents.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vxtest
{

namespace
{

// Most real drawings are larger; that two of them pass does no harm.
constexpr uintmax_t kSmallSampleBytes = 8192;

std::vector<TestDocument> FindDocuments(const std::string &folder)
{
    std::vector<TestDocument> found;
    for (const auto &entry : std::filesystem::directory_iterator(std::string(VX_SOURCE_DIR "/") + folder)) {
        if (entry.path().extension() == ".vx")
            found.push_back({entry.path().stem().string(), entry.path().string()});
    }
    std::sort(found.begin(), found.end(),
              [](const TestDocument &a, const TestDocument &b) { return a.name < b.name; });
    return found;
}

} // namespace

const std::vector<TestDocument> &GoldenDocuments()
{
    static const std::vector<TestDocument> documents = FindDocuments("tests/golden");
    return documents;
}

const std::vector<TestDocument> &Samples()
{
    static const std::vector<TestDocument> documents = FindDocuments("samples");
    return documents;
}

const std::vector<TestDocument> &SmallSamples()
{
    static const std::vector<TestDocument> documents = [] {
        std::vector<TestDocument> samples = Samples();
        std::erase_if(samples, [](const TestDocument &sample) {
            return std::filesystem::file_size(sample.path) > kSmallSampleBytes;
        });
        return samples;
    }();
    return documents;
}

std::vector<std::string> ReadTrace(const TestDocument &document)
{
    std::string path = document.path;
    path.replace(path.size() - 3, 3, ".trace");
    std::ifstream file(path);
    EXPECT_TRUE(file.is_open()) << path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() != '#')
            lines.push_back(line);
    }
    return lines;
}

std::string ReadBytes(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string DocumentName::operator()(const testing::TestParamInfo<TestDocument> &info) const
{
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

} // namespace vxtest
