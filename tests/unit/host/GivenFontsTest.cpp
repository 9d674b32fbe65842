// What is read of a font's own file is what the system says of it.
#include "host/fonts/GivenFonts.h"

#include "host/fonts/FontconfigFonts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vxhost
{
namespace
{

struct Facts {
    std::string family;
    int weight, width;
    bool isSlanted;
    unsigned eastAsian;
    friend bool operator==(const Facts &, const Facts &) = default;
};

void PrintTo(const Facts &facts, std::ostream *to)
{
    *to << facts.family << ", weight " << facts.weight << ", width " << facts.width
        << (facts.isSlanted ? ", slanted" : "") << ", scripts " << facts.eastAsian;
}

Facts FactsOf(const FontList::Entry &entry)
{
    return {entry.familyName, entry.style.weight, entry.style.width, entry.style.isSlanted,
            static_cast<unsigned>(entry.scripts)};
}

TEST(GivenFonts, AreKnownAsTheSystemKnowsThem)
{
    const auto installed = MakeFontconfigFonts();
    int count = 0;
    for (int32_t i = 0; i < installed->Count(); ++i) {
        const FontList::Entry &entry = installed->At(i);
        if (!entry.servedBy.empty() || entry.faceIndex >> 16 != 0)
            continue;
        const auto bytes = FontBytes::Open(entry.file);
        ASSERT_NE(bytes, nullptr) << entry.file;
        std::vector<FontCandidate> faces;
        ReadGivenFont(bytes, &faces);
        const auto face = std::ranges::find_if(
            faces, [&](const FontCandidate &one) { return one.entry.faceIndex == entry.faceIndex; });
        ASSERT_NE(face, faces.end()) << entry.file;
        EXPECT_EQ(face->entry.postScriptName, entry.postScriptName) << entry.file;
        EXPECT_EQ(face->entry.bytes, bytes);
        EXPECT_EQ(FactsOf(face->entry), FactsOf(entry)) << entry.postScriptName << " " << entry.file;
        ++count;
    }
    EXPECT_GT(count, 40);
}

} // namespace
} // namespace vxhost
