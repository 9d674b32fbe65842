// Makes one pass over a document for its caller: with the options that hold, within the limits that they set, and with all that
// the caller is told afterwards.
#pragma once

#include "library/interface/ClockPause.h"
#include "library/interface/Handles.h"

#include <chrono>
#include <functional>
#include <vector>

namespace vxhost
{

// Ends the pass by CallError when it has taken too long or the caller wants it to end.
class Watch
{
  public:
    explicit Watch(const vx_document &document) : document_(document) {}

    void CheckTime() const;
    void CheckProgress(int64_t done, int64_t total) const;

  private:
    using Clock = std::chrono::steady_clock;
    const vx_document &document_;
    const Clock::time_point start_ = Clock::now();
    mutable Clock::time_point looked_ = start_;
    mutable ClockPause pause_;
};

// Hands bytes to the caller's vx_write, and keeps why that came to an end.
class WrittenBytes
{
  public:
    WrittenBytes(vx_write write, void *context, int64_t most) : write_(write), context_(context), most_(most)
    {
    }

    // A device that fails to write goes on to its end: Check ends it sooner. What is not written in order is held until
    // it is handed over.
    ByteSinks Sinks(bool isWrittenInOrder);
    void HandOver();
    void Check() const;

  private:
    Failure Take(std::span<const std::byte> bytes, bool isHeld);

    vx_write write_;
    void *context_;
    int64_t most_; // 0: any number
    int64_t count_ = 0;
    std::vector<std::byte> held_, scratch_;
    bool isStopped_ = false;
    bool isOver_ = false;
};

// Runs action on a reading of the document, and keeps warnings and fonts; throws CallError for whatever is no success.
// written is null where the pass writes nothing. Only where texts are read the device is told where each begins.
Outcome RunPass(vx_document *document, const WrittenBytes *written,
                const std::function<Outcome(Reading &, const Watch &)> &action, bool readsTexts = false);

// Throws OptionError for a device that could not be made: error says why.
Device &CheckMade(const std::unique_ptr<Device> &device, const std::string &error);

// Does the same with a device to draw into, on a page as LayOutPage returns it.
void DrawPass(vx_document *document, const Page &laidOut, Device *device, const WrittenBytes *written);

// Returns the page that the options show, as it is laid out. Throws CallError when it shows nothing.
Page LayOutPage(vx_document *document);

} // namespace vxhost
