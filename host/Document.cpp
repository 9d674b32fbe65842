#include "host/Document.h"

namespace vxhost
{

namespace
{

// A part hands on to the whole what is done with it.
class PartHolder final : public Document::Holder
{
  public:
    PartHolder(const Document &whole, size_t offset) : whole_(whole), offset_(offset) {}

    void Leave(size_t from, size_t to) const override { whole_.Leave(offset_ + from, offset_ + to); }
    bool HasChanged() const override { return whole_.HasChanged(); }
    std::optional<int64_t> ModifiedAt() const override { return whole_.ModifiedAt(); }

  private:
    const Document &whole_;
    size_t offset_;
};

} // namespace

std::unique_ptr<Document> Document::FromMemory(std::span<const std::byte> bytes, std::string *error)
{
    if (bytes.size() > kMostDocumentBytes) {
        *error = kDocumentTooLong;
        return nullptr;
    }
    return std::unique_ptr<Document>(new Document(bytes));
}

std::unique_ptr<Document> Document::PartOf(const Document &whole, size_t offset, size_t size)
{
    return std::unique_ptr<Document>(
        new Document(whole.Bytes().subspan(offset, size), std::make_unique<PartHolder>(whole, offset)));
}

} // namespace vxhost
