// Text objects: the text state, and the operators that set and show text.
//
// Text is not set yet: the operators are taken and do nothing.
#pragma once

#include "plugin/Result.h"
#include "plugin/fonts/UnixFont.h"

#include <cstdint>

namespace vx
{

struct ParseContext;

// The operand of "To", kept while the text object is open.
enum TextObjectType : int32_t { kPointText = 0, kPathText = 1, kAreaText = 2, kNoTextObject = 111 };
enum TextPathState : int32_t { kTextPathBegun = 1, kNoTextPath = 2 };

struct TextObject {
    int32_t pathState;
    int32_t type;
};

// What the context holds for text beside the text object.
struct TextAndFontState {
    FontTable fonts;
    TextObject object;
};

// The defaults of a parse. The state comes zero-filled.
void InitializeTextState(TextAndFontState *state);

// Runs a two-character text operator; operatorText is what follows the "T".
Result ParseText(const char *operatorText, ParseContext *context, TextObject *text);

// Runs a text operator of the older, one-character syntax.
Result Parse_88_and_1_1_Text(const char *operatorText, ParseContext *context, TextObject *text);

} // namespace vx
