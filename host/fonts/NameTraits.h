// What a font's name says of itself: its script, its style, its family, and which names mean one font.
#pragma once

#include "host/fonts/TextEncoding.h"

#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

// The name without the suffixes that say how text is encoded and in which direction it runs, as in "-83pv-RKSJ-H".
std::string_view WithoutSuffixes(std::string_view name);

// The script that an encoding suffix tells, else that of a known East Asian face; nothing where the name says nothing.
std::optional<Script> ScriptOfName(std::string_view name);

// The set of symbols in which text of that font stands; nothing for a name that is not a symbol font's.
std::optional<TextEncoding> SymbolSetOfName(std::string_view name);

enum class FaceClass : uint8_t { Sans, Serif, Mono };

// weight and width: 0 regular, less is lighter or narrower, more is heavier or wider.
struct FaceStyle {
    int weight = 0;
    int width = 0;
    bool isSlanted = false;
};

struct FaceTraits {
    std::string family; // lower case, without blanks and words of style
    FaceStyle style;
    FaceClass faceClass = FaceClass::Sans;
};

FaceTraits TraitsOfName(std::string_view postScriptName);

// The letters and digits of a name, in lower case.
std::string PlainName(std::string_view name);

} // namespace vxhost
