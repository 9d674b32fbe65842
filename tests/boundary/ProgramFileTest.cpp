// The built programs: what they need before they begin. Each library takes time, whether or not a document needs it.
#include "tests/boundary/ElfFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#ifdef VX_LATE_PROGRAMS

namespace
{

const char *const kPrograms[] = {VX_LATE_PROGRAMS};

class ProgramFile : public testing::TestWithParam<const char *>
{
};

TEST_P(ProgramFile, BeginsWithoutWhatOnlySomeDocumentsNeed)
{
    const auto file = ReadElfFile(GetParam());
    ASSERT_TRUE(file.has_value()) << "cannot read " << GetParam();
    for (const std::string library :
         {"libc.so", "libstdc++"}) // or all would be well with a file that needs nothing
        EXPECT_TRUE(std::ranges::any_of(file->neededLibraries, [&](const std::string &needed) {
            return needed.starts_with(library);
        })) << library;
    for (const std::string &needed : file->neededLibraries) {
        for (const std::string late :
             {"libfontconfig", "libfreetype", "libharfbuzz", "liblcms", "libtiff", "libarchive"})
            EXPECT_FALSE(needed.starts_with(late))
                << needed << ": a procedure of it is not in jobs/late/Procedures.inc";
        EXPECT_FALSE(needed.starts_with("libmicrohttpd")) << "that is for libexec/vx/vx-viewer alone";
    }
}

// What stands in for a procedure is not for the libraries that are loaded later, which have each other's own.
TEST_P(ProgramFile, KeepsItsStandInsToItself)
{
    const auto file = ReadElfFile(GetParam());
    ASSERT_TRUE(file.has_value()) << "cannot read " << GetParam();
    EXPECT_FALSE(file->dynamicSymbols.empty());
    for (const ElfSymbol &symbol : file->dynamicSymbols) {
        for (const std::string start : {"Fc", "FT_", "hb_", "cms", "TIFF", "archive_"})
            EXPECT_FALSE(symbol.name.starts_with(start)) << symbol.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Programs, ProgramFile, testing::ValuesIn(kPrograms));

} // namespace

#endif
