// The fonts that a document asks for, found before it is interpreted.
//
// Looks for literal names before the operators that set a font ("Tf", "z") or re-encode one ("TZ"), wherever they
// stand. Trusts nothing and keeps a bounded number of them.
#pragma once

#include "host/Document.h"
#include "host/fonts/TextEncoding.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

struct AskedFont {
    std::string name; // without "/" and the mark that documents put before a font's name
    bool isReencoded = false;
    std::optional<Script> script; // where the document says it
};

constexpr size_t kMaxAskedFonts = 256;

// Distinct, in the order of the document.
std::vector<AskedFont> ScanFontNames(const Document &document);

// Adds the name unless it is there already. The font of that name, or null when the list is full.
AskedFont *AddAskedFont(std::string_view name, std::vector<AskedFont> *fonts);

} // namespace vxhost
