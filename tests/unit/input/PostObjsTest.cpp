// Operands in their pool and lists, and the typed pops.
#include "plugin/input/PostObjs.h"

#include "tests/support/CaseName.h"
#include "tests/unit/input/HeapForTests.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <set>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

PostScriptObject Number(int32_t type, int32_t number)
{
    PostScriptObject object = {};
    object.type = type;
    object.value.number = number;
    return object;
}

PostScriptObject Integer(int32_t number)
{
    return Number(kTokenInteger, number);
}
PostScriptObject Fraction(Fixed number)
{
    return Number(kTokenFixed, number);
}

PostScriptObject Named(int32_t type, const char *text)
{
    PostScriptObject object = {};
    object.type = type;
    object.string = View(text);
    return object;
}

// Objects written one after another, the last one on top.
struct Stack {
    std::vector<PostScriptObject> objects;
    PostScriptObjectList list;

    Stack(std::initializer_list<PostScriptObject> written) : objects(written)
    {
        InitializePostScriptObjectList(&list);
        for (PostScriptObject &object : objects)
            PushPostScriptObject(&object, &list);
    }
    Stack(const Stack &) = delete;
    Stack &operator=(const Stack &) = delete;
};

// An array as "]" builds it: the first element written is at the head.
PostScriptObject ArrayOf(std::vector<PostScriptObject> *elements)
{
    PostScriptObject array = {};
    array.type = kObjectArray;
    InitializePostScriptObjectList(&array.array);
    for (auto element = elements->rbegin(); element != elements->rend(); ++element)
        PushPostScriptObject(&*element, &array.array);
    return array;
}

TEST(Lists, StartEmpty)
{
    PostScriptObjectList list = {reinterpret_cast<PostScriptObject *>(&list), 7};
    InitializePostScriptObjectList(&list);
    EXPECT_EQ(list.head, nullptr);
    EXPECT_EQ(GetPostScriptObjectListLength(&list), 0);
    EXPECT_EQ(PopPostScriptObject(&list), nullptr);
    EXPECT_EQ(GetPostScriptObjectListLength(&list), 0);
}

TEST(Lists, AreLastInFirstOut)
{
    Stack stack = {Integer(1), Integer(2), Integer(3)};
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 3);
    EXPECT_EQ(PopPostScriptObject(&stack.list), &stack.objects[2]);
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 2);
    EXPECT_EQ(PopPostScriptObject(&stack.list), &stack.objects[1]);
    EXPECT_EQ(PopPostScriptObject(&stack.list), &stack.objects[0]);
    EXPECT_EQ(PopPostScriptObject(&stack.list), nullptr);
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 0);
}

TEST(Lists, IgnoreANullObject)
{
    Stack stack = {Integer(1)};
    PushPostScriptObject(nullptr, &stack.list);
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 1);
    EXPECT_EQ(stack.list.head, &stack.objects[0]);
}

TEST(Lists, CountFromTheTop)
{
    Stack stack = {Integer(1), Integer(2), Integer(3)};
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, 1), &stack.objects[2]);
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, 3), &stack.objects[0]);
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, 0), nullptr);
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, -1), nullptr);
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, 4), nullptr);
    stack.list.count = 5; // a count that the chain does not reach
    EXPECT_EQ(GetNthPostScriptObject(&stack.list, 5), nullptr);
}

class Pool : public testing::Test
{
  protected:
    static constexpr int32_t kObjects = 500;

    Pool() { EXPECT_TRUE(InitializePostScriptObjectBuffer(&pool, kObjects, &heap.procs)); }

    ~Pool() override
    {
        TerminatePostScriptObjectBuffer(&pool);
        EXPECT_EQ(heap.live, 0);
    }

    HeapForTests heap;
    PostScriptObjectBuffer pool = {};
};

TEST_F(Pool, TakesOneBlockForAllObjects)
{
    EXPECT_EQ(heap.live, 1);
    EXPECT_EQ(heap.lastSize, kObjects * static_cast<int32_t>(sizeof(PostScriptObject)));
    EXPECT_EQ(sizeof(PostScriptObject), sizeof(void *) == 4 ? 16u : 32u);
}

TEST_F(Pool, HandsOutExactlyItsObjects)
{
    std::set<PostScriptObject *> handedOut;
    for (int32_t i = 0; i < kObjects; ++i) {
        PostScriptObject *object = AllocatePostScriptObject(&pool);
        ASSERT_NE(object, nullptr) << i;
        ASSERT_GE(object, pool.base);
        ASSERT_LT(object, pool.base + kObjects);
        handedOut.insert(object);
    }
    EXPECT_EQ(handedOut.size(), static_cast<size_t>(kObjects));
    EXPECT_EQ(AllocatePostScriptObject(&pool), nullptr);
    EXPECT_EQ(AllocatePostScriptObject(&pool), nullptr);
}

TEST_F(Pool, GivesBackEverythingAfterAMark)
{
    PostScriptObject *first = AllocatePostScriptObject(&pool);
    PostScriptObject *mark = MarkPostScriptObjectBuffer(&pool);
    PostScriptObject *second = AllocatePostScriptObject(&pool);
    (void)AllocatePostScriptObject(&pool);
    ResetPostScriptObjectBuffer(&pool, mark);
    EXPECT_EQ(AllocatePostScriptObject(&pool), second);
    ClearPostScriptObjectsBuffer(&pool);
    EXPECT_EQ(AllocatePostScriptObject(&pool), first);
}

TEST_F(Pool, IsWholeAgainAfterClearing)
{
    while (AllocatePostScriptObject(&pool) != nullptr)
        ;
    ClearPostScriptObjectsBuffer(&pool);
    int32_t count = 0;
    while (AllocatePostScriptObject(&pool) != nullptr)
        ++count;
    EXPECT_EQ(count, kObjects);
}

TEST_F(Pool, TerminationClearsItsFields)
{
    HeapForTests other;
    PostScriptObjectBuffer terminated = {};
    ASSERT_TRUE(InitializePostScriptObjectBuffer(&terminated, 3, &other.procs));
    TerminatePostScriptObjectBuffer(&terminated);
    EXPECT_EQ(other.live, 0);
    EXPECT_EQ(terminated.base, nullptr);
    EXPECT_EQ(terminated.next, nullptr);
    EXPECT_EQ(terminated.limit, 0);
    EXPECT_EQ(AllocatePostScriptObject(&terminated), nullptr);
}

TEST_F(Pool, InitializationFailsWithoutMemory)
{
    HeapForTests none;
    none.refused = 1;
    PostScriptObjectBuffer failed = {};
    EXPECT_FALSE(InitializePostScriptObjectBuffer(&failed, 3, &none.procs));
}

// What each typed pop makes of each kind of object. The object is gone in every case.
struct PopCase {
    const char *name;
    int32_t type;
    bool integer, fixed, string, literal;
};

class Pops : public testing::TestWithParam<PopCase>
{
};

TEST_P(Pops, AcceptTheirTypesAndAlwaysTakeTheObject)
{
    const PopCase &c = GetParam();
    PostScriptObject object = {};
    object.type = c.type;
    PostScriptObject below = Integer(9);
    const auto pops = [&](auto pop) {
        PostScriptObjectList list;
        InitializePostScriptObjectList(&list);
        PushPostScriptObject(&below, &list);
        PushPostScriptObject(&object, &list);
        const bool accepted = pop(&list);
        EXPECT_EQ(GetPostScriptObjectListLength(&list), 1);
        EXPECT_EQ(list.head, &below);
        return accepted;
    };
    int32_t integer = 0;
    BigString string = {};
    EXPECT_EQ(pops([&](auto *list) { return PopInteger(list, &integer); }), c.integer);
    EXPECT_EQ(pops([&](auto *list) { return PopFixed(list, &integer); }), c.fixed);
    EXPECT_EQ(pops([&](auto *list) { return PopString(list, &string); }), c.string);
    EXPECT_EQ(pops([&](auto *list) { return PopLiteral(list, &string); }), c.literal);
    EXPECT_EQ(ConvertToFixed(&object, &integer), c.fixed);
}

const PopCase kPops[] = {
    {"AnInteger", kTokenInteger, true, true, false, false},
    {"AFixed", kTokenFixed, false, true, false, false},
    {"AString", kTokenString, false, false, true, false},
    {"ALiteralName", kTokenLiteralName, false, false, false, true},
    {"AnImmediateName", kTokenImmediateName, false, false, false, false},
    {"AnExecutableName", kTokenExecutableName, false, false, false, false},
    {"AnArray", kObjectArray, false, false, false, false},
    {"AnArrayMark", kTokenArrayStart, false, false, false, false},
    {"AHexMark", kTokenHexStart, false, false, false, false},
    {"HexData", kTokenHexData, false, false, false, false},
};
INSTANTIATE_TEST_SUITE_P(PostObjs, Pops, testing::ValuesIn(kPops), CaseName());

TEST(PopsTest, FailOnAnEmptyStack)
{
    PostScriptObjectList list;
    InitializePostScriptObjectList(&list);
    int32_t number = 0;
    BigString string = {};
    FixedMatrix matrix = {};
    FixedPoint point = {};
    EXPECT_FALSE(PopInteger(&list, &number));
    EXPECT_FALSE(PopFixed(&list, &number));
    EXPECT_FALSE(PopString(&list, &string));
    EXPECT_FALSE(PopLiteral(&list, &string));
    EXPECT_FALSE(PopMultipleFixeds(&list, &number, 1));
    EXPECT_FALSE(PopFixedPoints(&list, &point, 1));
    EXPECT_FALSE(PopAndBuildFixedMatrix(&list, &matrix));
    EXPECT_FALSE(PopFixedMatrix(&list, &matrix));
    EXPECT_EQ(GetPostScriptObjectListLength(&list), 0);
}

TEST(PopsTest, TextComesOutAsItIs)
{
    Stack stack = {Named(kTokenLiteralName, "name"), Named(kTokenString, "text")};
    BigString string = {};
    ASSERT_TRUE(PopString(&stack.list, &string));
    EXPECT_EQ(Text(string), "text");
    ASSERT_TRUE(PopLiteral(&stack.list, &string));
    EXPECT_EQ(Text(string), "name");
}

struct ConversionCase {
    const char *name;
    int32_t type, number;
    Fixed value;
};

class Conversions : public testing::TestWithParam<ConversionCase>
{
};

TEST_P(Conversions, GiveAFixed)
{
    Stack stack = {Number(GetParam().type, GetParam().number)};
    Fixed value = 0;
    ASSERT_TRUE(PopFixed(&stack.list, &value));
    EXPECT_EQ(value, GetParam().value);
}

const ConversionCase kConversions[] = {
    {"AnIntegerIsShifted", kTokenInteger, 3, 0x30000},
    {"ANegativeIntegerIsShifted", kTokenInteger, -3, -0x30000},
    {"TheLargestThatFits", kTokenInteger, 32767, 0x7FFF0000},
    {"TheSmallestThatFits", kTokenInteger, -32768, INT32_MIN},
    {"OneMoreWraps", kTokenInteger, 32768, INT32_MIN},
    // 40000 is 65536 - 25536
    {"FortyThousandWraps", kTokenInteger, 40000, -25536 * 65536},
    {"SixtyFiveThousandWrapsToZero", kTokenInteger, 65536, 0},
    {"TheLargestIntegerWraps", kTokenInteger, INT32_MAX, -0x10000},
    {"AFixedStaysAsItIs", kTokenFixed, 0x12345678, 0x12345678},
};
INSTANTIATE_TEST_SUITE_P(PostObjs, Conversions, testing::ValuesIn(kConversions), CaseName());

TEST(PopMultipleFixedsTest, PutsTheFirstWrittenFirst)
{
    Stack stack = {Integer(9), Integer(1), Fraction(0x20000), Integer(3)};
    std::array<Fixed, 3> values = {};
    ASSERT_TRUE(PopMultipleFixeds(&stack.list, values.data(), 3));
    EXPECT_EQ(values, (std::array<Fixed, 3>{0x10000, 0x20000, 0x30000}));
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 1);
}

TEST(PopMultipleFixedsTest, TakesNothingForNoneOrFewer)
{
    Stack stack = {Integer(1)};
    Fixed value = 7;
    EXPECT_TRUE(PopMultipleFixeds(&stack.list, &value, 0));
    EXPECT_TRUE(PopMultipleFixeds(&stack.list, &value, -1));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 1);
}

TEST(PopMultipleFixedsTest, KeepsWhatWasStoredBeforeAFailure)
{
    Stack stack = {Integer(1), Named(kTokenString, "a"), Integer(3)};
    std::array<Fixed, 3> values = {7, 7, 7};
    EXPECT_FALSE(PopMultipleFixeds(&stack.list, values.data(), 3));
    EXPECT_EQ(values, (std::array<Fixed, 3>{7, 7, 0x30000}));
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 1)
        << "the failing object is gone, the one below stays";
}

TEST(PopFixedPointsTest, PairsNumbersInDocumentOrder)
{
    Stack stack = {Integer(1), Integer(2), Integer(3), Integer(4)};
    std::array<FixedPoint, 2> points = {};
    ASSERT_TRUE(PopFixedPoints(&stack.list, points.data(), 2));
    EXPECT_EQ(points[0].x, 0x10000);
    EXPECT_EQ(points[0].y, 0x20000);
    EXPECT_EQ(points[1].x, 0x30000);
    EXPECT_EQ(points[1].y, 0x40000);
}

TEST(PopAndBuildFixedMatrixTest, KeepsDocumentOrder)
{
    Stack stack = {Integer(1), Integer(2), Integer(3), Integer(4), Integer(5), Integer(6)};
    FixedMatrix m = {};
    ASSERT_TRUE(PopAndBuildFixedMatrix(&stack.list, &m));
    EXPECT_EQ(m.a, 0x10000);
    EXPECT_EQ(m.b, 0x20000);
    EXPECT_EQ(m.c, 0x30000);
    EXPECT_EQ(m.d, 0x40000);
    EXPECT_EQ(m.tx, 0x50000);
    EXPECT_EQ(m.ty, 0x60000);
}

TEST(PopFixedMatrixTest, ReversesItsArray)
{
    std::vector<PostScriptObject> elements = {Integer(1), Integer(2), Integer(3),
                                              Integer(4), Integer(5), Integer(6)};
    Stack stack = {ArrayOf(&elements)};
    FixedMatrix m = {};
    ASSERT_TRUE(PopFixedMatrix(&stack.list, &m));
    EXPECT_EQ(m.a, 0x60000);
    EXPECT_EQ(m.b, 0x50000);
    EXPECT_EQ(m.c, 0x40000);
    EXPECT_EQ(m.d, 0x30000);
    EXPECT_EQ(m.tx, 0x20000);
    EXPECT_EQ(m.ty, 0x10000);
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 0);
}

struct BadMatrixCase {
    const char *name;
    std::vector<PostScriptObject> elements;
};

class BadMatrices : public testing::TestWithParam<BadMatrixCase>
{
};

TEST_P(BadMatrices, FailAndAreGone)
{
    std::vector<PostScriptObject> elements = GetParam().elements;
    Stack stack = {ArrayOf(&elements)};
    FixedMatrix matrix = {};
    EXPECT_FALSE(PopFixedMatrix(&stack.list, &matrix));
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 0);
}

const PostScriptObject kOne = Integer(1);

const BadMatrixCase kBadMatrices[] = {
    {"FiveNumbers", {kOne, kOne, kOne, kOne, kOne}},
    {"SevenNumbers", {kOne, kOne, kOne, kOne, kOne, kOne, kOne}},
    {"NoNumbers", {}},
    {"AStringAmongSix", {kOne, kOne, kOne, Named(kTokenString, "1"), kOne, kOne}},
};
INSTANTIATE_TEST_SUITE_P(PostObjs, BadMatrices, testing::ValuesIn(kBadMatrices), CaseName());

TEST(PopFixedMatrixTest, WantsAnArray)
{
    Stack stack = {Integer(1), Integer(2), Integer(3), Integer(4), Integer(5), Integer(6)};
    FixedMatrix matrix = {};
    EXPECT_FALSE(PopFixedMatrix(&stack.list, &matrix));
    EXPECT_EQ(GetPostScriptObjectListLength(&stack.list), 5);
}

} // namespace
