#include "devices/pdf/Deflater.h"

#include <libdeflate.h>

#include <new>

namespace vxhost::pdf
{

Deflater::Deflater(int level) : compressor_(libdeflate_alloc_compressor(level))
{
    if (compressor_ == nullptr)
        throw std::bad_alloc();
}

Deflater::~Deflater()
{
    libdeflate_free_compressor(compressor_);
}

std::span<const char> Deflater::Compress(std::span<const char> bytes)
{
    const size_t bound = libdeflate_zlib_compress_bound(compressor_, bytes.size());
    if (bound > roomBytes_) {
        room_.reset(new char[bound]); // not cleared: pieces are large
        roomBytes_ = bound;
    }
    return {room_.get(),
            libdeflate_zlib_compress(compressor_, bytes.data(), bytes.size(), room_.get(), roomBytes_)};
}

} // namespace vxhost::pdf
