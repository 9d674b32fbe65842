// The built vxparser.so keeps its promises: one exported symbol, no library but C's own, no state, nothing asked
// of the host that Toolbox.h does not declare.
#include "tests/boundary/ElfFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

namespace
{

// Names to which the compiler's start files refer if they are there.
const std::set<std::string> kStartFileNames = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable",
                                               "__gmon_start__", "__cxa_finalize"};

// The loader writes these sections and then makes them read-only; the tables of the start files are among them.
const std::set<std::string> kLoadersSections = {".init_array", ".fini_array", ".dynamic", ".data.rel.ro",
                                                ".got",        ".got2",       ".got.plt", ".plt"};

// The compiler's start files keep one pointer and one flag.
constexpr uint64_t kStartFileBytes = 8;

std::set<std::string> ToolboxNames()
{
    std::ifstream stream(VX_SOURCE_DIR "/sdk/include/vx/Toolbox.h");
    std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    // POSIX expressions have no non-greedy stars, so comments are cut by hand.
    for (size_t open; (open = text.find("/*")) != std::string::npos;)
        text.erase(open, text.find("*/", open) + 2 - open);
    std::set<std::string> names;
    const std::regex declaration(R"((?:^|\n)[A-Za-z][A-Za-z0-9_ ]*[ *](\w+)\([^;{}]*\);)");
    for (std::sregex_iterator at(text.begin(), text.end(), declaration), end; at != end; ++at)
        names.insert((*at)[1]);
    return names;
}

// The command exports these names to the file that --plugin names.
TEST(ToolboxList, HasTheNamesOfTheHeader)
{
    std::ifstream stream(VX_SOURCE_DIR "/cli/toolbox.list");
    std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    std::set<std::string> names;
    const std::regex name(R"((\w+);)");
    for (std::sregex_iterator at(text.begin(), text.end(), name), end; at != end; ++at)
        names.insert((*at)[1]);
    EXPECT_EQ(names, ToolboxNames());
}

class BuiltFile : public testing::Test
{
  protected:
    void SetUp() override
    {
#ifdef VX_SANITIZE
        GTEST_SKIP() << "the sanitizers add symbols, libraries and data of their own";
#endif
        const auto file = ReadElfFile(VX_PLUGIN_PATH);
        ASSERT_TRUE(file.has_value()) << "cannot read " VX_PLUGIN_PATH;
        file_ = *file;
    }

    ElfFile file_;
};

TEST_F(BuiltFile, ExportsOnlyMain)
{
    std::vector<std::string> defined;
    for (const ElfSymbol &symbol : file_.dynamicSymbols)
        if (symbol.defined)
            defined.push_back(symbol.name);
    EXPECT_EQ(defined, std::vector<std::string>{"main"});
}

TEST_F(BuiltFile, NeedsOnlyTheCAndMathematicsLibraries)
{
    for (const std::string &library : file_.neededLibraries)
        EXPECT_TRUE(library.starts_with("libc.so.") || library.starts_with("libm.so.")) << library;
}

TEST_F(BuiltFile, LeavesOnlyToolboxNamesToTheHost)
{
    const std::set<std::string> toolbox = ToolboxNames();
    ASSERT_EQ(toolbox.size(), 24U) << "Toolbox.h could not be understood";
    for (const ElfSymbol &symbol : file_.dynamicSymbols) {
        if (symbol.defined || symbol.versioned || kStartFileNames.contains(symbol.name))
            continue;
        EXPECT_TRUE(toolbox.contains(symbol.name)) << symbol.name << " is not in Toolbox.h";
    }
}

TEST_F(BuiltFile, HasNoStateOfItsOwn)
{
    for (const ElfSection &section : file_.sections) {
        if (!section.writable || kLoadersSections.contains(section.name))
            continue;
        EXPECT_LE(section.size, kStartFileBytes) << section.name;
    }
    EXPECT_EQ(file_.SizeOf(".tdata") + file_.SizeOf(".tbss"), 0U) << "thread-local state";
}

TEST_F(BuiltFile, RunsNoConstructors)
{
    EXPECT_LE(file_.SizeOf(".init_array"), file_.pointerBytes) << "more than the start file's own";
    EXPECT_LE(file_.SizeOf(".fini_array"), file_.pointerBytes) << "more than the start file's own";
}

} // namespace
