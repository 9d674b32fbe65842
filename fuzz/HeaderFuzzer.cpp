// Fuzzes what is read of a document before it is interpreted: what is around it, its header, by the plug-in and by
// its host, its font names, its end and what it shows that is not drawn.
#include "fuzz/HostileHost.h"
#include "fuzz/Require.h"
#include "host/fonts/FontNameScan.h"
#include "host/reading/DocumentEnd.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/Unpacking.h"
#include "host/reading/Unshown.h"
#include "host/reading/Wrapping.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    vxfuzz::Input input(data, size);
    const auto bytes = std::as_bytes(input.document);
    const vxhost::Wrapping wrapping = vxhost::FindDrawing(bytes);
    vxfuzz::Require(wrapping.offset + wrapping.size <= bytes.size(), "a drawing beyond its file");
    const vxhost::HeaderFacts facts = vxhost::ScanHeader(bytes);
    std::string error;
    const auto document = vxhost::Document::FromMemory(bytes, &error);
    constexpr size_t kMostUnpacked = size_t{1} << 20;
    const auto unpacked = vxhost::Unpack(*document, {size_t{16} << 20, kMostUnpacked}, nullptr);
    vxfuzz::Require(unpacked->document == nullptr || unpacked->document->Bytes().size() <= kMostUnpacked,
                    "more than there may be");
    const std::vector<vxhost::AskedFont> fonts = vxhost::ScanFontNames(*document);
    vxfuzz::Require(vxhost::WhyRefused(facts, size).find('\n') == std::string::npos,
                    "a message of two lines");
    vxfuzz::Require(fonts.size() <= vxhost::kMaxAskedFonts, "too many fonts");
    const vxhost::DocumentEnd end = vxhost::FindEnd(*document, true, {});
    const vxhost::DocumentEnd quick = vxhost::FindEnd(*document, false, {});
    vxfuzz::Require(end.isSaid == quick.isSaid && end.isInLine == quick.isInLine, "two ends");
    vxfuzz::Require(end.undrawn == quick.undrawn && end.undrawn.bytes <= size, "what is not drawn");
    vxfuzz::Require(!quick.isSaid || quick.open == vxhost::OpenThings(), "things that nobody looked for");
    const std::string_view all(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const vxhost::Unshown unshown = vxhost::CountUnshown(*document, all, facts.version, vxhost::Blanks());
    vxfuzz::Require(unshown.patterns + unshown.placedPictures + unshown.postscript + unshown.binary <= size,
                    "more that is not shown than bytes");
    vxfuzz::Require(unshown.placedPictures == 0 || vxhost::MayHoldPlacedPicture(*document, all),
                    "a placed picture that nobody looks for");
    input.behaviour.selector = size % 2 == 0 ? kVXCanRead : kVXStreamInfo;
    vxfuzz::HostileHost host(input);
    host.Call();
    return 0;
}
