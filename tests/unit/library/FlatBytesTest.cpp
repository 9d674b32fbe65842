// What is written flat comes back as it was, and nothing else does.
#include "library/pipe/FlatBytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

enum class Colour : uint8_t { Cyan, Magenta, Yellow };

constexpr size_t kMostText = 5;
constexpr ListBounds kBounds = {27, 3}; // bytes, items

struct Record {
    bool flag = false;
    int16_t small = 0;
    uint64_t large = 0;
    double real = 0;
    Colour colour = Colour::Cyan;
    std::string text;
    std::vector<std::string> list;
    uint32_t omitted = 0;

    bool operator==(const Record &) const = default;
};

template <typename Flat>
void Describe(Flat &flat, Record &record)
{
    flat.Add(record.flag);
    flat.Add(record.small);
    flat.Add(record.large);
    flat.Add(record.real);
    flat.AddEnum(record.colour, Colour::Yellow);
    flat.AddText(record.text, kMostText);
    flat.AddList(record.list, kBounds, &record.omitted,
                 [](auto &to, std::string &item) { to.AddText(item, kMostText); });
}

// Where the fields of such a record begin.
constexpr size_t kFlag = 0, kReal = 11, kColour = 19, kText = 20;

std::string Write(Record record)
{
    FlatWriter flat;
    Describe(flat, record);
    return flat.Take();
}

std::optional<Record> Read(std::string_view bytes)
{
    FlatReader flat(bytes);
    Record record;
    Describe(flat, record);
    return flat.IsWhole() ? std::optional(record) : std::nullopt;
}

template <typename Number>
std::string With(std::string bytes, size_t at, Number number)
{
    std::memcpy(bytes.data() + at, &number, sizeof number);
    return bytes;
}

const Record kRecord = {true, -2, uint64_t{1} << 63, -0.5, Colour::Yellow, "word", {"a", "", "bcd"}, 7};

TEST(FlatBytes, ComeBackAsTheyWere)
{
    EXPECT_EQ(Read(Write(kRecord)), kRecord);
    EXPECT_EQ(Read(Write({})), Record());
}

TEST(FlatBytes, ThatEndEarlyOrLateAreRefused)
{
    const std::string bytes = Write(kRecord);
    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(Read(std::string_view(bytes).substr(0, length))) << length;
    EXPECT_FALSE(Read(bytes + '\0'));
}

TEST(FlatBytes, OfATextThatIsTooLongAreCutByTheWriterAndRefusedByTheReader)
{
    Record record = kRecord;
    record.text = "words of a text";
    EXPECT_EQ(Read(Write(record))->text, "words");
    const std::string bytes = Write(kRecord);
    for (const uint32_t length : {uint32_t{5}, uint32_t{6}, uint32_t{3}, ~uint32_t{0}})
        EXPECT_FALSE(Read(With(bytes, kText, length))) << length;
}

TEST(FlatBytes, OfAListAreThoseWithinItsBounds)
{
    struct ListCase {
        std::vector<std::string> items;
        size_t kept;
    };
    const std::vector<ListCase> cases = {
        {{"aaaaa", "aaaaa", "aaaaa"}, 3}, // 27 bytes
        {{"a", "a", "a", "a"}, 3},        // as many as there may be
        {{"a", "a", "a", "a", "a", "a"}, 3},
        {{}, 0},
    };
    for (const ListCase &list : cases) {
        Record record = kRecord;
        record.list = list.items;
        const Record read = *Read(Write(record));
        EXPECT_EQ(read.list.size(), list.kept);
        EXPECT_EQ(read.omitted, kRecord.omitted + list.items.size() - list.kept);
    }
}

TEST(FlatBytes, OfAListBeyondItsBoundsAreRefused)
{
    const std::string bytes = Write(kRecord);
    const size_t count = kText + sizeof(uint32_t) + kRecord.text.size();
    EXPECT_TRUE(Read(With(bytes, count, uint32_t{3})));
    for (const uint32_t wrong : {uint32_t{2}, uint32_t{4}, ~uint32_t{0}})
        EXPECT_FALSE(Read(With(bytes, count, wrong))) << wrong;
    std::string four = With(bytes, count, uint32_t{4});
    EXPECT_FALSE(Read(four + std::string(sizeof(uint32_t), '\0'))); // the fourth is whole
}

TEST(FlatBytes, OfAListMayTakeNoMoreRoomThanItsBounds)
{
    FlatWriter flat;
    std::vector<std::string> items = {"aaaaa", "bbbbb"};
    const auto describe = [](auto &to, std::string &item) { to.AddText(item, kMostText); };
    uint32_t omitted = 0;
    flat.AddList(items, {18}, &omitted, describe);
    const std::string bytes = flat.Take();
    for (const size_t most : {18, 17}) {
        FlatReader reader(bytes);
        std::vector<std::string> read;
        reader.AddList(read, {most}, &omitted, describe);
        EXPECT_EQ(reader.IsWhole(), most == 18);
    }
}

// A number of items costs nothing by itself.
TEST(FlatBytes, OfAListWhoseItemsTakeNoneAreRefused)
{
    FlatReader flat(std::string_view("\xFF\xFF\xFF\x7F\0\0\0\0", 8));
    std::vector<int> items;
    uint32_t omitted = 0;
    flat.AddList(items, {100}, &omitted, [](auto &, int &) {});
    EXPECT_FALSE(flat.IsWhole());
    EXPECT_LE(items.size(), 1U);
}

TEST(FlatBytes, ThatAreNoNumberAreRefused)
{
    const std::string bytes = Write(kRecord);
    for (const double wrong :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()})
        EXPECT_FALSE(Read(With(bytes, kReal, wrong))) << wrong;
    for (const char wrong : {'\3', '\4', '\xFF'})
        EXPECT_FALSE(Read(With(bytes, kColour, wrong))) << int{wrong};
    for (const char wrong : {'\2', '\xFF'}) // a flag is 0 or 1
        EXPECT_FALSE(Read(With(bytes, kFlag, wrong))) << int{wrong};
}

} // namespace
} // namespace vxhost
