// Reads a font map, in which a person chooses which font serves which name.
#pragma once

#include "host/fonts/FontList.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace vxhost
{

// Maps names that documents ask for to the PostScript names of the fonts to draw with.
using FontMap = std::map<std::string, std::string>;

constexpr size_t kMaxMapLine = 1024; // bytes
constexpr size_t kMaxMapRows = 10000;

// Reads lines "ASKED = FONT"; what follows "#" is a comment. Throws OptionError, in which file stands for the text.
FontMap ReadFontMap(std::string_view text, const std::string &file);

// Returns the first row whose font is not in the list; null when all fonts are.
const FontMap::value_type *FindRowWithoutFont(const FontMap &map, const FontList &fonts);

} // namespace vxhost
