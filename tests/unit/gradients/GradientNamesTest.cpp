// Gradients are found by their names as a search one by one would find them, but faster.
#include "plugin/gradients/GradientNames.h"

#include "tests/golden/Random.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

BigString View(std::string_view text)
{
    return {reinterpret_cast<const uint8_t *>(text.data()), static_cast<int32_t>(text.size())};
}

// Gradients listed as definitions list them.
class GradientNames : public testing::Test
{
  protected:
    void Define(std::string_view name)
    {
        GradientObject *gradient = &gradients_.emplace_back();
        memcpy(gradient->name, name.data(), name.size());
        gradient->nameLength = static_cast<int32_t>(name.size());
        gradient->index = state_.gradientCount++;
        AddGradientName(&state_, gradient);
        if (state_.firstGradient == nullptr)
            state_.firstGradient = gradient;
    }

    // The index of the gradient of that name, or -1.
    int32_t Find(std::string_view name)
    {
        const BigString text = View(name);
        const GradientObject *found = GetAutoBlendDefinitionFromLinkList(&state_, &text);
        return found == nullptr ? -1 : found->index;
    }

    int32_t FindOneByOne(std::string_view name)
    {
        const BigString text = View(name);
        for (const GradientObject &gradient : gradients_) {
            const BigString own = View({gradient.name, static_cast<size_t>(gradient.nameLength)});
            if (CompareStrings(&own, &text))
                return gradient.index;
        }
        return -1;
    }

    // Counts the forks of the longest way down from one.
    static int CountForks(const GradientObject *fork)
    {
        int most = 0;
        for (const GradientObject *branch : fork->branches)
            if (branch->forkBit > fork->forkBit)
                most = std::max(most, CountForks(branch));
        return most + 1;
    }

    GradientState state_ = {};
    std::deque<GradientObject> gradients_;
};

TEST_F(GradientNames, FindNothingAmongNone)
{
    EXPECT_EQ(Find("a"), -1);
    Define("");
    EXPECT_EQ(Find("a"), -1);
    EXPECT_EQ(Find(""), -1);
}

// Names are made of a few bytes at the edges of their range, so that many are equal, begin alike or hold terminators.
TEST_F(GradientNames, FindWhatASearchOneByOneFinds)
{
    constexpr std::string_view kBytes("\0\1ab\x7F\x80\xFF", 7);
    Random random(1);
    const auto randomName = [&] {
        const size_t length = random.Below(8) == 0 ? 95 + random.Below(5) : random.Below(5);
        std::string name(length, length > 5 ? 'n' : '\0');
        for (size_t i = length - std::min<size_t>(length, 4); i < length; ++i)
            name[i] = kBytes[random.Below(kBytes.size())];
        return name;
    };
    int found = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string wanted = randomName();
        const int32_t expected = FindOneByOne(wanted);
        ASSERT_EQ(Find(wanted), expected) << i;
        if (!wanted.empty()) {
            ASSERT_EQ(state_.lookupIndex, expected < 0 ? state_.gradientCount : expected);
        }
        found += expected < 0 ? 0 : 1;
        if (i % 3 == 0)
            Define(randomName());
    }
    EXPECT_GT(found, 500);
    EXPECT_LT(found, 3500);
}

TEST_F(GradientNames, AreNotFoundByTheStartOfALongerOne)
{
    const std::string longest(kGradientNameSize - 1, 'n');
    Define(longest);
    for (const size_t length : {100u, 127u, 128u, 255u, 256u, 355u, 4096u})
        EXPECT_EQ(Find(std::string(length, 'n')), -1) << length;
    EXPECT_EQ(Find(longest), 0);
}

constexpr int kNameBits = 8 * kGradientNameSize; // with the length

TEST_F(GradientNames, TakeFewStepsWhateverTheyAre)
{
    for (int i = 0; i < 20000; ++i)
        Define("G" + std::to_string(i));
    EXPECT_LE(CountForks(state_.nameTree), 6 * 8 + 8) << "names of six bytes at most";
    for (size_t length = 1; length < kGradientNameSize; ++length)
        Define(std::string(length, 'a'));
    // Names that differ from the first in one bit each, the last bit first: the deepest tree that there is.
    const std::string zeros(kGradientNameSize - 1, '\0');
    Define(zeros);
    for (size_t bit = 8 * zeros.size(); bit-- > 0;) {
        std::string name = zeros;
        name[bit / 8] = static_cast<char>(0x80 >> bit % 8);
        Define(name);
    }
    EXPECT_GT(CountForks(state_.nameTree), kNameBits - 8);
    EXPECT_LE(CountForks(state_.nameTree), kNameBits);
    for (const GradientObject &gradient : gradients_)
        ASSERT_EQ(Find({gradient.name, static_cast<size_t>(gradient.nameLength)}), gradient.index);
}

struct CompareCase {
    const char *name;
    std::string_view first, second;
    bool equal;
};

class ComparedStrings : public testing::TestWithParam<CompareCase>
{
};

TEST_P(ComparedStrings, AreEqualOrNot)
{
    const BigString first = View(GetParam().first);
    const BigString second = View(GetParam().second);
    EXPECT_EQ(CompareStrings(&first, &second), GetParam().equal);
    EXPECT_EQ(CompareStrings(&second, &first), GetParam().equal);
}

const CompareCase kComparisons[] = {
    {"TheSame", "Sky", "Sky", true},
    {"CaseCounts", "Sky", "sky", false},
    {"TheLengthCounts", "Sky", "Sky ", false},
    {"BytesBehindATerminatorCount", {"a\0b", 3}, {"a\0c", 3}, false},
    {"EmptyOnesAreNotEqual", "", "", false},
};
INSTANTIATE_TEST_SUITE_P(Gradients, ComparedStrings, testing::ValuesIn(kComparisons), CaseName());

} // namespace
