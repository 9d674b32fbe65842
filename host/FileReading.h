// Opens and reads what a user names, whatever it is: a pipe that nobody writes to and a device without end cost no more
// than the limits allow.
#pragma once

#include "host/ResizableBytes.h"
#include "host/SystemText.h"

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <sys/types.h>

namespace vxhost
{

// The kinds of files that may be opened: each allows what those before it allow.
enum class FileKinds { Regular, Pipes, All };

// "a pipe" for a mode that stat tells; empty for a file that is allowed. Never allowed is a directory.
std::string WhichKindIsRefused(mode_t mode, FileKinds allowed);

// Opens without waiting for somebody at the other end of a pipe. -1 on failure, with error one line for a person.
int OpenToRead(const std::string &path, FileKinds allowed, std::string *error);

class Descriptor
{
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int Get() const { return number_; }
    void Take(int number) { number_ = number; } // it must hold none yet

  private:
    int number_;
};

struct ReadLimits {
    size_t bytes = std::numeric_limits<size_t>::max();
    double seconds = 0; // 0: none
};

enum class ReadEnd { Whole, Failed, TooLong, TooLate };

// The bytes that a descriptor delivered, to its end or to the limit.
class HeldBytes
{
  public:
    // Takes no more memory than the limit and a byte. On ReadEnd::Failed errno says why.
    ReadEnd ReadAll(int descriptor, const ReadLimits &limits);
    std::span<const std::byte> Get() const { return {bytes_.Get(), length_}; }

  private:
    ResizableBytes bytes_;
    size_t length_ = 0;
};

} // namespace vxhost
