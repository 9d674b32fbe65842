// The built libvx.so: what it exports is what vx.h declares and what the list says, so that neither grows by accident.
#include "tests/boundary/ElfFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#ifdef VX_LIBRARY_PATH

namespace
{

std::string ReadFile(const std::string &path)
{
    std::ifstream stream(path);
    EXPECT_TRUE(stream) << path;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::set<std::string> Matches(const std::string &text, const char *expression)
{
    const std::regex wanted(expression);
    std::set<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), wanted), end; at != end; ++at)
        found.insert((*at)[1]);
    return found;
}

const std::set<std::string> Listed()
{
    return Matches(ReadFile(VX_SOURCE_DIR "/tests/boundary/libvx.symbols"), R"((\S+)\n)");
}

TEST(LibraryFile, ExportsTheListAndNothingElse)
{
    const auto file = ReadElfFile(VX_LIBRARY_PATH);
    ASSERT_TRUE(file.has_value()) << "cannot read " VX_LIBRARY_PATH;
    std::set<std::string> defined;
    for (const ElfSymbol &symbol : file->dynamicSymbols) {
        if (symbol.defined)
            defined.insert(symbol.name);
    }
    EXPECT_EQ(defined, Listed());
    EXPECT_LE(defined.size(), 40U);
}

TEST(LibraryFile, ExportsWhatTheHeaderDeclares)
{
    const std::string header = ReadFile(VX_SOURCE_DIR "/include/vx.h");
    EXPECT_EQ(Matches(header, R"(\n(?:vx_status |void |size_t |const char \*)(vx_\w+)\()"), Listed());
}

} // namespace

#endif
