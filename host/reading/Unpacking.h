// Takes a document out of the gzip or xz data that it comes in, and these out of what is around them.
#pragma once

#include "host/Document.h"
#include "host/ResizableBytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace vxhost
{

enum class UnpackLimit : uint8_t { None, Memory, Length };

struct UnpackLimits {
    size_t memory = kMostDocumentBytes;
    size_t length = kMostDocumentBytes; // a document may have no more, whatever memory there is
};

struct Unpacked {
    std::unique_ptr<Document> document; // null: the file is not packed, or nothing came out
    ResizableBytes bytes;               // those of the document
    std::string names;   // what was undone, from outside: "MacBinary, gzip, xz"; empty: nothing
    std::string damage;  // what is wrong with it, as "the gzip data around it are cut short"; empty: nothing
    std::string refusal; // one line that says why nothing came out; empty: something did, or a limit was hit
    UnpackLimit limit = UnpackLimit::None; // which was hit; then nothing is kept
};

// Returns whether the file begins with gzip or xz data, or with what may be around a drawing and is around these.
bool IsPacked(std::span<const std::byte> file);

// Undoes up to three kinds of packing, one in the other, however many members or streams each has, with what is around each.
// Whatever comes out of damaged data is kept. All that is held at a time counts against the limit of memory. onStep, which may be
// null, is called about once for each MiB, and may throw. Throws std::bad_alloc.
std::unique_ptr<const Unpacked> Unpack(const Document &file, const UnpackLimits &limits,
                                       const std::function<void()> &onStep);

} // namespace vxhost
