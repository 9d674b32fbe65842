// Documents that come out of archives: whole, in part, or not at all.
#include "host/reading/Unpacking.h"

#include "tests/support/Packed.h"
#include "tests/support/Wrapped.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vxhost
{
namespace
{

using namespace std::string_literals;
using vxtest::AppleRecord;
using vxtest::Gzip;
using vxtest::MacBinary;
using vxtest::Xz;

const std::string kText = "%!PS-Tavro-3.0\n%%EOF\n";

struct Found {
    std::string names, text, damage, refusal;
    UnpackLimit limit = UnpackLimit::None;
    bool hasDocument = false;
};

Found Open(const std::string &file, const UnpackLimits &limits = {})
{
    std::string error;
    const auto document = Document::FromMemory(std::as_bytes(std::span(file)), &error);
    const std::unique_ptr<const Unpacked> unpacked = Unpack(*document, limits, nullptr);
    Found found = {unpacked->names, "", unpacked->damage, unpacked->refusal, unpacked->limit, false};
    if (unpacked->document != nullptr) {
        const std::span<const std::byte> bytes = unpacked->document->Bytes();
        found.text.assign(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        found.hasDocument = true;
    }
    return found;
}

void ExpectWhole(const std::string &file, std::string_view names, const std::string &text = kText)
{
    const Found found = Open(file);
    EXPECT_EQ(found.names, names);
    EXPECT_EQ(found.text, text);
    EXPECT_EQ(found.damage, "");
    EXPECT_EQ(found.refusal, "");
    EXPECT_EQ(found.limit, UnpackLimit::None);
}

// Text that does not get much shorter.
std::string Noise(size_t size)
{
    uint32_t state = 7;
    std::string text(size, '\0');
    for (char &character : text) {
        state = state * 1664525 + 1013904223;
        character = static_cast<char>(state >> 24);
    }
    return text;
}

TEST(Unpacking, LeavesWhatIsNotPacked)
{
    for (const std::string &file : {""s, "\x1F\x8B"s, kText, "\xFD"s + "7zXZ"s, "BZh9"s}) {
        EXPECT_FALSE(IsPacked(std::as_bytes(std::span(file))));
        const Found found = Open(file);
        EXPECT_EQ(found.names, "");
        EXPECT_EQ(found.refusal, "");
        EXPECT_FALSE(found.hasDocument);
    }
}

TEST(Unpacking, TakesGzipAndXz)
{
    for (const std::string &text : {kText, std::string(5000000, 'x'), Noise(3000000)}) {
        const std::string packed = Gzip(text);
        EXPECT_TRUE(IsPacked(std::as_bytes(std::span(packed))));
        ExpectWhole(Gzip(text), "gzip", text);
        ExpectWhole(Xz(text), "xz", text);
    }
}

TEST(Unpacking, TakesAllMembersAndStreams)
{
    ExpectWhole(Gzip(kText.substr(0, 7)) + Gzip("") + Gzip(kText.substr(7)), "gzip");
    ExpectWhole(Xz(kText.substr(0, 7)) + std::string(9, '\0') + Xz(kText.substr(7)), "xz");
}

TEST(Unpacking, PassesOverNulsAtTheEnd)
{
    ExpectWhole(Gzip(kText) + std::string(513, '\0'), "gzip");
    ExpectWhole(Xz(kText) + std::string(512, '\0'), "xz");
}

TEST(Unpacking, OpensArchivesInArchives)
{
    ExpectWhole(Gzip(Xz(kText)), "gzip, xz");
    ExpectWhole(Xz(Gzip(Gzip(kText))), "xz, gzip, gzip");
    ExpectWhole(Gzip(Gzip(Gzip(Gzip(kText)))), "gzip, gzip, gzip", Gzip(kText)); // no more than three
}

TEST(Unpacking, OpensWhatIsAroundAnArchive)
{
    const std::string mail = "From: somebody\r\n\r\n";
    ExpectWhole(MacBinary(Gzip(kText)), "MacBinary, gzip");
    ExpectWhole(AppleRecord(0x00051600, Xz(kText)), "AppleSingle, xz");
    ExpectWhole(AppleRecord(0x00051607, MacBinary(Gzip(kText))), "AppleDouble, MacBinary, gzip");
    ExpectWhole(mail + Gzip(kText), "other lines before it, gzip");
    ExpectWhole(MacBinary(Gzip(mail + Xz(kText))), "MacBinary, gzip, other lines before it, xz");
    // The record around the drawing itself is not around packed data, and stays.
    ExpectWhole(MacBinary(Gzip(MacBinary(kText))), "MacBinary, gzip", MacBinary(kText));
}

TEST(Unpacking, GoesNoDeeperThanItMay)
{
    const auto pack = [](const std::string &text) { return MacBinary(Gzip(text)); };
    ExpectWhole(pack(pack(pack(kText))), "MacBinary, gzip, MacBinary, gzip, MacBinary, gzip");
    ExpectWhole(pack(pack(pack(pack(kText)))), "MacBinary, gzip, MacBinary, gzip, MacBinary, gzip",
                pack(kText));
    const auto wrap = [](const std::string &text) { return MacBinary(MacBinary(text)); };
    EXPECT_FALSE(Open(wrap(wrap(Gzip(kText)))).hasDocument); // three records at most
}

TEST(Unpacking, LeavesADrawingThatHoldsAnArchive)
{
    const std::string drawing = "%!PS-Tavro-3.0\n%%BeginBinary: 40\n" + Gzip(kText);
    EXPECT_FALSE(Open(drawing).hasDocument);
    EXPECT_FALSE(Open(MacBinary(drawing)).hasDocument);
    EXPECT_FALSE(Open("From: a\n\n" + drawing).hasDocument);
}

TEST(Unpacking, KeepsWhatCameOutOfACutArchive)
{
    const std::string text = Noise(3000000);
    for (const auto &[pack, name] : {std::pair{&Gzip, "gzip"s}, std::pair{&Xz, "xz"s}}) {
        const std::string packed = pack(text);
        const Found found = Open(packed.substr(0, packed.size() / 2));
        EXPECT_EQ(found.damage, "the " + name + " data around it are cut short");
        EXPECT_GT(found.text.size(), text.size() / 3);
        EXPECT_TRUE(text.starts_with(found.text));
        EXPECT_EQ(Open(packed.substr(0, packed.size() - 1)).text, text);
        EXPECT_NE(Open(packed.substr(0, packed.size() - 1)).damage, "");
    }
}

TEST(Unpacking, TellsOfDamage)
{
    const std::string text = Noise(3000000);
    std::string gzip = Gzip(text);
    gzip.replace(gzip.size() - 8, 4, "sums");
    EXPECT_EQ(Open(gzip).damage, "the gzip data around it are damaged");
    EXPECT_EQ(Open(gzip).text, text);
    std::string xz = Xz(text);
    xz[xz.size() / 2] = static_cast<char>(xz[xz.size() / 2] + 1);
    EXPECT_EQ(Open(xz).damage, "the xz data around it are damaged");
    EXPECT_FALSE(Open(xz).text.empty());
    // The outer one is told of, and what came out of it is unpacked as far as it goes.
    const std::string inside = Gzip(Xz(text));
    EXPECT_EQ(Open(inside.substr(0, inside.size() / 2)).damage, "the gzip data around it are cut short");
}

TEST(Unpacking, TellsOfOtherBytesBehind)
{
    const Found gzip = Open(Gzip(kText) + "hello");
    EXPECT_EQ(gzip.damage, "the gzip data around it are followed by other bytes");
    EXPECT_EQ(gzip.text, kText);
    const Found xz = Open(Xz(kText) + "hello");
    EXPECT_EQ(xz.damage, "the xz data around it are followed by other bytes");
    EXPECT_EQ(xz.text, kText);
}

TEST(Unpacking, SaysWhyNothingCameOut)
{
    for (const auto &[pack, name] : {std::pair{&Gzip, "gzip"s}, std::pair{&Xz, "xz"s}}) {
        const Found cut = Open(pack(kText).substr(0, 9));
        EXPECT_FALSE(cut.hasDocument);
        EXPECT_EQ(cut.refusal,
                  "the " + name +
                      " data around it are cut short, nothing came out of them: get a whole copy");
        EXPECT_EQ(Open(pack("")).refusal, "the " + name + " data have nothing in them: get a whole copy");
        std::string damaged = pack(kText);
        damaged[name == "xz" ? 7 : 3] = '\xFF'; // its flags
        EXPECT_EQ(Open(damaged).refusal,
                  "the " + name + " data around it are damaged, nothing came out of them: get a whole copy");
    }
}

TEST(Unpacking, AnyCutIsTold)
{
    for (const auto &pack : {&Gzip, &Xz}) {
        const std::string packed = pack(kText);
        for (size_t length = 10; length < packed.size(); ++length) {
            const Found found = Open(packed.substr(0, length));
            EXPECT_NE(found.damage.empty(), found.refusal.empty()) << length;
            EXPECT_TRUE(kText.starts_with(found.text)) << length;
        }
    }
}

TEST(Unpacking, KeepsToItsLimits)
{
    const std::string text(3000000, 'x');
    for (const std::string &packed : {Gzip(text), Xz(text), Gzip(Xz(text))}) {
        const size_t memory = 40000000; // an xz stream says how much it needs besides
        EXPECT_EQ(Open(packed, {memory, text.size()}).text, text);
        const Found tooLong = Open(packed, {memory, text.size() - 1});
        EXPECT_EQ(tooLong.limit, UnpackLimit::Length);
        EXPECT_FALSE(tooLong.hasDocument);
        EXPECT_EQ(Open(packed, {text.size() - 1, memory}).limit, UnpackLimit::Memory);
    }
    EXPECT_EQ(Open(Gzip(text), {text.size(), text.size()}).text, text);
    EXPECT_EQ(Open(Xz(kText), {1000, 1000}).limit, UnpackLimit::Memory);
}

TEST(Unpacking, CountsAllThatItHolds)
{
    const std::string text = Noise(3000000), inside = Gzip(text);
    const size_t needed = inside.size() + text.size();
    for (const std::string &packed : {Gzip(inside), MacBinary(Gzip("\n" + inside))}) {
        EXPECT_EQ(Open(packed, {needed + 1, needed}).text, text);
        EXPECT_EQ(Open(packed, {needed - 1, needed}).limit, UnpackLimit::Memory);
    }
}

TEST(Unpacking, CanBeEnded)
{
    const std::string packed = Gzip(std::string(5000000, 'x'));
    std::string error;
    const auto document = Document::FromMemory(std::as_bytes(std::span(packed)), &error);
    int steps = 0;
    EXPECT_THROW((void)Unpack(*document, {},
                              [&steps] {
                                  if (++steps == 3)
                                      throw std::runtime_error("enough");
                              }),
                 std::runtime_error);
    EXPECT_EQ(steps, 3);
}

} // namespace
} // namespace vxhost
