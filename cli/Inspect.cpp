#include "cli/Inspect.h"

namespace vxhost
{

namespace
{

// Draws nothing: what is counted is counted on the way to it.
class NoDevice final : public Device
{
  public:
    void BeginPage(const Page &) override {}
    void Save() override {}
    void Restore() override {}
    void ClipPath(const Path &) override {}
    void FillPath(const Path &, const Paint &) override {}
    void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
    bool CanShow(const TextFont &) override { return true; } // nobody needs the outlines of its glyphs
    std::string EndPage() override { return ""; }
};

} // namespace

void Inspect(const Plugin &plugin, const Document &document, const ParseOptions &parse, Finding *finding)
{
    finding->outcome = plugin.ReadInfo(document, parse);
    if (finding->outcome.result != kVXOk)
        return;
    Page page;
    page.box = {0, 0, 1, 1}; // of no interest to a device that draws nothing; the document's may be empty
    NoDevice device;
    finding->outcome = plugin.Draw(document, parse, page, device);
}

} // namespace vxhost
