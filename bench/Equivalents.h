// The same drawing in other page descriptions, number for number, so that other programs do the same work.
#pragma once

#include <string>
#include <string_view>

namespace vxbench
{

enum class Language { PostScript, Pdf, Svg };

// Of a document that MakePathDocument or MakeTextPage made: each line is one operator of theirs with its operands.
std::string Translate(std::string_view document, Language language);

} // namespace vxbench
