// Whatever the bytes and whatever the memory: a parse ends with a listed code, gives everything back and leaves
// the host's table as it found it.
#include "tests/golden/Documents.h"
#include "tests/golden/Parses.h"
#include "tests/golden/Random.h"
#include "tests/support/RecordingHost.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace vxtest
{
namespace
{

using GoldenMemory = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, GoldenMemory, testing::ValuesIn(GoldenDocuments()), DocumentName());

// Runs with each allocation failing in turn: that one alone, or that one and all after it.
void FailEachAllocation(const std::string &bytes, int RecordingHost::*howToFail)
{
    RecordingHost whole;
    ParseSoundly(&whole, bytes);
    for (int failing = 1; failing <= whole.allocations; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing) + " fails");
        RecordingHost host;
        host.*howToFail = failing;
        ParseSoundly(&host, bytes);
    }
}

TEST_P(GoldenMemory, MayFailOnceAtAnyAllocation)
{
    FailEachAllocation(ReadBytes(GetParam().path), &RecordingHost::failAllocation);
}

TEST_P(GoldenMemory, MayEndAtAnyAllocation)
{
    FailEachAllocation(ReadBytes(GetParam().path), &RecordingHost::failFromAllocation);
}

using Sample = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, Sample, testing::ValuesIn(SmallSamples()), DocumentName());

TEST_P(Sample, MayEndAnywhere)
{
    const std::string bytes = ReadBytes(GetParam().path);
    RecordingHost whole;
    EXPECT_EQ(ParseSoundly(&whole, bytes), kVXOk);
    for (size_t length = 0; length < bytes.size() && !HasFailure(); ++length) {
        SCOPED_TRACE("cut after " + std::to_string(length) + " bytes");
        RecordingHost host;
        ParseSoundly(&host, bytes.substr(0, length));
    }
}

TEST_P(Sample, MayFailAtAnyAllocation)
{
    FailEachAllocation(ReadBytes(GetParam().path), &RecordingHost::failAllocation);
}

// Everything that means something somewhere. First the words that may stand anywhere in a line.
constexpr const char *kWords = "0 1 -1 0.5 32767 -40000 99999999999 1e5 . + "
                               "m l L c C v V y Y h H U u N n f F s S b B W q Q Mb MB *u *U *w *W * "
                               "w j J M d A D i g G k K x X p P O R ` ~ E Lb LB Ln XX abc "
                               "T Z a e o r t z To TO Tp TP Tf Tx Tj TS T~ T- T* T+ Tc Tw Ts Tk Tt Tz Tl Ta "
                               "TA Tr Tm TM Td Te TR TZ Tv TV Ty "
                               "Bb BB Bg Bc Bd BD Bh Bm Bs "
                               "(text) (a\\)b\\101) (open ) <4865> <4 > [ ] { } /Name //Name / %x";

// Then the lines.
constexpr const char *kLines =
    "%_Bd\n%_Bs\n%_BD\n%_Mb\n%%EndSetup\n%VX3_BeginEncoding: A B\n%VX3_EndEncoding\n%VX5_BeginGradient: (a)\n"
    "%%BeginBinary: 1\n%%EndBinary\n%VX3_BeginCrops\n%VX5_BeginPlace\n%VX5_EndPlace\n%%PageTrailer\n%%EOF";

std::vector<std::string> Split(const char *text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

const char *const kHeaders[] = {
    "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 9 9\n%VX5_FileFormat 3\n%%EndComments\n%%BeginSetup\n",
    "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 9 9\n%VX5_FileFormat 3\n%%EndComments\n%%BeginSetup\n%%EndSetup\n",
    ("%!PS-Tavro-2.0\r%%BoundingBox: 0 0 9 9\r%%DocumentProcSets:Tavro_Vellumcraft_ProcSet 2.0 0\r"
     "%%EndComments\r%%EndSetup\r"),
};

// Words and lines in any order, with now and then operators that fit, so that parses get somewhere.
std::string MakeBody(Random *random)
{
    static const std::vector<std::string> words = Split(kWords, ' '), lines = Split(kLines, '\n');
    std::string body;
    for (size_t count = random->Below(120); count > 0; --count) {
        switch (random->Below(8)) {
        case 0:
        case 1:
            body += "0.5 g 1 2 m 3 4 l 5 6 7 8 v f\n";
            break;
        case 2:
            body += '\n' + lines[random->Below(lines.size())] + '\n';
            break;
        default:
            body += words[random->Below(words.size())] + (random->Below(4) == 0 ? '\r' : ' ');
            break;
        }
    }
    return body;
}

constexpr uint32_t kSeeds = 3000;

TEST(RandomDocuments, OfKnownWordsEndSoundly)
{
    for (uint32_t seed = 0; seed < kSeeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RecordingHost host;
        host.stopAtReport = random.Below(8) == 0;
        ParseSoundly(&host, kHeaders[random.Below(std::size(kHeaders))] + MakeBody(&random));
    }
}

TEST(RandomDocuments, OfAnyBytesEndSoundly)
{
    for (uint32_t seed = 0; seed < kSeeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        std::string bytes = kHeaders[random.Below(std::size(kHeaders))];
        for (size_t count = random.Below(1500); count > 0; --count)
            bytes += static_cast<char>(random.Below(256));
        RecordingHost host;
        ParseSoundly(&host, bytes);
    }
}

TEST(RandomDocuments, WithBytesChangedEndSoundly)
{
    std::vector<std::string> documents;
    for (const TestDocument &document : GoldenDocuments())
        documents.push_back(ReadBytes(document.path));
    for (uint32_t seed = 0; seed < kSeeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        std::string bytes = documents[random.Below(documents.size())];
        for (size_t changes = 1 + random.Below(6); changes > 0; --changes)
            bytes[random.Below(bytes.size())] = static_cast<char>(random.Below(256));
        RecordingHost host;
        ParseSoundly(&host, bytes);
    }
}

// The binary wrapper's two numbers, at and over every edge.
TEST(RandomDocuments, WithAnyWrapperEndSoundly)
{
    const std::string wrapped = ReadBytes(VX_SOURCE_DIR "/samples/binary-wrapper.vx");
    constexpr uint32_t kNumbers[] = {0,          1,          11,         12,         30,        54,
                                     0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 0x10000000};
    for (const uint32_t start : kNumbers) {
        for (const uint32_t length : kNumbers) {
            SCOPED_TRACE("section of " + std::to_string(length) + " at " + std::to_string(start));
            std::string bytes = wrapped;
            for (size_t i = 0; i < 4; ++i) {
                bytes[4 + i] = static_cast<char>(start >> (8 * i) & 255);
                bytes[8 + i] = static_cast<char>(length >> (8 * i) & 255);
            }
            RecordingHost host;
            ParseSoundly(&host, bytes);
        }
    }
}

} // namespace
} // namespace vxtest
