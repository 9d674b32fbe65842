// The tokenizer: every token lies within its line or within the string buffer, and every call but the last moves on.
#include "fuzz/Require.h"
#include "plugin/body/ParseContext.h"
#include "plugin/input/Lex.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

namespace
{

using vxfuzz::Require;

void *Allocate(int32_t size, void *)
{
    return std::malloc(static_cast<size_t>(size));
}
void Release(void *block, void *)
{
    std::free(block);
}

bool HasText(vx::TokenKind kind)
{
    return kind == vx::kTokenString || kind == vx::kTokenHexData ||
           (kind >= vx::kTokenLiteralName && kind <= vx::kTokenExecutableName);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace vx;
    if (size < 2)
        return 0;
    constexpr int32_t kCapacity = 256; // small, so that it overflows
    const auto context = std::make_unique<ParseContext>();
    context->setupEnded = (data[0] & 1) != 0;
    int16_t hexState = (data[0] & 2) != 0 ? kInsideHexString : kOutsideHexString;
    const MemoryProcs memory = {Allocate, Release, nullptr};
    StringBuffer buffer;
    Require(InitializeStringBuffer(&buffer, kCapacity, &memory), "no string buffer");

    // The line has a block of its own, so that a byte too far is seen.
    const std::vector<uint8_t> line(data + 1, data + size);
    const uint8_t *const end = line.data() + line.size();
    BigString text = {line.data(), static_cast<int32_t>(line.size())};
    for (;;) {
        const uint8_t *const before = text.text;
        TokenValue value = {};
        const TokenKind kind = LexOneToken(&text, &hexState, &value, &buffer, context.get());
        Require(text.text >= before && text.text + text.length == end, "the rest is not the end of the line");
        if (HasText(kind) && value.length > 0) {
            const BigString token = {value.text, value.length};
            Require(BufferContainsString(&buffer, &token) ||
                        (token.text >= line.data() && token.text + token.length <= end),
                    "a token that lies nowhere");
        }
        if (kind == kTokenEndOfLine || kind == kTokenError || kind == kTokenOverflow || kind == kTokenComment)
            break;
        Require(text.text > before, "a token without bytes");
        if (data[0] & 4)
            ClearStringBuffer(&buffer);
    }
    TerminateStringBuffer(&buffer);
    return 0;
}
