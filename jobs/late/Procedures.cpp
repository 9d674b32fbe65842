// Stands in for libraries in a program that loads them late: each of their procedures that it calls is here, as a jump to where
// the library turns out to have it.
#include "jobs/LateLibraries.h"

#include <cstdlib>

// Whoever calls what is not loaded was to load it before.
#define VX_LATE(of, file, name)                                                                              \
    extern "C" {                                                                                             \
    __attribute__((visibility("hidden"))) void *vx_late_##name = reinterpret_cast<void *>(std::abort);       \
    __attribute__((visibility("hidden"), naked)) void name()                                                 \
    {                                                                                                        \
        asm("jmp *vx_late_" #name "(%rip)");                                                                 \
    }                                                                                                        \
    }
#include "jobs/late/Procedures.inc"
#undef VX_LATE

namespace vxhost
{

namespace
{

constexpr LateProcedure kProcedures[] = {
#define VX_LATE(of, file, name) {LateLibraries::of, file, #name, &vx_late_##name},
#include "jobs/late/Procedures.inc"
#undef VX_LATE
};

} // namespace

std::span<const LateProcedure> ProceduresOfProgram()
{
    return kProcedures;
}

} // namespace vxhost
