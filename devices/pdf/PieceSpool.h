// Keeps the finished pieces of a long stream on disk until the file around them can be written.
//
// Owns one file, as a rule a temporary one without a name. It is opened when the spool is made: a program that has
// given up opening files by the time it reads a document can still spool.
#pragma once

#include "host/Failure.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vxhost::pdf
{

class PieceSpool
{
  public:
    // Uses a copy of the descriptor, or for -1 a temporary file. A spool without a file has failed from the start.
    explicit PieceSpool(int descriptor);
    ~PieceSpool();
    PieceSpool(const PieceSpool &) = delete;
    PieceSpool &operator=(const PieceSpool &) = delete;

    void Clear();
    void Add(std::span<const char> piece);
    size_t Count() const { return pieces_.size(); }
    // Hands the bytes of a piece out in parts, once: their room on disk is given back, as the file around them takes as
    // much.
    void Take(size_t piece, const std::function<void(std::span<const char>)> &take);

    // After the first failure nothing more is kept.
    const Failure &FirstFailure() const { return failure_; }

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
