// Bytes of text: what they mean in each character set, and the conversions that the plug-in makes in place.
#include "fuzz/Require.h"
#include "host/fonts/TextEncoding.h"
#include "plugin/fonts/Encodings.h"

#include <vector>

namespace
{

using vxfuzz::Require;

void Decode(vxhost::TextEncoding encoding, const std::vector<uint8_t> &bytes)
{
    std::span<const uint8_t> rest(bytes);
    while (!rest.empty()) {
        const vxhost::DecodedCharacter decoded = vxhost::DecodeCharacter(encoding, rest);
        Require(decoded.bytes >= 1 && decoded.bytes <= 2 && decoded.bytes <= rest.size(),
                "a character of more bytes than there are");
        Require(decoded.character <= 0x10FFFF && (decoded.character < 0xD800 || decoded.character > 0xDFFF),
                "a character that is none");
        Require(decoded.bytes == 1 || vxhost::IsLeadByte(encoding, rest[0]), "two bytes without a lead byte");
        rest = rest.subspan(decoded.bytes);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using vxhost::TextEncoding;
    for (const TextEncoding encoding :
         {TextEncoding::MacRoman, TextEncoding::CodePage1252, TextEncoding::MacJapanese,
          TextEncoding::MacChinese, TextEncoding::MacKorean})
        Decode(encoding, {data, data + size});
    for (int16_t script = -1; script <= 4; ++script) {
        // Each has a block of its own, so that a byte too far is seen.
        std::vector<uint8_t> text(data, data + size);
        const auto length = static_cast<int32_t>(size);
        vx::PCToMacVerticalEncoding(text.data(), length, script);
        vx::MacToPCVerticalEncoding(text.data(), length, script);
        vx::Mac3JToMac5JVerticalEncoding(text.data(), length, script);
    }
    return 0;
}
