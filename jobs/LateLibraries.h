// Libraries that only some documents need. The programs that start most often begin without them, and load them when it is known
// that a document needs them: before the process that does is confined, since it can load nothing afterwards.
#pragma once

#include <span>

namespace vxhost
{

enum class LateLibraries {
    OfListingFonts, // fontconfig
    OfFonts,        // FreeType and HarfBuzz
    OfColour,       // Little CMS, for profiles that a user names
    OfTiff,
    OfArchives, // libarchive
};

// Does nothing where they are loaded, or linked as usual. Throws std::runtime_error when one is missing.
void LoadLate(LateLibraries libraries);

// A procedure that a program has to find in a library: calls of it go by way of a pointer, which is that place.
struct LateProcedure {
    LateLibraries of;
    const char *file; // of the library, by whose name the system finds it
    const char *name;
    void **place;
};

// Finds those of the libraries. Throws std::runtime_error for the first that is missing.
void FindProcedures(std::span<const LateProcedure> procedures, LateLibraries libraries);

// Those of this program. A program that is linked with the libraries as usual has not even this procedure.
[[gnu::weak]] std::span<const LateProcedure> ProceduresOfProgram();

} // namespace vxhost
