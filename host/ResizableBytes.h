// Memory for bytes of which nobody knows beforehand how many will come.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace vxhost
{

class ResizableBytes
{
  public:
    // Keeps the bytes that fit. False: there is no memory, and nothing changes. realloc moves the pages of large blocks
    // instead of copying what they hold.
    [[nodiscard]] bool Resize(size_t size)
    {
        void *moved = std::realloc(bytes_.get(), size);
        if (moved == nullptr)
            return false;
        (void)bytes_.release();
        bytes_.reset(static_cast<std::byte *>(moved));
        return true;
    }
    std::byte *Get() const { return bytes_.get(); }

  private:
    struct Free {
        void operator()(std::byte *bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::byte, Free> bytes_;
};

} // namespace vxhost
