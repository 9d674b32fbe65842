// Keeps a journal of what a batch does, in lines of JSON, so that a later run can go on where this one ended, however it ended.
//
//   {"journal":"vx batch",...}            begins a run: with what it was done
//   {"begun":"0123456789abcdef",...}      a document is begun; the digits are its job: the document, its outputs and options
//   {"done":"0123456789abcdef",...}       it is done, well or not
//
// A line is written in one call when it is due. One run at a time writes to a journal. A last line that was torn when a run was
// killed is taken away when the next begins.
#pragma once

#include "cli/options/Digest.h"
#include "cli/report/Status.h"
#include "host/FileReading.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vxhost
{

struct JournalOutput {
    std::string path;
    FileDigest digest;
};

struct JournalEntry {
    size_t number = 0;
    std::string input;
    FileDigest digest; // of the input
    std::vector<JournalOutput> outputs;
    int64_t milliseconds = 0;
    Status status = Status::Done;
    std::string error; // empty: there was none
    std::vector<std::string> warnings;
    bool isPassedOver = false; // it is a file of a folder, and no drawing
};

struct JournalLine {
    enum class Kind { Run, Begun, Done };
    Kind kind = Kind::Run;
    uint64_t job = 0;      // of all but runs
    uint64_t at = 0;       // where it begins
    std::string_view text; // with its end
};

// Calls take for each whole line that is one of a journal, and returns how many bytes all whole lines are.
uint64_t ReadJournalLines(int descriptor, const std::function<void(const JournalLine &line)> &take);

// Returns whether the file begins as a journal does, or as one whose first line was torn.
bool IsJournal(int descriptor);

// Finds what earlier runs did, by job. Holds sixteen bytes for each document that is done, and never more.
class JournalIndex
{
  public:
    // Takes the lines of a descriptor's file up to its last whole one, and returns how many bytes these are.
    uint64_t Read(int descriptor);

    // Returns where the last line about the end of the job begins.
    std::optional<uint64_t> Find(uint64_t job) const;
    // Returns how often the job was begun since it was last done.
    int BegunInVain(uint64_t job) const;

    struct Done {
        uint64_t job, at;
    };
    const std::deque<Done> &AllDone() const { return done_; } // one a job, in the order of the jobs

  private:
    void Settle();

    std::deque<Done> done_;                   // which grows without a copy
    std::unordered_map<uint64_t, int> begun_; // jobs that are not done
};

class Journal
{
  public:
    // Opens the journal, or makes it. Throws UsageError for a file that is none, EarlyEnd when it cannot be written.
    explicit Journal(const std::string &path);

    // Each adds a line. They throw EarlyEnd when it cannot be written.
    void BeginRun(const nlohmann::ordered_json &with);
    void Begin(uint64_t job, const std::string &input);
    void Finish(uint64_t job, const JournalEntry &entry);

    void Add(std::string_view line); // as another journal has it, with its end

    // Returns what became of the job in an earlier run; none: it was not done.
    std::optional<JournalEntry> Find(uint64_t job) const;
    int BegunInVain(uint64_t job) const { return index_.BegunInVain(job); }
    bool WasMended() const { return wasMended_; } // its last line was torn
    size_t CountDone() const { return index_.AllDone().size(); }

  private:
    [[noreturn]] void Fail(int error) const;

    std::string path_;
    Descriptor file_;
    JournalIndex index_;
    bool wasMended_ = false;
};

} // namespace vxhost
