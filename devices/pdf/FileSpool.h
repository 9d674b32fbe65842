// A spool on disk.
#pragma once

#include "devices/pdf/PieceSpool.h"

#include <cstdint>
#include <vector>

namespace vxhost::pdf
{

// Owns one file, as a rule a temporary one without a name.
class FileSpool final : public PieceSpool
{
  public:
    explicit FileSpool(const PdfOptions &options);
    ~FileSpool() override;
    FileSpool(const FileSpool &) = delete;
    FileSpool &operator=(const FileSpool &) = delete;

    void Clear() override;
    void Add(std::span<const char> piece) override;
    size_t Count() const override { return pieces_.size(); }
    void Take(size_t piece, const std::function<void(std::span<const char>)> &take) override;
    const Failure &FirstFailure() const override { return failure_; }

  private:
    struct Piece {
        int64_t offset;
        size_t bytes;
        bool isTaken;
    };

    void Fail(int cause);

    int file_;
    std::vector<Piece> pieces_;
    int64_t end_ = 0;
    Failure failure_;
};

} // namespace vxhost::pdf
