// Body driver: from the setup comment to the end of the page, line by line.
//
// Builds the parse context and everything that it points to, follows the comments that open and close sections, and
// hands every other line to the interpreter.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"
#include "plugin/header/Header.h"

namespace vx
{

constexpr int32_t kStringBufferSize = 8192;
constexpr int32_t kObjectPoolSize = 500;

// Draws the body. The version is not used: the font encoding object carries it.
Result ParseBody(LineStream *stream, HostCallRecord *record, FileVersion version);

// The state before the first operator. The context comes zero-filled.
void InitializeGlobals(ParseContext *context);

// These set up what the line loop needs: the object pool, then the operand stack and the flushing procedure.
Result ParseBodyWithStringBuffer(ParseContext *context);
Result ParseBodyWithBuffers(ParseContext *context);

// The line loop.
Result DoParsing(ParseContext *context);

// What the line stream calls before it moves its buffer.
struct StackAndBuffer {
    PostScriptObjectList *operandStack;
    StringBuffer *stringBuffer;
};
void FlushStackStringsToBuffer(void *stackAndBuffer);

// Copies the text of a list's objects into the buffer, where it does not lie there already.
void FlushPostScriptObjectListToStringBuffer(const PostScriptObjectList *list, StringBuffer *buffer);

} // namespace vx
