// Keeps the finished pieces of a long stream until the file around them can be written.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "host/Failure.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>

namespace vxhost::pdf
{

class PieceSpool
{
  public:
    virtual ~PieceSpool() = default;

    virtual void Clear() = 0;
    virtual void Add(std::span<const char> piece) = 0;
    virtual size_t Count() const = 0;
    // Hands the bytes of a piece out in parts, once: their room is given back, as the file around them takes as much.
    virtual void Take(size_t piece, const std::function<void(std::span<const char>)> &take) = 0;
    // After it nothing more is kept.
    virtual const Failure &FirstFailure() const = 0;
};

// A file where there are files, else memory. It is opened here: a program that has given up opening files by the time it
// reads a document can still spool. Where there is no place for one the spool has failed from the start.
std::unique_ptr<PieceSpool> MakePieceSpool(const PdfOptions &options);

} // namespace vxhost::pdf
