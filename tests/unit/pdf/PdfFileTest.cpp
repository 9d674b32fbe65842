#include "devices/pdf/PdfFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <set>

using namespace vxhost;
using namespace vxhost::pdf;

namespace
{

class PdfFiles : public testing::Test
{
  protected:
    ByteSink Sink()
    {
        return [this](std::span<const std::byte> part) {
            bytes_.append(reinterpret_cast<const char *>(part.data()), part.size());
            return Failure();
        };
    }
    static Failure Finish(PdfFile *file) { return file->Finish({}, {}, file->Add("<<>>")); }

    // Returns the identity of a file with one more object.
    std::string IdentityWith(std::string_view object)
    {
        bytes_.clear();
        PdfFile file(Sink(), 0);
        file.Add(object);
        EXPECT_FALSE(Finish(&file));
        const size_t at = bytes_.find("/ID[<") + 5;
        EXPECT_EQ(bytes_.substr(at, 32), bytes_.substr(at + 34, 32));
        EXPECT_EQ(bytes_.substr(at + 66, 2), ">]");
        return bytes_.substr(at, 32);
    }

    std::string bytes_;
};

TEST_F(PdfFiles, SayWhereTheirObjectsBegin)
{
    constexpr size_t kObjects = 10000; // more than are gathered
    PdfFile file(Sink(), 0);
    for (size_t i = 1; i <= kObjects; ++i)
        ASSERT_EQ(file.Add(ValueOf(static_cast<double>(i))).number, i);
    ASSERT_FALSE(Finish(&file));
    const size_t end = bytes_.rfind("startxref\n");
    const size_t table = std::strtoul(bytes_.c_str() + end + 10, nullptr, 10);
    EXPECT_EQ(bytes_.substr(end), "startxref\n" + std::to_string(table) + "\n%%EOF\n");
    const std::string head = "xref\n0 " + std::to_string(kObjects + 5) + "\n0000000000 65535 f \n";
    EXPECT_EQ(bytes_.substr(table, head.size()), head);
    constexpr size_t kRow = 20;
    for (size_t i = 1; i <= kObjects; ++i) {
        const std::string row = bytes_.substr(table + head.size() + (i - 1) * kRow, kRow);
        ASSERT_EQ(row.substr(10), " 00000 n \n");
        const std::string object = std::to_string(i) + " 0 obj\n" + std::to_string(i) + "\nendobj\n";
        ASSERT_EQ(bytes_.substr(std::strtoul(row.c_str(), nullptr, 10), object.size()), object);
    }
}

TEST_F(PdfFiles, EndALineAfterAStream)
{
    PdfFile file(Sink(), 0);
    const std::string data = "no line end", packed(100000, 'x');
    file.AddStream({}, data);
    ASSERT_FALSE(Finish(&file));
    EXPECT_NE(bytes_.find("<</Length 11>>\nstream\nno line end\nendstream\nendobj\n"), std::string::npos);
    bytes_.clear();
    PdfFile smaller(Sink(), 4);
    smaller.AddStream({}, packed);
    ASSERT_FALSE(Finish(&smaller));
    const size_t start = bytes_.find("stream\n") + 7;
    const size_t length = std::strtoul(bytes_.c_str() + bytes_.find("/Length ") + 8, nullptr, 10);
    EXPECT_LT(length, 1000U);
    EXPECT_NE(bytes_.find("/Filter/FlateDecode"), std::string::npos);
    EXPECT_EQ(bytes_.substr(start + length, 11), "\nendstream\n");
}

TEST_F(PdfFiles, HaveAnIdentityOfTheirOwn)
{
    std::set<std::string> identities;
    std::string object(100, 'a');
    for (size_t i = 0; i < object.size(); ++i) {
        object[i] = 'b';
        EXPECT_EQ(IdentityWith(object), IdentityWith(object));
        identities.insert(IdentityWith(object));
        object[i] = 'a';
        identities.insert(IdentityWith(object.substr(0, i)));
    }
    EXPECT_EQ(identities.size(), 200U);
    for (const std::string &identity : identities)
        EXPECT_EQ(identity.find_first_not_of("0123456789ABCDEF"), std::string::npos);
}

// What was shared some megabytes ago is written once more.
TEST_F(PdfFiles, ShareWhatTheyStillKnow)
{
    PdfFile file(Sink(), 0);
    const Reference first = file.Share("(a)");
    EXPECT_EQ(file.Share("(a)"), first);
    EXPECT_NE(file.Share("(b)"), first);
    const Reference stream = file.ShareStream({}, "(a)");
    EXPECT_NE(stream, first);
    EXPECT_EQ(file.ShareStream({}, "(a)"), stream);
    EXPECT_NE(file.ShareStream(Dictionary().Add("N", 1), "(a)"), stream);
    for (int i = 0; i < 1000; ++i)
        file.Share("(" + std::string(1000, 'c') + std::to_string(i) + ")");
    EXPECT_EQ(file.Share("(a)"), first);
    for (int i = 0; i < 4000; ++i)
        file.Share("(" + std::string(1000, 'd') + std::to_string(i) + ")");
    const Reference again = file.Share("(a)");
    EXPECT_NE(again, first);
    EXPECT_EQ(file.Share("(a)"), again);
}

TEST_F(PdfFiles, WriteNothingAfterAFailure)
{
    int calls = 0;
    PdfFile file(
        [&calls](std::span<const std::byte>) {
            return ++calls == 2 ? Failure{FailureKind::CannotWrite, "full", ENOSPC} : Failure();
        },
        0);
    for (int i = 0; i < 10; ++i)
        file.AddStream({}, std::string(100000, 'x'));
    const Failure failure = Finish(&file);
    EXPECT_EQ(failure.kind, FailureKind::CannotWrite);
    EXPECT_EQ(failure.error, ENOSPC);
    EXPECT_EQ(calls, 2);
}

// A place in the table has ten digits.
TEST_F(PdfFiles, RefuseToGrowBeyondTheirTable)
{
    PdfFile file([](std::span<const std::byte>) { return Failure(); }, 0);
    const std::string large(64 << 20, 'x');
    for (uint64_t written = 0; written < 10'000'000'000; written += large.size())
        file.AddStream({}, large);
    EXPECT_EQ(Finish(&file).text,
              "a PDF can be of 10 GB at most, and this one is longer: draw a part of it with --box");
}

} // namespace
