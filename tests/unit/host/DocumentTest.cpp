// Where a document's bytes come from, and what is refused.
#include "host/Document.h"

#include "host/DocumentReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace vxhost
{
namespace
{

namespace fs = std::filesystem;

// A folder of its own for each test.
class DocumentTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "vx-document-XXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string Write(const std::string &name, std::string_view bytes)
    {
        const fs::path path = folder_ / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

    fs::path folder_;
    std::string error_;
};

std::string Text(const Document &document)
{
    const auto bytes = document.Bytes();
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

TEST_F(DocumentTest, AFileIsItsBytes)
{
    const auto document = Document::Open(Write("a.vx", std::string("a\0b\r\n", 5)), &error_);
    ASSERT_NE(document, nullptr) << error_;
    EXPECT_EQ(Text(*document), std::string("a\0b\r\n", 5));
}

TEST_F(DocumentTest, AnEmptyFileIsAnEmptyDocument)
{
    const auto document = Document::Open(Write("a.vx", ""), &error_);
    ASSERT_NE(document, nullptr) << error_;
    EXPECT_TRUE(document->Bytes().empty());
}

TEST_F(DocumentTest, AMissingFileIsAnError)
{
    EXPECT_EQ(Document::Open((folder_ / "none.vx").string(), &error_), nullptr);
    EXPECT_EQ(error_, "no such file: check the name");
}

TEST_F(DocumentTest, ADirectoryIsAnError)
{
    EXPECT_EQ(Document::Open(folder_.string(), &error_), nullptr);
    EXPECT_EQ(error_, "is a directory: name a file in it");
}

TEST_F(DocumentTest, AFileThatMayNotBeReadIsAnError)
{
    const std::string path = Write("a.vx", "a");
    fs::permissions(path, fs::perms::none);
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may read every file";
    EXPECT_EQ(Document::Open(path, &error_), nullptr);
    EXPECT_EQ(error_, "cannot be opened, permission denied");
}

TEST_F(DocumentTest, ATooLongFileIsAnError)
{
    const std::string path = Write("a.vx", "");
    fs::resize_file(path, uintmax_t{1} << 31); // sparse
    EXPECT_EQ(Document::Open(path, &error_), nullptr);
    EXPECT_NE(error_.find("2147483647"), std::string::npos) << error_;
    fs::resize_file(path, (uintmax_t{1} << 31) - 1);
    EXPECT_NE(Document::Open(path, &error_), nullptr) << "one byte less is the most";
}

TEST_F(DocumentTest, ANamedPipeIsReadToItsEnd)
{
    const std::string path = (folder_ / "pipe").string();
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const std::string bytes(300000, 'p');
    std::thread writer([&] { std::ofstream(path, std::ios::binary) << bytes; });
    const auto document = Document::Open(path, &error_);
    writer.join();
    ASSERT_NE(document, nullptr) << error_;
    EXPECT_EQ(Text(*document), bytes);
}

// What may be opened.
TEST_F(DocumentTest, FilesAloneMayBeAskedFor)
{
    const std::string pipe = (folder_ / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const DocumentLimits files = {FileKinds::Regular, {}};
    EXPECT_EQ(Document::Open(pipe, &error_, files), nullptr);
    EXPECT_EQ(error_, "is a pipe, not a file: name a file");
    EXPECT_EQ(Document::Open("/dev/zero", &error_, files), nullptr);
    EXPECT_EQ(error_, "is a device, not a file: name a file");
    EXPECT_NE(Document::Open(Write("a.vx", "a"), &error_, files), nullptr);
}

TEST_F(DocumentTest, APipeWithoutAWriterTakesItsTime)
{
    const std::string pipe = (folder_ / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ReadEnd end = ReadEnd::Whole;
    EXPECT_EQ(Document::Open(pipe, &error_, {FileKinds::All, {1000, 0.05}}, &end), nullptr);
    EXPECT_EQ(error_, "");
    EXPECT_EQ(end, ReadEnd::TooLate);
}

TEST_F(DocumentTest, ADeviceWithoutEndTakesItsBytes)
{
    ReadEnd end = ReadEnd::Whole;
    EXPECT_EQ(Document::Open("/dev/zero", &error_, {FileKinds::All, {100000, 0}}, &end), nullptr);
    EXPECT_EQ(error_, "");
    EXPECT_EQ(end, ReadEnd::TooLong);
}

TEST_F(DocumentTest, AsManyBytesAsMayBeReadAreADocument)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const Descriptor reader(ends[0]);
    ASSERT_EQ(::write(ends[1], "12345", 5), 5);
    ASSERT_EQ(::close(ends[1]), 0);
    const auto document = Document::FromDescriptor(reader.Get(), &error_, {5, 0});
    ASSERT_NE(document, nullptr) << error_;
    EXPECT_EQ(Text(*document), "12345");
    EXPECT_FALSE(document->HasChanged());
}

TEST_F(DocumentTest, AFileThatIsWrittenToOrCutHasChanged)
{
    const std::string path = Write("a.vx", "a drawing");
    const auto open = [&] { return Document::Open(path, &error_); };
    auto document = open();
    EXPECT_FALSE(document->HasChanged());
    fs::last_write_time(path, fs::last_write_time(path) + std::chrono::nanoseconds(1));
    EXPECT_TRUE(document->HasChanged());
    document = open();
    const auto before = fs::last_write_time(path);
    fs::resize_file(path, 3);
    fs::last_write_time(path, before);
    EXPECT_TRUE(document->HasChanged());
    document = open();
    fs::rename(path, path + ".old"); // another file takes its place, this one stays as it is
    Write("a.vx", "another drawing");
    EXPECT_FALSE(document->HasChanged());
}

TEST_F(DocumentTest, ADescriptorStartsWhereItStands)
{
    const std::string path = Write("a.vx", "skipped, kept");
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(::lseek(descriptor, 9, SEEK_SET), 9);
    const auto document = Document::FromDescriptor(descriptor, &error_);
    EXPECT_EQ(::close(descriptor), 0) << "it stays the caller's";
    ASSERT_NE(document, nullptr) << error_;
    EXPECT_EQ(Text(*document), "kept");
}

TEST_F(DocumentTest, ADescriptorThatIsNoneIsAnError)
{
    EXPECT_EQ(Document::FromDescriptor(-1, &error_), nullptr);
    EXPECT_EQ(error_, "cannot be read, bad file descriptor");
}

TEST_F(DocumentTest, MemoryIsBorrowed)
{
    const std::string_view bytes = "in memory";
    const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error_);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(static_cast<const void *>(document->Bytes().data()), bytes.data());
    EXPECT_EQ(Text(*document), bytes);
}

TEST_F(DocumentTest, WhatIsLeftComesBackWhenItIsReadAgain)
{
    std::string text(100000, 'a');
    text.back() = 'z';
    const auto document = Document::Open(Write("a.vx", text), &error_);
    ASSERT_NE(document, nullptr) << error_;
    document->Leave(0, text.size());
    EXPECT_EQ(Text(*document), text);
    document->Leave(5000, 4000); // leaves nothing
    const auto borrowed = Document::FromMemory(std::as_bytes(std::span(text)), &error_);
    borrowed->Leave(0, text.size()); // its owner's memory stays
    EXPECT_EQ(Text(*borrowed), text);
}

// How many bytes of mapped files are in memory.
size_t ResidentBytes()
{
    size_t total = 0, resident = 0, shared = 0;
    std::ifstream("/proc/self/statm") >> total >> resident >> shared;
    return shared * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

TEST_F(DocumentTest, MemoryDoesNotFollowTheDocumentsLength)
{
    constexpr size_t kLength = size_t{64} << 20, kMost = size_t{8} << 20;
    const std::string path = Write("long.vx", "x");
    fs::resize_file(path, kLength);
    const auto document = Document::Open(path, &error_);
    ASSERT_NE(document, nullptr) << error_;
    const size_t before = ResidentBytes();
    DocumentReader reader(*document);
    std::array<char, 500> buffer;
    const auto readAll = [&] {
        size_t total = 0, most = 0;
        for (int32_t count = 500; count > 0; total += static_cast<size_t>(count)) {
            count = 500;
            reader.Stream()->read(reader.Stream(), kVXReadBytes, buffer.data(), &count);
            if (total % (size_t{1} << 20) < buffer.size())
                most = std::max(most, ResidentBytes());
        }
        EXPECT_EQ(total, kLength);
        EXPECT_LT(most, before + kMost);
    };
    readAll();
    int32_t start = 0;
    reader.Stream()->read(reader.Stream(), kVXSetPosition, nullptr, &start);
    readAll();
}

class ReaderTest : public testing::Test
{
  protected:
    // Returns what a read of so many bytes delivers.
    std::string Read(int32_t wanted)
    {
        std::array<char, 64> buffer = {};
        int32_t count = wanted;
        reader_.Stream()->read(reader_.Stream(), kVXReadBytes, buffer.data(), &count);
        return {buffer.data(), static_cast<size_t>(count)};
    }
    void SetPosition(int32_t position)
    {
        reader_.Stream()->read(reader_.Stream(), kVXSetPosition, nullptr, &position);
    }

    std::string_view bytes_ = "0123456789";
    std::string error_;
    const std::unique_ptr<Document> document_ =
        Document::FromMemory(std::as_bytes(std::span(bytes_)), &error_);
    DocumentReader reader_{*document_};
};

TEST_F(ReaderTest, ReadsForwardToTheEnd)
{
    EXPECT_EQ(Read(4), "0123");
    EXPECT_EQ(Read(4), "4567");
    EXPECT_EQ(Read(4), "89");
    EXPECT_EQ(Read(4), "");
    EXPECT_EQ(reader_.Furthest(), 10u);
}

TEST_F(ReaderTest, KeepsItsPositionWithinTheDocument)
{
    SetPosition(8);
    EXPECT_EQ(Read(9), "89");
    SetPosition(-5);
    EXPECT_EQ(Read(1), "0");
    SetPosition(11);
    EXPECT_EQ(Read(1), "");
    SetPosition(INT32_MIN);
    EXPECT_EQ(Read(2), "01");
    EXPECT_EQ(reader_.Furthest(), 10u);
}

TEST_F(ReaderTest, NothingIsReadForCountsBelowOne)
{
    EXPECT_EQ(Read(0), "");
    int32_t count = -3;
    reader_.Stream()->read(reader_.Stream(), kVXReadBytes, nullptr, &count);
    EXPECT_EQ(count, 0);
}

TEST_F(ReaderTest, OtherRequestsChangeNothing)
{
    int32_t count = 5;
    EXPECT_EQ(reader_.Stream()->read(reader_.Stream(), 1, nullptr, &count), 0);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(Read(2), "01");
}

} // namespace
} // namespace vxhost
