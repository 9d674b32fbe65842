// The plug-in, loaded once and called many times, from any thread.
//
// Each call finds its own host (fonts, resources, memory) through one thread-local pointer; two threads may
// parse at once with one Plugin.
#pragma once

#include "host/Document.h"
#include "host/Outcome.h"
#include "host/StreamCompanion.h"
#include "host/drawing/Device.h"
#include "host/drawing/GlyphSource.h"
#include "host/fonts/FontList.h"
#include "host/reading/StructureCompanion.h"

#include <vx/HostCall.h>

#include <functional>
#include <memory>
#include <string>

namespace vxhost
{

struct ParseOptions {
    const FontList *fonts = nullptr; // must be set; may be shared by threads
    WidthSource *widths =
        nullptr; // the widths of those fonts, for this parse alone; null: no character has one
    GlyphSource *glyphs = nullptr; // the glyphs of those fonts, for Draw; null: text is counted and not drawn
    int32_t systemScript = kVXScriptRoman;
    int64_t maxHeap = int64_t{64} << 20;     // bytes that the plug-in may hold at once
    int64_t maxDrawing = int64_t{256} << 20; // bytes that Draw may hold at once in paths and saved states
    bool report = true;                      // false: the once-only warnings are off
    std::function<bool(const Report &)> onReport;                // true stops the parse; null: it goes on
    std::function<void(int64_t read, int64_t total)> onProgress; // neither is below 0; null: none
    StreamCompanion *companion = nullptr;                        // goes along with Parse and Draw; null: none
    StructureCompanion *structure =
        nullptr; // the same, and Draw sends what it finds to the device; null: none
};

class Plugin
{
  public:
    // Null on failure, with error one line for a person. It is in PluginFile.cpp, which a program without files is built
    // without.
    static std::unique_ptr<Plugin> Load(const std::string &path, std::string *error);
    // The same over an entry that is already in memory: a test, or a statically linked plug-in.
    static std::unique_ptr<Plugin> FromEntry(VXMainProc entry);
    Plugin(const Plugin &) = delete;
    Plugin &operator=(const Plugin &) = delete;

    // What a caller's procedures throw does not cross the plug-in's frames: the parse ends early, and the exception
    // goes on from here. Lack of memory is not thrown, it is the outcome's result.

    // Selector 4: box and monochrome flag; result other than 0 means not a VX document.
    Outcome ReadInfo(const Document &document, const ParseOptions &options) const;

    // Selector 5 on any procedure table: what the trace, and hosts with a table of their own, use.
    Outcome Parse(const Document &document, const ParseOptions &options, ZRKProcs *procs,
                  void *drawing) const;

    // Selector 5 into a device, through Drawing. page.box is what the device shows; BeginPage and EndPage are
    // called here, EndPage also when the parse failed half way, but not when it was for want of memory. There is an
    // output when both the result and the failure say so.
    Outcome Draw(const Document &document, const ParseOptions &options, const Page &page,
                 Device &device) const;

  private:
    Plugin() = default;
    std::shared_ptr<void> library_; // that the entry is in; null: the program
    VXMainProc entry_ = nullptr;
};

} // namespace vxhost
