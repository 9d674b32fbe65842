// The bytes of one document, from a file, a pipe or memory, as the plug-in's stream wants them: forward, with a
// known length and one rewind.
//
// A regular file is mapped; a pipe is read whole. Documents over 2^31 - 1 bytes are refused: the boundary counts
// in 32 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <span>
#include <string>

namespace vxhost
{

class Document
{
  public:
    // Each returns null and sets error to one line for a person ("is a directory", "no such file …").
    static std::unique_ptr<Document> Open(const std::string &path, std::string *error);
    // maxHeld bounds what a pipe may deliver; when it delivers more, error is empty.
    static std::unique_ptr<Document> FromDescriptor(int descriptor, std::string *error,
                                                    size_t maxHeld = std::numeric_limits<size_t>::max());
    // Borrows the bytes: they must outlive the document.
    static std::unique_ptr<Document> FromMemory(std::span<const std::byte> bytes, std::string *error);

    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;
    ~Document();

    std::span<const std::byte> Bytes() const { return bytes_; }
    // What lies between the two has been read: of a mapped file it need not stay in memory, and comes back when it is
    // read again. So memory does not follow the document's length.
    void Leave(size_t from, size_t to) const;

  private:
    struct Free {
        void operator()(std::byte *bytes) const { std::free(bytes); }
    };
    using HeldBytes = std::unique_ptr<std::byte, Free>;

    Document() = default;
    bool ReadWhole(int descriptor, size_t maxHeld, std::string *error);
    std::span<const std::byte> bytes_;
    std::span<const std::byte> mapped_; // the whole mapping, which bytes_ may be a part of
    HeldBytes owned_;
};

} // namespace vxhost
