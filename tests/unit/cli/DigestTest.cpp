// Digests: those that the standard gives as examples, of bytes and of files.
#include "cli/options/Digest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vxhost
{
namespace
{

constexpr const char *kOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char *kOfMillion = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(Digest, IsThatOfTheStandard)
{
    EXPECT_EQ(DigestOf("abc"), kOfAbc);
    EXPECT_EQ(DigestOf(std::string(1000000, 'a')), kOfMillion);
    EXPECT_EQ(ShortDigestOf("abc"), 0xba7816bf8f01cfeaU);
}

TEST(Digest, ReadsAFileToItsEnd)
{
    const std::string path = (std::filesystem::path(testing::TempDir()) / "digest").string();
    std::ofstream(path) << std::string(1000000, 'a');
    const FileDigest found = DigestOfFile(path);
    EXPECT_EQ(found.digest, kOfMillion);
    EXPECT_EQ(found.bytes, 1000000U);
    EXPECT_EQ(found.error, "");
    std::filesystem::remove(path);
    EXPECT_EQ(DigestOfFile(path).error, "no such file: check the name");
    EXPECT_EQ(DigestOfFile(path).digest, "");
    EXPECT_NE(DigestOfFile(testing::TempDir()).error, "");
}

} // namespace
} // namespace vxhost
