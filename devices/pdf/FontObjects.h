// The objects that say in a file what a font is: its program, and the glyphs of it that strings may name.
//
// Codes of two bytes are those that the program gives its glyphs, so that any use of a font adds to any other.
#pragma once

#include "devices/pdf/FontProgram.h"
#include "devices/pdf/PdfFile.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// The printable characters of a name that are no delimiters: old readers stumble over others.
std::string PlainName(const std::string &name);

// A width as it is written, rounded to 1/100 of 1/1000 em: readers place what follows by that.
double WrittenWidth(const FontProgram &program, uint32_t glyph);

// A column's glyph hangs from the middle of its top, so far from the origin of its outline; in 1/1000 em.
constexpr double kColumnX = 500, kColumnY = 880;

// Says that the font cannot be embedded. asked: its name in the document.
Failure DamagedFont(const std::string &asked);

struct NamedDescriptor {
    Reference object;
    std::string name; // of the font: its own, behind a tag if it is a part of it
};

// Adds the program with the glyphs that are marked. own: the font's name in its file.
Failure AddDescriptor(const FontProgram &program, const std::vector<bool> &used, const std::string &asked,
                      const std::string &own, PdfFile *file, NamedDescriptor *added);

// Adds what fonts of codes of two bytes have in common, however strings run. Returns what they name it by.
std::string AddDescendant(const FontProgram &program, const std::vector<bool> &used, bool runsDown,
                          const NamedDescriptor &descriptor, PdfFile *file);

// Returns such a font; strings of it run across or down.
std::string CompositeFont(const std::string &name, const std::string &descendants, Reference toUnicode,
                          bool runsDown);

} // namespace vxhost::pdf
