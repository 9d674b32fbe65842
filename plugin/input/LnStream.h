// Line stream: the host's forward-only bytes as lines, held in one small buffer.
//
// The current text is the rest of the current line; readers shorten it from the front and ask for the next line
// when it is used up. CR and LF each end a line, so CR LF ends two: the second is a lone LF, which is white space
// and so never seen. At the end of the data every line reads "%%EOF". Nothing is allocated.
#pragma once

#include "plugin/input/BigStrs.h"

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
    uint8_t buffer[kLineBufferSize];
};

// Reads nothing yet: the first refill does.
void InitializeLineStream(LineStream *stream, StreamReader *reader, int32_t total, ProgressProc progress);

// For a client that keeps pointers into the buffer beyond the current line: it copies what it needs when called.
void SetLineStreamFlushingProc(LineStream *stream, LineStreamFlushProc proc, void *refcon);

// Goes to the next line, dropping what is left of the current one. False only when the reader claims more bytes
// than it was asked for. A read that stops within a line breaks that line.
bool RefillLineStreamText(LineStream *stream);

// The first line end among count bytes, or null.
const uint8_t *ScanForLineEnd(const uint8_t *text, int32_t count);

// Passes over white space, refilling as needed, until there is text. False when a refill fails.
bool SkipToNonWhiteSpace(LineStream *stream);

// True while nothing of the current line has been consumed, not even white space.
inline bool IsTextAtLineStart(const LineStream *stream)
{
    return stream->text.text == stream->lineStart;
}

} // namespace vx
