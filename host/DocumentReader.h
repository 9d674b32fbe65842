// The plug-in's StreamReader over a document's bytes.
//
// Reads are copies out of memory. The position stays within the document whatever it is set to. Once a callback of
// the call has failed nothing more is delivered, which ends the parse.
#pragma once

#include "host/Document.h"
#include "host/StreamCompanion.h"

#include <vx/HostCall.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>

namespace vxhost
{

class DocumentReader
{
  public:
    using Companions = std::array<StreamCompanion *, 2>;

    // The document must outlive the reader, and so must the companions, which may be null. Each sees what the one before it
    // made of the bytes.
    explicit DocumentReader(const Document &document, const Companions &companions = {})
        : document_(document), companions_(companions), bytes_(document.Bytes())
    {
        link_.stream.read = Read;
        link_.reader = this;
    }
    DocumentReader(const DocumentReader &) = delete;
    DocumentReader &operator=(const DocumentReader &) = delete;

    StreamReader *Stream() { return &link_.stream; }
    // How far the plug-in has read.
    size_t Furthest() const { return furthest_; }

  private:
    // The first member's address is all that the plug-in hands back.
    struct Link {
        StreamReader stream;
        DocumentReader *reader;
    };

    static int32_t Read(StreamReader *stream, int32_t op, void *arg, int32_t *inout);
    int32_t Deliver(void *to, int32_t wanted);

    const Document &document_;
    Companions companions_;
    std::span<const std::byte> bytes_;
    size_t position_ = 0;
    size_t left_ = 0; // the document's bytes before it have been given to Document::Leave
    size_t furthest_ = 0;
    Link link_{};
};

} // namespace vxhost
