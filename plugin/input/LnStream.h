// Line stream: the host's forward-only bytes as lines, held in one small buffer.
//
// The current text is the rest of the current line; readers shorten it from the front and ask for the next line
// when it is used up. CR and LF each end a line, so CR LF ends two: the second is a lone LF, which is white space
// and so never seen. At the end of the data every line reads "%%EOF". Nothing is allocated.
#pragma once

#include "plugin/input/BigStrs.h"
#include "plugin/input/TextIndex.h"

#include <vx/HostCall.h>

namespace vx
{

// One byte is kept free for a line end that the stream adds itself.
constexpr int32_t kLineBufferSize = 500;
constexpr int32_t kMaxLineRead = kLineBufferSize - 1;

using LineStreamFlushProc = void (*)(void *refcon);

struct LineStream {
    StreamReader *reader;
    BigString text;        // the rest of the current line, with its line end
    int32_t fill;          // valid bytes in the buffer
    int32_t next;          // where in the buffer the next line begins
    int32_t total;         // bytes that the stream may deliver in all
    int32_t bytesRead;     // bytes delivered so far
    ProgressProc progress; // or null
    const uint8_t *lineStart;
    LineStreamFlushProc flushProc; // or null: called before buffered bytes are moved or overwritten
    void *flushRefcon;
    TextIndex index;               // of the buffer's valid bytes and of a line end that the stream adds
    uint8_t buffer[kIndexedBytes]; // kLineBufferSize and what rounds it up to whole blocks
};
// Eight bytes can be read from any byte of a line on, and from the one behind it.
static_assert(kLineBufferSize + 1 + 8 <= kIndexedBytes);

// Reads nothing yet: the first refill does.
void InitializeLineStream(LineStream *stream, StreamReader *reader, int32_t total, ProgressProc progress);

// For a client that keeps pointers into the buffer beyond the current line: it copies what it needs when called.
void SetLineStreamFlushingProc(LineStream *stream, LineStreamFlushProc proc, void *refcon);

// These are parts of the next call.
inline void StartLine(LineStream *stream, const uint8_t *text)
{
    stream->lineStart = text;
    stream->text.text = text;
}

// Goes to the next line if it ends among the buffered bytes from that place on.
inline bool TakeBufferedLine(LineStream *stream, int32_t from)
{
    StartLine(stream, stream->buffer + stream->next);
    const int32_t end = FindMark(&stream->index.lineEnds, from, stream->fill);
    if (end >= stream->fill)
        return false;
    stream->text.length = end + 1 - stream->next;
    stream->next = end + 1;
    return true;
}

// Goes to one that no buffered byte ends.
bool ReadLine(LineStream *stream);

// Goes to the next line, dropping what is left of the current one. False only when the reader claims more bytes
// than it was asked for. A read that stops within a line breaks that line.
inline bool RefillLineStreamText(LineStream *stream)
{
    if (stream->progress != nullptr)
        stream->progress(stream->bytesRead, stream->total);
    return TakeBufferedLine(stream, stream->next) || ReadLine(stream);
}

// The first line end among count bytes, or null. Nothing calls it: lines are found by the index.
const uint8_t *ScanForLineEnd(const uint8_t *text, int32_t count);

// Passes over white space, refilling as needed, until there is text. False when a refill fails.
bool SkipToNonWhiteSpace(LineStream *stream);

// True while nothing of the current line has been consumed, not even white space.
inline bool IsTextAtLineStart(const LineStream *stream)
{
    return stream->text.text == stream->lineStart;
}

} // namespace vx
