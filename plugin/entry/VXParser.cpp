#include "plugin/entry/VXParser.h"

#include "plugin/body/Body.h"
#include "plugin/body/HostTable.h"
#include "plugin/entry/AboutBox.h"
#include "plugin/header/Header.h"
#include "plugin/setup/VXSetUp.h"

#include <cstring>
#include <iterator>

namespace vx
{

namespace
{

using RequestHandler = Result (*)(HostCallRecord *record);

// Indexed by selector.
constexpr RequestHandler kHandlers[] = {
    DoAbout, DoCanRead, DoOpen, DoOpen, DoGetStreamInfo, DoParseStream, DoClose,
};
static_assert(std::size(kHandlers) == kVXClose + 1);

constexpr int32_t kWrapperHeaderSize = 12;
constexpr uint8_t kWrapperSignature[] = {0xC5, 0xD0, 0xD3, 0xC6};

// The wrapper's numbers are little-endian whatever the machine.
uint32_t LittleEndianWord(const uint8_t *bytes)
{
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

void SetPosition(StreamReader *reader, int32_t position)
{
    reader->read(reader, kVXSetPosition, nullptr, &position);
}

// The length of the PostScript section, never past the end of the stream.
int32_t ClampSection(int32_t start, int32_t length, int32_t streamLength)
{
    const int64_t end = int64_t{start} + length;
    if (end <= streamLength)
        return length;
    const int64_t left = int64_t{streamLength} - start;
    if (left < 0)
        return 0;
    return left > INT32_MAX ? INT32_MAX : static_cast<int32_t>(left);
}

} // namespace

Result DoCanRead(HostCallRecord *record)
{
    return CheckZRKProcs(record->procs) ? DoGetStreamInfo(record) : kParserBadProcs;
}

Result DoOpen(HostCallRecord *record)
{
    return CheckZRKProcs(record->procs) ? kOk : kParserBadProcs;
}

Result DoGetStreamInfo(HostCallRecord *record)
{
    LineStream stream;
    Result result = SetUpLineStream(&stream, record->reader, record->streamLength, nullptr);
    if (result != kOk)
        return result;
    Fixed box[4] = {};
    uint8_t monochrome = 0;
    FileVersion version = 0;
    result = ParseHeader(&stream, box, &monochrome, &version);
    if (result != kOk)
        return result;
    memcpy(record->boundingBox, box, sizeof record->boundingBox);
    record->monochrome = monochrome;
    return kOk;
}

Result DoParseStream(HostCallRecord *record)
{
    LineStream stream;
    const Result result = SetUpLineStream(&stream, record->reader, record->streamLength, record->progress);
    return result != kOk ? result : ParseLineStream(&stream, record);
}

Result DoClose(HostCallRecord * /*record*/)
{
    return kOk;
}

Result SetUpLineStream(LineStream *stream, StreamReader *reader, int32_t length, ProgressProc progress)
{
    uint8_t header[kWrapperHeaderSize];
    int32_t count = kWrapperHeaderSize;
    SetPosition(reader, 0);
    reader->read(reader, kVXReadBytes, header, &count);
    if (count != kWrapperHeaderSize)
        return kParserBadFormat;
    int32_t start = 0;
    if (memcmp(header, kWrapperSignature, sizeof kWrapperSignature) == 0) {
        start = static_cast<int32_t>(LittleEndianWord(header + 4));
        length = ClampSection(start, static_cast<int32_t>(LittleEndianWord(header + 8)), length);
    }
    SetPosition(reader, start);
    InitializeLineStream(stream, reader, length, progress);
    return kOk;
}

Result ParseLineStream(LineStream *stream, HostCallRecord *record)
{
    Fixed box[4] = {};
    uint8_t monochrome = 0;
    FileVersion version = 0;
    Result result = ParseHeader(stream, box, &monochrome, &version);
    if (result != kOk)
        return result;
    result = ParseSetUp(stream, record, version);
    if (result != kOk)
        return result;
    result = ParseBody(stream, record, version);
    TerminateSetUp(record);
    return result;
}

} // namespace vx

void VXParserMain(int32_t selector, HostCallRecord *record, void * /*data*/, int16_t *result)
{
    *result = vx::kOk;
    // Only the low half counts; negative selectors are out of range too.
    const auto request = static_cast<uint16_t>(selector);
    if (request > kVXClose) {
        *result = vx::kParserBadSelector;
        return;
    }
    *result = vx::kHandlers[request](record);
}
