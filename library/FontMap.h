// Reads a font map: which installed font serves which name, by a person's own choice.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace vxhost
{

// Names asked for, and the PostScript names of the fonts to draw with.
using FontMap = std::map<std::string, std::string>;

constexpr size_t kMaxMapLine = 1024; // bytes
constexpr size_t kMaxMapRows = 10000;

// Reads lines "ASKED = FONT"; what follows "#" is a comment. Throws OptionError, in which file stands for the text.
FontMap ReadFontMap(std::string_view text, const std::string &file);

} // namespace vxhost
