// Takes from the process what its work does not need: files, programs, sockets, other processes.
//
// What is open stays open. Linux only: Landlock for files, seccomp for the rest. There is no way back.
#pragma once

#include "host/FileReading.h"
#include "library/Result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <linux/filter.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vxhost
{

// Says, in the kernel's form, which files stay in reach. It is made once, for any number of processes that are forked later. A
// file that is not there when it is named is left out.
class FileRules
{
  public:
    FileRules(); // nothing does
    // Lets a regular file be read, that to which links lead now. A folder is left out: it would be all that is in it.
    void Read(const std::string &file);
    void ReadAll();
    void WriteIn(const std::string &folder); // files in it can be made, changed and removed

    int Get() const { return rules_.Get(); } // a descriptor; -1: the kernel has no such rules
    int Error() const { return error_; }     // the errno that says why

  private:
    void Allow(const std::string &path, uint64_t access, mode_t kind);

    uint64_t handled_ = 0; // what can be taken away
    Descriptor rules_;
    int error_ = 0;
};

enum class SystemCalls {
    OfReading,      // those for memory, clocks, open files and files that may be read
    OfListingFonts, // those for folders and the files of a cache too
    OfServing // those for a socket that listens already, and the end of a process that was started before
};

// Says, in the kernel's form, which calls stay allowed. It is made once, for any number of processes that are forked later: to
// make it takes longer than to confine a process by it.
class CallRules
{
  public:
    explicit CallRules(SystemCalls calls);

    // Returns the rules for this process, which may send signals to itself. There are none if there is an error.
    std::vector<sock_filter> ForProcess(pid_t process) const;
    int Error() const { return error_; } // the errno that says why

  private:
    std::vector<sock_filter> rules_; // for nobody
    size_t process_ = 0;             // where they name the process
    int error_ = 0;
};

// Returns what confines the process, all of its threads. What the kernel lacks or refuses is left out, and the rest is in force.
// makeThreads makes those that the process is to have; null: none. They begin without files in reach, and no more can be made
// afterwards.
Confinement EnterSandbox(const FileRules &files, const CallRules &calls,
                         const std::function<void()> &makeThreads = nullptr);

} // namespace vxhost
