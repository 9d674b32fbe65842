// Takes from the process what its work does not need: files, programs, sockets, other processes.
//
// What is open stays open. Linux only: Landlock for files, seccomp for the rest. There is no way back.
#pragma once

#include "host/FileReading.h"
#include "library/Result.h"

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace vxhost
{

// What stays in reach of files, as the kernel knows it: made once, for any number of processes that are forked later. What is
// not there when it is named is left out.
class FileRules
{
  public:
    FileRules(); // nothing does
    // A regular file, where links lead to now. A folder would be all that is in it, and is left out.
    void Read(const std::string &file);
    void ReadAll();
    void WriteIn(const std::string &folder); // files in it can be made, changed and removed

    int Get() const { return rules_.Get(); } // a descriptor; -1: the kernel has none
    int Error() const { return error_; }     // why

  private:
    void Allow(const std::string &path, uint64_t access, mode_t kind);

    uint64_t handled_ = 0; // what can be taken away
    Descriptor rules_;
    int error_ = 0;
};

enum class SystemCalls {
    OfReading,     // memory, clocks, open files, files that may be read
    OfListingFonts // and folders, and files of a cache
};

// What the kernel lacks or refuses is told; the rest is in force nevertheless.
Confinement EnterSandbox(const FileRules &rules, SystemCalls calls);

} // namespace vxhost
