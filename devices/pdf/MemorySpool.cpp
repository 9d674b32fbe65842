#include "devices/pdf/MemorySpool.h"

#include <utility>

namespace vxhost::pdf
{

void MemorySpool::Clear()
{
    pieces_.clear();
    held_ = 0;
    failure_ = {};
}

void MemorySpool::Add(std::span<const char> piece)
{
    if (failure_)
        return;
    if (piece.size() > most_ - held_) {
        failure_ = {FailureKind::OutOfMemory,
                    "the page takes more than " + std::to_string(most_) +
                        " bytes before its file is written: allow more with --max-memory"};
        return;
    }
    pieces_.emplace_back(std::in_place, piece.begin(), piece.end());
    held_ += piece.size();
}

void MemorySpool::Take(size_t piece, const std::function<void(std::span<const char>)> &take)
{
    const std::optional<std::vector<char>> taken = std::exchange(pieces_[piece], std::nullopt);
    if (taken)
        take(*taken);
    else
        failure_ = {FailureKind::SpoolFailed, "a piece of the page is asked for twice: report it"};
}

} // namespace vxhost::pdf
