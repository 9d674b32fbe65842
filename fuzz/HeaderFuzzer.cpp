// Fuzzes what is read of a document before it is interpreted: its header, by the plug-in and by its host, its font names
// and its end.
#include "fuzz/HostileHost.h"
#include "fuzz/Require.h"
#include "host/fonts/FontNameScan.h"
#include "host/reading/DocumentEnd.h"
#include "host/reading/HeaderScan.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    vxfuzz::Input input(data, size);
    const auto bytes = std::as_bytes(input.document);
    const vxhost::HeaderFacts facts = vxhost::ScanHeader(bytes);
    std::string error;
    const auto document = vxhost::Document::FromMemory(bytes, &error);
    const std::vector<vxhost::AskedFont> fonts = vxhost::ScanFontNames(*document);
    vxfuzz::Require(vxhost::WhyRefused(facts, size).find('\n') == std::string::npos,
                    "a message of two lines");
    vxfuzz::Require(fonts.size() <= vxhost::kMaxAskedFonts, "too many fonts");
    const vxhost::DocumentEnd end = vxhost::FindEnd(*document, true);
    const vxhost::DocumentEnd quick = vxhost::FindEnd(*document, false);
    vxfuzz::Require(end.isSaid == quick.isSaid && end.isInLine == quick.isInLine, "two ends");
    vxfuzz::Require(!quick.isSaid || quick.open == vxhost::OpenThings(), "things that nobody looked for");
    input.behaviour.selector = size % 2 == 0 ? kVXCanRead : kVXStreamInfo;
    vxfuzz::HostileHost host(input);
    host.Call();
    return 0;
}
