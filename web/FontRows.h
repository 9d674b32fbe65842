// Writes and reads what a list has to know of fonts whose files come when a document asks for them: a row a font, as text.
#pragma once

#include "host/fonts/FontCandidates.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxweb
{

// The rows of a font file; none of one that is no font.
std::string RowsOf(const std::string &file, const vxhost::SharedFontBytes &bytes);

// Rows that cannot be read are left out.
std::vector<vxhost::FontCandidate> ReadRows(std::string_view rows);

// The rows of the fonts that every library has from now on, beside those that are given to it.
void SetRows(std::string_view rows);

} // namespace vxweb
