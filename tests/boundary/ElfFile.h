// What the linker wrote into a shared object, whatever the word size and byte order of its machine.
//
// Reads section headers, the dynamic symbols with their library versions, and the needed libraries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ElfSection {
    std::string name;
    uint64_t size = 0;
    bool writable = false; // while the program runs, relocation aside
};

struct ElfSymbol {
    std::string name;
    bool defined = false;
    bool versioned = false; // undefined: bound to a version of a needed library
};

struct ElfFile {
    unsigned pointerBytes = 0;
    std::vector<ElfSection> sections;
    std::vector<ElfSymbol> dynamicSymbols;
    std::vector<std::string> neededLibraries;

    // Size of a section, 0 if there is none of that name.
    uint64_t SizeOf(const std::string &name) const;
};

// Nothing when the file cannot be read or is no ELF file.
std::optional<ElfFile> ReadElfFile(const std::string &path);
