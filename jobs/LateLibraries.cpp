#include "jobs/LateLibraries.h"

#include <dlfcn.h>

#include <stdexcept>

namespace vxhost
{

void FindProcedures(std::span<const LateProcedure> procedures, LateLibraries libraries)
{
    const char *file = nullptr;
    for (const LateProcedure &procedure : procedures) {
        if (procedure.of != libraries)
            continue;
        // The library stays for good. It is found like any that the program is linked with, and so are what stands before it.
        if (procedure.file != file && dlopen(procedure.file, RTLD_LAZY | RTLD_GLOBAL) == nullptr)
            throw std::runtime_error(dlerror());
        file = procedure.file;
        void *found = dlsym(RTLD_DEFAULT, procedure.name);
        if (found == nullptr)
            throw std::runtime_error(dlerror());
        *procedure.place = found;
    }
}

void LoadLate(LateLibraries libraries)
{
    static unsigned loaded = 0; // bits by LateLibraries
    const unsigned bit = 1U << static_cast<unsigned>(libraries);
    if (ProceduresOfProgram == nullptr || (loaded & bit) != 0)
        return;
    FindProcedures(ProceduresOfProgram(), libraries);
    loaded |= bit;
}

} // namespace vxhost
