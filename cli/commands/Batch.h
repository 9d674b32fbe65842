// Runs a batch: entries of manifests become renderings, several at a time, and lines of JSON in the order of the manifests.
//
// Its memory does not grow with the number of documents, but for a few bytes an output, by which it sees that none is
// written twice.
#pragma once

#include "cli/commands/Session.h"
#include "cli/options/Manifest.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "jobs/Rendering.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vxhost
{

struct BatchOptions {
    std::vector<BatchSource> sources;
    LineEnd lineEnd = LineEnd::Newline; // in manifests
    std::string output;                 // pattern for entries that have none; empty: there is none
    bool allowOutside = false;          // outputs may lie anywhere
    OutputOptions outputOptions;        // for all entries
    Settings settings;                  // what they mean
    size_t jobs = 1;
};

class Batch
{
  public:
    Batch(BatchOptions options, Session *session, Messages *messages);

    // Every failure has been told when this returns.
    Status Run();

  private:
    // A document on its way.
    struct Slot {
        size_t number = 0; // from 1
        ManifestEntry entry;
        std::unique_ptr<Rendering> rendering; // while it is at work
        Result result;
        std::optional<Summary> summary; // none: it is not done
    };

    bool StartWhatFits();
    bool HasRoom() const;
    void Start(ManifestEntry entry);
    RenderTask PlanFor(const Slot &slot);
    void CheckOutput(const std::string &path, const std::string &place) const;
    void ClaimOutputs(const RenderTask &task, size_t number);
    void FinishWhatEnded();
    bool PrintWhatIsDue();
    void ShowProgress();
    std::vector<Worker *> Workers() const;

    BatchOptions options_;
    Session *session_;
    Messages *messages_;
    ManifestReader manifest_;
    std::deque<Slot> slots_;                       // in order; those that are done wait for those before them
    std::unordered_map<uint64_t, size_t> writers_; // hash of an output's place → number of its document
    size_t running_ = 0;
    size_t started_ = 0, printed_ = 0, failed_ = 0;
    Status worst_ = Status::Done;
};

} // namespace vxhost
