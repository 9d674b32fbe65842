// A host that does nothing: what is left of a parse is the plug-in's own time.
#pragma once

#include <vx/Procs.h>

#include <cstdint>

namespace vxbench
{

// The table's drawing is a count of calls.
inline ZRKProcs MakeIdleTable()
{
    ZRKProcs procs = {};
    procs.version = kZRKProcsVersion;
    procs.count = kZRKProcCount;
    // The C calling convention lets a procedure ignore the arguments after those that it names.
    for (ZRKProc &entry : procs.entry)
        entry = reinterpret_cast<ZRKProc>(+[](void *calls) { ++*static_cast<int64_t *>(calls); });
    return procs;
}

} // namespace vxbench
