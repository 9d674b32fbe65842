// Fuzzes what is read beside the plug-in: with it and without it a document makes the same calls, and what is told of layers
// nests as it must.
#include "fuzz/HostileHost.h"
#include "fuzz/Require.h"
#include "host/fonts/FixedFontList.h"
#include "host/reading/Reading.h"
#include "host/trace/TraceLines.h"
#include "plugin/entry/VXParser.h"

#include <string>
#include <string_view>

namespace
{

bool IsEvent(std::string_view line)
{
    return line.starts_with("begin-") || line.starts_with("end-") || line.starts_with("set-fill-") ||
           line.starts_with("set-stroke-");
}

std::string CallsOf(const vxhost::Installation &installation, const vxhost::Document &document,
                    bool withStructure, bool withTexts)
{
    vxhost::ReadingOptions options;
    options.readsStructure = withStructure;
    options.readsTexts = withTexts;
    vxhost::Reading reading(installation, document, options);
    for (const vxhost::Layer &layer : reading.Layers())
        vxfuzz::Require(layer.parent < &layer - reading.Layers().data(),
                        "structure: a layer within one that follows it");
    std::string calls;
    vxhost::TraceLines lines({[](void *to, std::string_view line) {
                                  if (!IsEvent(line))
                                      static_cast<std::string *>(to)->append(line).append("\n");
                              },
                              &calls});
    (void)reading.Trace(lines, withStructure);
    return calls;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const vxfuzz::Input input(data, size);
    static const vxhost::Installation installation = [] {
        vxhost::Installation made;
        made.plugin = vxhost::Plugin::FromEntry(VXParserMain);
        made.fonts = std::make_shared<vxhost::FixedFontList>(std::vector<std::string>{"Helvetica"});
        return made;
    }();
    std::string error;
    const auto document = vxhost::Document::FromMemory(std::as_bytes(input.document), &error);
    const std::string calls = CallsOf(installation, *document, false, false);
    for (const bool withTexts : {false, true})
        vxfuzz::Require(CallsOf(installation, *document, true, withTexts) == calls,
                        "structure: other calls with the companion than without");
    return 0;
}
