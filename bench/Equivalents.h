// The same drawing in other page descriptions, number for number, so that other programs do the same work.
#pragma once

#include <string>
#include <string_view>

namespace vxbench
{

enum class Language { PostScript, Pdf, Svg };

// Translates a document that MakePathDocument, MakeTextPage or MakeTextLines made: each line of those is one operator with its
// operands.
std::string Translate(std::string_view document, Language language);

} // namespace vxbench
