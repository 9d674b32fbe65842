#include "plugin/input/LnStream.h"

#include <algorithm>
#include <cstring>

namespace vx
{

namespace
{

constexpr uint8_t kEndOfData[] = {'%', '%', 'E', 'O', 'F', '\n'};

// Makes the line that ends with lineEnd the current text.
void TakeLine(LineStream *stream, const uint8_t *lineEnd)
{
    stream->text.length = static_cast<int32_t>(lineEnd - stream->text.text) + 1;
    stream->next += stream->text.length;
}

void StartLine(LineStream *stream, const uint8_t *text)
{
    stream->lineStart = text;
    stream->text.text = text;
}

int32_t ReadBytes(LineStream *stream, uint8_t *to, int32_t wanted)
{
    int32_t count = wanted;
    if (wanted > 0)
        stream->reader->read(stream->reader, kVXReadBytes, to, &count);
    return count > 0 ? count : 0;
}

constexpr uint64_t kOnes = 0x0101010101010101u;

// Non-zero exactly when one of the eight bytes is zero.
constexpr uint64_t ZeroBytes(uint64_t word)
{
    return (word - kOnes) & ~word & (kOnes << 7);
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
    // Eight bytes at a time: lines are found by this scan alone, so it is most of what a refill costs.
    for (; count >= 8; text += 8, count -= 8) {
        uint64_t word;
        memcpy(&word, text, sizeof word);
        if (ZeroBytes(word ^ (kOnes * '\r')) != 0 || ZeroBytes(word ^ (kOnes * '\n')) != 0)
            break;
    }
    for (; count > 0; ++text, --count)
        if (IsLineEnd(*text))
            return text;
    return nullptr;
}

bool RefillLineStreamText(LineStream *stream)
{
    const int32_t rest = stream->fill - stream->next;
    const int32_t wanted = std::clamp(stream->total - stream->bytesRead, 0, kMaxLineRead - rest);
    if (stream->progress != nullptr)
        stream->progress(stream->bytesRead, stream->total);

    StartLine(stream, stream->buffer + stream->next);
    if (const uint8_t *lineEnd = ScanForLineEnd(stream->text.text, rest)) {
        TakeLine(stream, lineEnd);
        return true;
    }

    if (stream->flushProc != nullptr)
        stream->flushProc(stream->flushRefcon);
    if (rest > 0)
        memmove(stream->buffer, stream->text.text, static_cast<size_t>(rest));
    StartLine(stream, stream->buffer);
    const int32_t delivered = ReadBytes(stream, stream->buffer + rest, wanted);
    // A reader that claims more than it was asked for has written where it must not, or lies: nothing can be believed.
    if (delivered > wanted)
        return false;
    stream->fill = rest + delivered;
    stream->next = 0;
    stream->bytesRead += delivered;

    // The moved bytes hold no line end, so only the new ones are searched.
    if (const uint8_t *lineEnd = ScanForLineEnd(stream->buffer + rest, delivered)) {
        TakeLine(stream, lineEnd);
        return true;
    }
    if (stream->fill <= 0) {
        StartLine(stream, kEndOfData);
        stream->text.length = sizeof kEndOfData;
        return true;
    }
    // The last line without its end, or a piece of one that is too long: on purpose the reader sees a line break.
    stream->buffer[stream->fill] = '\r';
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
