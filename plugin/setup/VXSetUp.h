// Setup section: the objects that its encodings and gradients are collected into, from their creation before the
// body to their release after it.
//
// The section itself is interpreted by the body driver; here the stream is only brought to where that begins.
#pragma once

#include "plugin/Result.h"
#include "plugin/gradients/gradient.h"
#include "plugin/header/Header.h"
#include "plugin/text/FontEncoding.h"

namespace vx
{

// What the call record's setup field points to during a parse. Either block may be missing when memory was short:
// everything that needs it then behaves as if the document had none.
struct SetUpRecord {
    GradientState *gradients;
    FontEncodingObject *encoding;
};

inline SetUpRecord *GetSetUpRecord(const HostCallRecord *record)
{
    return static_cast<SetUpRecord *>(record->setup);
}

// Creates the objects and goes to just after "%%BeginSetup", or after "%%EndSetup" for version 2. On failure
// nothing is left allocated.
Result ParseSetUp(LineStream *stream, HostCallRecord *record, FileVersion version);

// False only when not one of the three blocks could be had.
bool InitParseSetUp(HostCallRecord *record, FileVersion version);

// Passes over comments up to and with the one that reads exactly comment. Other lines are passed over too when
// skipOthers is set, and are an error when it is not.
Result SkipThroughComment(LineStream *stream, const char *comment, bool skipOthers);

void TerminateSetUp(HostCallRecord *record);
void DeallocateGradientObj(HostCallRecord *record);
void DeallocateFontDataObj(HostCallRecord *record);

} // namespace vx
