// Goes beside the plug-in through a document: sees the bytes that it is given, and where it stands among its lines.
//
// A document is passed over twice, for its header and to be drawn: a companion goes along when it is drawn.
#pragma once

#include <cstddef>
#include <span>

namespace vxhost
{

class StreamCompanion
{
  public:
    StreamCompanion() = default;
    StreamCompanion(const StreamCompanion &) = delete;
    StreamCompanion &operator=(const StreamCompanion &) = delete;
    virtual ~StreamCompanion() = default;

    // Sees bytes on their way to the plug-in, from that offset of the document. It may change them, but not their
    // number.
    virtual void Deliver(std::span<std::byte> bytes, size_t offset) = 0;
    // Is called when the plug-in takes its next line: those before it have been carried out, and nothing of this one.
    virtual void BeginLine() = 0;
};

} // namespace vxhost
