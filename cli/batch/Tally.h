// Counts what became of the documents of a batch, and says it: while it runs, and in the end.
#pragma once

#include "cli/report/Summary.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace vxhost
{

enum class BatchEnd {
    Whole,
    Asked,      // to end: what was begun is finished
    Interrupted // what was begun is lost
};

class Tally
{
  public:
    using Clock = std::chrono::steady_clock;

    // The number of documents; none: nobody knows it yet.
    void Begin(std::optional<size_t> documents, Clock::time_point now);
    void Add(const Summary &summary, bool wasDoneBefore);
    void TakeBack();                                           // a document that turned out to be none
    void AddPassedOver(size_t files) { passedOver_ += files; } // that never counted as documents

    // "213 of 10,114 done, 42 a second, 3 min 54 s left, 1 failed, 14 with warnings"
    std::string ProgressText(Clock::time_point now) const;
    // One line. goesOn: a journal is kept, with which a later run goes on.
    std::string EndText(BatchEnd end, bool goesOn, Clock::time_point now) const;
    // One line of JSON.
    std::string EndJson(BatchEnd end, Status status, Clock::time_point now) const;

  private:
    double SecondsTo(Clock::time_point now) const;
    size_t Finished() const { return done_ + failed_; }
    std::string CountText() const;

    std::optional<size_t> documents_;
    Clock::time_point began_;
    size_t done_ = 0;       // well
    size_t warned_ = 0;     // of these
    size_t failed_ = 0;     // in one way or another
    size_t doneBefore_ = 0; // of all: by an earlier run
    size_t passedOver_ = 0;
};

} // namespace vxhost
