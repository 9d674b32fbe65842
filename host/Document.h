// The bytes of one document, from a file, a pipe or memory, as the plug-in's stream wants them: forward, with a
// known length and one rewind.
//
// A regular file is mapped; what a pipe or a device delivers is read whole. Documents over 2^31 - 1 bytes are refused:
// the boundary counts in 32 bits.
#pragma once

#include "host/FileReading.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <sys/stat.h>

namespace vxhost
{

struct DocumentLimits {
    FileKinds kinds = FileKinds::All;
    ReadLimits reading; // for what is not mapped
};

class Document
{
  public:
    static constexpr size_t kReadAtOnce = size_t{1} << 20; // readers leave what they have read in such pieces

    // Each returns null on failure, with error one line for a person ("is a directory", "no such file …"). The line is
    // empty when a limit of reading was hit; end, unless it is null, says which.
    static std::unique_ptr<Document> Open(const std::string &path, std::string *error,
                                          const DocumentLimits &limits = {}, ReadEnd *end = nullptr);
    static std::unique_ptr<Document> FromDescriptor(int descriptor, std::string *error,
                                                    const ReadLimits &limits = {}, ReadEnd *end = nullptr);
    // Borrows the bytes: they must outlive the document.
    static std::unique_ptr<Document> FromMemory(std::span<const std::byte> bytes, std::string *error);

    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;
    ~Document();

    std::span<const std::byte> Bytes() const { return bytes_; }
    // Says that the bytes from `from` to `to` have been read. Those of a mapped file need not stay in memory then, and
    // come back when they are read again: so memory does not follow the document's length.
    void Leave(size_t from, size_t to) const;

    // Whether somebody wrote to the file since it was mapped, or cut it. Then nobody knows which bytes were read, and
    // those that are gone may have ended the process that looked at them.
    bool HasChanged() const;
    double SecondsRead() const { return secondsRead_; } // how long reading it took

  private:
    Document() = default;
    std::span<const std::byte> bytes_;
    std::span<const std::byte> mapped_; // the whole mapping, which bytes_ may be a part of
    Descriptor file_;                   // that is mapped
    struct stat status_ = {};           // as it was
    HeldBytes held_;
    double secondsRead_ = 0;
};

} // namespace vxhost
