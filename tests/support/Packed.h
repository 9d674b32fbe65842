// Packs text as archives have it, for tests.
#pragma once

#include <gtest/gtest.h>

#include <lzma.h>
#include <zlib.h>

#include <string>

namespace vxtest
{

inline std::string Gzip(const std::string &text)
{
    z_stream stream = {};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
    std::string input = text;
    stream.next_in = reinterpret_cast<Bytef *>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

inline std::string Xz(const std::string &text)
{
    std::string packed(lzma_stream_buffer_bound(text.size()), '\0');
    size_t size = 0;
    EXPECT_EQ(lzma_easy_buffer_encode(1, LZMA_CHECK_CRC64, nullptr,
                                      reinterpret_cast<const uint8_t *>(text.data()), text.size(),
                                      reinterpret_cast<uint8_t *>(packed.data()), &size, packed.size()),
              LZMA_OK);
    packed.resize(size);
    return packed;
}

} // namespace vxtest
