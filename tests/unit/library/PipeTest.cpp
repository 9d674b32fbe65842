// What passes between libvx and its helper program: the same comes out, or nothing does.
#include "devices/colour/ProfileFile.h"
#include "library/pipe/Answer.h"
#include "library/pipe/IsolatedRequest.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

IsolatedRequest SomeRequest()
{
    IsolatedRequest request;
    request.version = "9.9";
    request.caller = 4711;
    request.mustBeConfined = true;
    request.format = "pdf";
    request.options = {{"dpi", "300"}, {"profile", "ours"}};
    request.temporaryFolder = "/elsewhere";
    request.useSystemFonts = false;
    request.fontFolders = {"/a", "/b"};
    request.served = {{"Asked", "Served"}};
    request.profiles = {{"ours", std::string("\0icc", 4)}};
    return request;
}

TEST(IsolatedRequest, IsReadAsItWasWritten)
{
    for (const IsolatedRequest &request : {IsolatedRequest(), SomeRequest()}) {
        const std::optional<std::string> bytes = WriteRequest(request);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(ReadRequest(*bytes), request);
    }
}

TEST(IsolatedRequest, OfAllThatThereMayBeIsNotTooLong)
{
    IsolatedRequest request = SomeRequest();
    request.profiles = {{"ours", std::string(kMaxProfileBytes, 'x')}};
    request.served.assign(kMaxMapRows,
                          {std::string(kMaxMapLine / 2, 'a'), std::string(kMaxMapLine / 2, 'b')});
    const std::optional<std::string> bytes = WriteRequest(request);
    ASSERT_TRUE(bytes);
    EXPECT_LE(bytes->size(), kMaxRequest);
}

TEST(IsolatedRequest, ThatIsTooLongIsNotWritten)
{
    IsolatedRequest request = SomeRequest();
    request.options[0].second.assign(5000, '1');
    EXPECT_FALSE(WriteRequest(request));
    request = SomeRequest();
    request.profiles[0].second.assign(kMaxProfileBytes + 1, 'x');
    EXPECT_FALSE(WriteRequest(request));
    request = SomeRequest();
    request.fontFolders.assign(1000, std::string(4000, '/'));
    EXPECT_FALSE(WriteRequest(request));
}

Result SomeResult()
{
    Result result;
    result.fault = {FaultKind::Crashed, "signal 11", 12, true};
    result.size = 77;
    result.isRead = true;
    result.header.title = "A title";
    result.outcome.bytesRead = 5;
    result.outcome.failure = {FailureKind::TooLarge, "too large", 3};
    result.outcome.reports = {{2, "Title", "Message"}};
    result.confinement.byLandlock = true;
    result.confinement.seccompError = 38;
    return result;
}

TEST(ResultForm, IsReadAsItWasWritten)
{
    const std::string bytes = WriteResult(SomeResult());
    const std::optional<Result> result = ReadResult(bytes);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->fault.kind, FaultKind::Crashed);
    EXPECT_EQ(result->fault.text, "signal 11");
    EXPECT_EQ(result->fault.error, 12);
    EXPECT_TRUE(result->fault.isOfFontListing);
    EXPECT_EQ(result->size, 77U);
    EXPECT_TRUE(result->isRead);
    EXPECT_EQ(result->header.title, "A title");
    EXPECT_EQ(result->outcome.failure.text, "too large");
    ASSERT_EQ(result->outcome.reports.size(), 1U);
    EXPECT_EQ(result->outcome.reports[0].message, "Message");
    EXPECT_TRUE(result->confinement.byLandlock);
    EXPECT_EQ(result->confinement.seccompError, 38);
    EXPECT_EQ(WriteResult(*result), bytes);
}

// A byte that is missing, one too many, or any other in its place: it is refused, or is another result.
TEST(ResultForm, OfOtherBytesIsNoneOrAnother)
{
    const std::string bytes = WriteResult(SomeResult());
    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(ReadResult(std::string_view(bytes).substr(0, length))) << length;
    EXPECT_FALSE(ReadResult(bytes + '\0'));
    for (size_t at = 0; at < bytes.size(); ++at) {
        std::string other = bytes;
        other[at] = '\xFF';
        if (const std::optional<Result> result = ReadResult(other)) {
            EXPECT_LE(result->fault.kind, FaultKind::NotConfined);
            EXPECT_LE(WriteResult(*result).size(), kMaxAnswer);
        }
    }
}

TEST(ResultForm, OfMoreThanThereMayBeSaysHowManyMore)
{
    Result result = SomeResult();
    result.outcome.reports.assign(100000, {2, "Title", "A message"});
    const std::string bytes = WriteResult(result);
    EXPECT_LE(bytes.size(), kMaxAnswer);
    const std::optional<Result> read = ReadResult(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->outcome.reports.size() + read->omitted.reports, 100000U);
    EXPECT_GT(read->omitted.reports, 0U);
}

} // namespace
} // namespace vxhost
