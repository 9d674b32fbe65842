#include "plugin/input/LnStream.h"

#include <algorithm>
#include <cstring>

namespace vx
{

namespace
{

constexpr uint8_t kEndOfData[] = {'%', '%', 'E', 'O', 'F', '\n'};

int32_t ReadBytes(LineStream *stream, uint8_t *to, int32_t wanted)
{
    int32_t count = wanted;
    if (wanted > 0)
        stream->reader->read(stream->reader, kVXReadBytes, to, &count);
    return count > 0 ? count : 0;
}

} // namespace

void InitializeLineStream(LineStream *stream, StreamReader *reader, int32_t total, ProgressProc progress)
{
    stream->reader = reader;
    stream->fill = 0;
    stream->next = 0;
    stream->total = total;
    stream->bytesRead = 0;
    stream->progress = progress;
    stream->flushProc = nullptr;
    stream->flushRefcon = nullptr;
    stream->index = {};
    memset(stream->buffer, 0, sizeof stream->buffer); // whole blocks of it are indexed
    StartLine(stream, stream->buffer);
    stream->text.length = 0;
}

void SetLineStreamFlushingProc(LineStream *stream, LineStreamFlushProc proc, void *refcon)
{
    stream->flushProc = proc;
    stream->flushRefcon = refcon;
}

const uint8_t *ScanForLineEnd(const uint8_t *text, int32_t count)
{
    for (; count > 0; ++text, --count)
        if (IsLineEnd(*text))
            return text;
    return nullptr;
}

bool ReadLine(LineStream *stream)
{
    const int32_t rest = stream->fill - stream->next;
    const int32_t wanted = std::clamp(stream->total - stream->bytesRead, 0, kMaxLineRead - rest);
    if (stream->flushProc != nullptr)
        stream->flushProc(stream->flushRefcon);
    if (rest > 0)
        memmove(stream->buffer, stream->buffer + stream->next, static_cast<size_t>(rest));
    StartLine(stream, stream->buffer);
    const int32_t delivered = ReadBytes(stream, stream->buffer + rest, wanted);
    // A reader that claims more than it was asked for has written where it must not, or lies: nothing can be believed.
    if (delivered > wanted)
        return false;
    stream->fill = rest + delivered;
    stream->next = 0;
    stream->bytesRead += delivered;

    IndexText(stream->buffer, stream->fill, &stream->index);

    // The moved bytes hold no line end, so only the new ones are searched.
    if (TakeBufferedLine(stream, rest))
        return true;
    if (stream->fill <= 0) {
        StartLine(stream, kEndOfData);
        stream->text.length = sizeof kEndOfData;
        return true;
    }
    // The last line without its end, or a piece of one that is too long: on purpose the reader sees a line break.
    stream->buffer[stream->fill] = '\r';
    AddMark(&stream->index.spaces, stream->fill);
    stream->text.length = stream->fill + 1;
    stream->next = stream->fill;
    return true;
}

bool SkipToNonWhiteSpace(LineStream *stream)
{
    for (;;) {
        SkipWhiteSpace(&stream->text, &stream->text);
        if (!IsStringEmpty(&stream->text))
            return true;
        if (!RefillLineStreamText(stream))
            return false;
    }
}

} // namespace vx
