// Declares what a library has of the machine that it runs on. System.cpp is for a machine with files and fonts, ../bare/System.cpp
// for one that has neither.
#pragma once

#include "library/interface/Handles.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

// An option of a whole library. All of them are about the machine.
struct LibraryOption {
    const char *name;
    const char *value; // what stands for the value in help
    const char *choices;
    const char *standard;
    const char *help;
    void (*set)(vx_library *library, const std::string &value); // throws OptionError or CallError
};
std::span<const LibraryOption> LibraryOptions();
const LibraryOption *FindLibraryOption(std::string_view name); // null: there is none

std::unique_ptr<FontList> ListFonts(const FontSources &sources);

// Null where there is no such file: error says why.
std::unique_ptr<Document> OpenDocument(const std::string &path, std::string *error);

} // namespace vxhost
