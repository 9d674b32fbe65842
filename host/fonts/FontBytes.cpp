#include "host/fonts/FontBytes.h"

#include "host/MappedFile.h"

namespace vxhost
{

std::shared_ptr<const FontBytes> FontBytes::Open(const std::string &path)
{
    std::shared_ptr<const MappedFile> file = MappedFile::Open(path);
    if (file == nullptr)
        return nullptr;
    const std::span<const std::byte> bytes = file->Bytes();
    return std::shared_ptr<const FontBytes>(new FontBytes(bytes, path, std::move(file)));
}

std::shared_ptr<const FontBytes> FontBytes::FromMemory(std::vector<std::byte> bytes)
{
    auto held = std::make_shared<const std::vector<std::byte>>(std::move(bytes));
    const std::span<const std::byte> all = *held;
    return std::shared_ptr<const FontBytes>(new FontBytes(all, {}, std::move(held)));
}

} // namespace vxhost
