#include "host/Document.h"

namespace vxhost
{

std::unique_ptr<Document> Document::FromMemory(std::span<const std::byte> bytes, std::string *error)
{
    if (bytes.size() > kMostDocumentBytes) {
        *error = kDocumentTooLong;
        return nullptr;
    }
    return std::unique_ptr<Document>(new Document(bytes));
}

} // namespace vxhost
