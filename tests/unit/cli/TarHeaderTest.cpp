// Headers of members, read again by the library that all of them are for.
#include "cli/archive/TarHeader.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vxhost
{
namespace
{

constexpr uint64_t kGiB = uint64_t{1} << 30;

struct Read {
    std::string name;
    uint64_t size = 0;
    int64_t at = 0;
};

// Takes the tar's bytes as far as they go: there are as many as a header has.
Read ReadHeader(const std::string &header)
{
    const std::unique_ptr<archive, int (*)(archive *)> tar(archive_read_new(), archive_read_free);
    archive_read_support_format_tar(tar.get());
    archive_entry *entry = nullptr;
    EXPECT_EQ(archive_read_open_memory(tar.get(), header.data(), header.size()), ARCHIVE_OK);
    EXPECT_EQ(archive_read_next_header(tar.get(), &entry), ARCHIVE_OK) << archive_error_string(tar.get());
    EXPECT_EQ(archive_read_header_position(tar.get()), 0);
    return {archive_entry_pathname(entry), static_cast<uint64_t>(archive_entry_size(entry)),
            archive_entry_mtime(entry)};
}

TEST(TarHeader, IsABlockWhereThatHasRoom)
{
    const std::string header = TarHeaderOf("a/b.png", 17, 86400);
    EXPECT_EQ(header.size(), kTarBlock);
    const Read read = ReadHeader(header);
    EXPECT_EQ(read.name, "a/b.png");
    EXPECT_EQ(read.size, 17U);
    EXPECT_EQ(read.at, 86400);
    EXPECT_EQ(TarHeaderOf("a/b.png", 17, 86400), header);
}

TEST(TarHeader, TakesNamesAndSizesOfAnyLength)
{
    const std::string name = std::string(200, 'x') + "/" + std::string(200, 'y');
    for (const uint64_t size : {uint64_t{0}, 8 * kGiB - 1, 8 * kGiB, 9000 * kGiB}) {
        for (const std::string &one : {std::string("short"), name}) {
            const std::string header = TarHeaderOf(one, size, 0);
            EXPECT_EQ(header.size() % kTarBlock, 0U);
            const Read read = ReadHeader(header);
            EXPECT_EQ(read.name, one);
            EXPECT_EQ(read.size, size);
        }
    }
}

TEST(TarHeader, PadsToWholeBlocks)
{
    EXPECT_EQ(TarPaddingOf(0), 0U);
    EXPECT_EQ(TarPaddingOf(1), kTarBlock - 1);
    EXPECT_EQ(TarPaddingOf(kTarBlock), 0U);
    EXPECT_EQ(TarPaddingOf(9 * kGiB + 511), 1U);
}

} // namespace
} // namespace vxhost
