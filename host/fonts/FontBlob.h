// A font's bytes as HarfBuzz takes them.
#pragma once

#include "host/fonts/FontBytes.h"
#include "host/fonts/Owned.h"

#include <hb.h>

#include <limits>

namespace vxhost
{

// The blob keeps the bytes. Lack of memory is thrown, or left in errno.
inline Owned<hb_blob_t, hb_blob_destroy> MakeBlob(const SharedFontBytes &bytes)
{
    const std::span<const std::byte> all = bytes->Get();
    const auto length =
        all.size() > std::numeric_limits<int32_t>::max() ? 0U : static_cast<unsigned>(all.size());
    auto *keeper = new SharedFontBytes(bytes);
    return Owned<hb_blob_t, hb_blob_destroy>(
        hb_blob_create(reinterpret_cast<const char *>(all.data()), length, HB_MEMORY_MODE_READONLY, keeper,
                       [](void *kept) { delete static_cast<SharedFontBytes *>(kept); }));
}

} // namespace vxhost
