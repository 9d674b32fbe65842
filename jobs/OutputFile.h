// Brings one result to its place, where it appears whole, or not at all.
//
// A file is written without a name in the folder of its place, or under a temporary name where the file system has no files
// without one, and takes its own name at the end. A result for standard output, a device or a pipe is kept in an unnamed
// file and copied at the end. A document that fails half way leaves no trace, and an end by force none but the temporary name.
#pragma once

#include "host/FileReading.h"
#include "library/Result.h"

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

// Writes all. Returns false with errno set when it cannot.
bool WriteAll(int descriptor, std::string_view bytes);

struct OutputRules {
    FileKinds kinds = FileKinds::All; // that may be there already
    bool makesFolders = false;        // those that it lies in are made where there are none
    // A file that was written since then is not replaced. It is by the clock of file systems; none: any file is.
    std::optional<timespec> onceSince = {};
    bool staysInMemory = false; // one that gets no name does: there may be no folder for it
};

class OutputFile
{
  public:
    // "-" is standard output. Returns null with the fault when it fails.
    static std::unique_ptr<OutputFile> Create(const std::string &path, const OutputRules &rules,
                                              Fault *fault);
    // Makes one that never gets a name, and cannot be committed.
    static std::unique_ptr<OutputFile> CreateUnnamed(const OutputRules &rules, Fault *fault);
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile(); // gives up what was not committed

    int Descriptor() const { return descriptor_; } // readable, writable, seekable

    // Forgets what was written so far.
    void Empty();
    Fault Commit();

  private:
    explicit OutputFile(const OutputRules &rules) : rules_(rules) {}
    Fault OpenTarget(const std::string &path, mode_t mode);
    Fault CreateBeside();
    template <typename MakeName>
    bool TakeTemporaryName(const MakeName &makeName);
    Fault Spool();
    Fault TakeName();
    Fault CopyTo(int target);

    OutputRules rules_;
    std::string path_;      // links resolved
    std::string temporary_; // name in the same folder; empty: it has none
    int descriptor_ = -1;
    int target_ = -1; // where a spooled result goes
};

} // namespace vxhost
