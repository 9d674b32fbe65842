// The bytes of one document, from a file, a pipe or memory, as the plug-in's stream wants them: forward, with a
// known length and one rewind.
//
// A regular file is mapped; what a pipe or a device delivers is read whole. Documents over 2^31 - 1 bytes are refused:
// the boundary counts in 32 bits.
#pragma once

#include "host/FileReading.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vxhost
{

struct DocumentLimits {
    FileKinds kinds = FileKinds::All;
    ReadLimits reading; // for what is not mapped
};

constexpr size_t kMostDocumentBytes = size_t{0x7FFFFFFF};
constexpr std::string_view kDocumentTooLong =
    "longer than 2147483647 bytes, the most that a document may have: split it";

class Document
{
  public:
    static constexpr size_t kReadAtOnce = size_t{1} << 20; // readers leave what they have read in such pieces

    // Whatever the bytes are in. It goes with the document.
    class Holder
    {
      public:
        virtual ~Holder() = default;
        virtual void Leave(size_t, size_t) const {}
        virtual bool HasChanged() const { return false; }
        virtual double SecondsRead() const { return 0; }
        virtual std::optional<int64_t> ModifiedAt() const { return std::nullopt; }
    };

    // Each returns null and sets error to one line for a person ("is a directory", "no such file …"). It is empty when
    // a limit of reading was hit, and end, unless it is null, says which.
    // Open and FromDescriptor are in DocumentFile.cpp, which a program without files is built without.
    static std::unique_ptr<Document> Open(const std::string &path, std::string *error,
                                          const DocumentLimits &limits = {}, ReadEnd *end = nullptr);
    static std::unique_ptr<Document> FromDescriptor(int descriptor, std::string *error,
                                                    const ReadLimits &limits = {}, ReadEnd *end = nullptr);
    // Borrows the bytes: they must outlive the document.
    static std::unique_ptr<Document> FromMemory(std::span<const std::byte> bytes, std::string *error);

    // A part of a document, which must outlive it.
    static std::unique_ptr<Document> PartOf(const Document &whole, size_t offset, size_t size);

    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;

    std::span<const std::byte> Bytes() const { return bytes_; }
    // What lies between the two has been read: of a mapped file it need not stay in memory, and comes back when it is
    // read again. So memory does not follow the document's length.
    void Leave(size_t from, size_t to) const
    {
        if (holder_ != nullptr)
            holder_->Leave(from, to);
    }

    // Whether somebody wrote to the file since it was mapped, or cut it. Then nobody knows which bytes were read, and
    // those that are gone may have ended the process that looked at them.
    bool HasChanged() const { return holder_ != nullptr && holder_->HasChanged(); }
    double SecondsRead() const { return holder_ == nullptr ? 0 : holder_->SecondsRead(); } // that it took
    // When the file was written to last, in seconds since 1970; none: there is no file.
    std::optional<int64_t> ModifiedAt() const
    {
        return holder_ == nullptr ? std::nullopt : holder_->ModifiedAt();
    }

  private:
    explicit Document(std::span<const std::byte> bytes, std::unique_ptr<const Holder> holder = nullptr)
        : bytes_(bytes), holder_(std::move(holder))
    {
    }

    std::span<const std::byte> bytes_;
    std::unique_ptr<const Holder> holder_; // null: the caller
};

} // namespace vxhost
