// Plug-in entry: the seven requests that a host can make.
//
// Every request is complete in itself; nothing is kept between two.
#pragma once

#include "plugin/Result.h"
#include "plugin/input/LnStream.h"

// What the built plug-in exports as "main".
extern "C" void VXParserMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result);

namespace vx
{

Result DoCanRead(HostCallRecord *record);       // also fills the box and the monochrome flag
Result DoOpen(HostCallRecord *record);          // checks the procedure table, opens nothing
Result DoGetStreamInfo(HostCallRecord *record); // fills the box and the monochrome flag, on full success only
Result DoParseStream(HostCallRecord *record);
Result DoClose(HostCallRecord *record);

// Rewinds, passes over a binary EPS wrapper and opens the stream on the PostScript section.
Result SetUpLineStream(LineStream *stream, StreamReader *reader, int32_t length, ProgressProc progress);

// Reads the header, the setup section and the body, and releases the setup objects.
Result ParseLineStream(LineStream *stream, HostCallRecord *record);

} // namespace vx
