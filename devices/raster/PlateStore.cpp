#include "devices/raster/PlateStore.h"

#include <algorithm>
#include <libdeflate.h>
#include <new>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr int kLevel = 1; // of deflate: what is kept is read once
constexpr size_t kStripBytes = size_t{1} << 16;

} // namespace

PlateStore::PlateStore(int width, int height, ScratchBytes scratch)
    : width_(static_cast<size_t>(width)), height_(static_cast<size_t>(height)),
      rowsOfStrip_(std::clamp<size_t>(kStripBytes / width_, 1, height_)), scratch_(std::move(scratch)),
      compressor_(libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor),
      decompressor_(libdeflate_alloc_decompressor(), libdeflate_free_decompressor)
{
    if (compressor_ == nullptr || decompressor_ == nullptr)
        throw std::bad_alloc();
    compressed_.resize(libdeflate_deflate_compress_bound(compressor_.get(), width_ * rowsOfStrip_));
}

Failure PlateStore::AddRow(std::span<const uint8_t *const> plates)
{
    if (row_ == 0) {
        plates_.resize(plates_.size() + plates.size());
        rows_.resize(std::max(rows_.size(), plates.size()));
    }
    const size_t line = row_ % rowsOfStrip_;
    const bool isWhole = line + 1 == rowsOfStrip_ || row_ + 1 == height_;
    Failure failure;
    for (size_t i = 0; i < plates.size() && !failure; ++i) {
        rows_[i].resize(width_ * rowsOfStrip_);
        std::copy_n(plates[i], width_, &rows_[i][line * width_]);
        if (isWhole)
            failure = Keep(rows_[i], (line + 1) * width_, plates_.size() - plates.size() + i);
    }
    row_ = (row_ + 1) % height_;
    return failure;
}

Failure PlateStore::ReadRow(int y, std::vector<const uint8_t *> *rows)
{
    const auto row = static_cast<size_t>(y);
    const size_t strip = row / rowsOfStrip_, line = row % rowsOfStrip_;
    rows_.resize(plates_.size());
    for (size_t i = 0; i < plates_.size(); ++i) {
        if (line == 0) {
            if (Failure failure = Fetch(plates_[i][strip], SizeOfStrip(strip), &rows_[i]))
                return failure;
        }
        rows->push_back(&rows_[i][line * width_]);
    }
    return {};
}

Failure PlateStore::Keep(const Bytes &rows, size_t size, size_t plate)
{
    const size_t length = libdeflate_deflate_compress(compressor_.get(), rows.data(), size,
                                                      compressed_.data(), compressed_.size());
    plates_[plate].push_back({used_, length});
    used_ += length;
    return scratch_.add(std::as_bytes(std::span(compressed_).first(length)));
}

Failure PlateStore::Fetch(const Strip &strip, size_t size, Bytes *rows)
{
    rows->resize(width_ * rowsOfStrip_);
    const std::span<uint8_t> bytes = std::span(compressed_).first(strip.size);
    Failure failure = scratch_.read(strip.at, std::as_writable_bytes(bytes));
    if (!failure && libdeflate_deflate_decompress(decompressor_.get(), bytes.data(), bytes.size(),
                                                  rows->data(), size, nullptr) != LIBDEFLATE_SUCCESS)
        failure = {FailureKind::CannotWrite, "what was kept of the plates has changed"};
    return failure;
}

size_t PlateStore::SizeOfStrip(size_t strip) const
{
    return width_ * std::min(rowsOfStrip_, height_ - strip * rowsOfStrip_);
}

} // namespace vxhost::raster
