// Procedures that are looked for in libraries when they are needed. The tests are linked with the libraries as usual, so that the
// ones of this table are their own.
#include "jobs/LateLibraries.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace vxhost
{
namespace
{

std::string FailureOf(std::span<const LateProcedure> procedures)
{
    try {
        FindProcedures(procedures, LateLibraries::OfFonts);
    } catch (const std::runtime_error &failure) {
        return failure.what();
    }
    return "none";
}

TEST(LateLibraries, AreFoundByName)
{
    void *cosine = nullptr, *untouched = nullptr;
    const LateProcedure procedures[] = {
        {LateLibraries::OfFonts, "libm.so.6", "cos", &cosine},
        {LateLibraries::OfColour, "libnone.so.1", "none", &untouched},
    };
    EXPECT_EQ(FailureOf(procedures), "none");
    ASSERT_NE(cosine, nullptr);
    EXPECT_EQ(reinterpret_cast<double (*)(double)>(cosine)(0), 1);
    EXPECT_EQ(untouched, nullptr) << "it is of others, which nobody asked for";
}

TEST(LateLibraries, ThatAreMissingAreNamed)
{
    void *place = nullptr;
    const LateProcedure noLibrary[] = {{LateLibraries::OfFonts, "libnone.so.1", "cos", &place}};
    EXPECT_NE(FailureOf(noLibrary).find("libnone.so.1"), std::string::npos);
    const LateProcedure noProcedure[] = {{LateLibraries::OfFonts, "libm.so.6", "no_such_procedure", &place}};
    EXPECT_NE(FailureOf(noProcedure).find("no_such_procedure"), std::string::npos);
    EXPECT_EQ(place, nullptr);
}

TEST(LateLibraries, AreNothingToAProgramThatIsLinkedWithThem)
{
    EXPECT_NO_THROW(LoadLate(LateLibraries::OfFonts));
    EXPECT_NO_THROW(LoadLate(LateLibraries::OfFonts));
}

} // namespace
} // namespace vxhost
