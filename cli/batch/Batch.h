// Runs a batch: entries of manifests become renderings, several at a time, and lines of JSON in the order of the manifests.
//
// Its memory does not grow with the number of documents, but up to a bound, by a few bytes an output by which it sees that
// none is written twice. Beyond, it sees that when the second is to take its name.
#pragma once

#include "cli/archive/Bag.h"
#include "cli/batch/Catalogue.h"
#include "cli/batch/Journal.h"
#include "cli/batch/Pack.h"
#include "cli/batch/Planner.h"
#include "cli/batch/Tally.h"
#include "cli/commands/Session.h"
#include "cli/options/Digest.h"
#include "cli/options/Manifest.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "jobs/Rendering.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vxhost
{

class Batch
{
  public:
    Batch(BatchOptions options, Session *session, Messages *messages);

    // Every failure has been told when this returns.
    Status Run(); // throws UsageError before the first document, EarlyEnd when the journal cannot be written

  private:
    // Says what became of an output that is packed, until it is.
    struct Unpacked {
        std::string name;
        Descriptor file;
    };

    // A document on its way.
    struct Slot {
        size_t number = 0; // from 1
        ManifestEntry entry;
        FileDigest digest; // of the input, where it is needed
        uint64_t job = 0;  // in the journal
        Tally::Clock::time_point began;
        bool wasDoneBefore = false; // by an earlier run
        size_t sharesWith = 0;      // number of an equal document with the same output; 0: there is none
        std::vector<const Format *> formats;            // of the outputs
        std::shared_ptr<std::deque<Unpacked>> unpacked; // null: outputs are files
        std::vector<JournalOutput> outputs;             // with their digests, where somebody asks for these
        std::unique_ptr<Rendering> rendering;           // while it is at work
        Result result;
        std::optional<Summary> summary; // none: it is not done
        bool hasThumbnail = false;      // in the catalogue
        bool isPassedOver = false;      // it is a file of a folder, and turned out to be no drawing
    };

    void OpenJournal();
    void OpenPack();
    void ClosePack();
    void HearInterrupt();
    bool IsAtEnd() const;
    Status End();

    bool StartWhatFits();
    bool HasRoom() const;
    bool IsOwnOutput(const ManifestEntry &entry) const;
    void Start(size_t number, ManifestEntry entry);
    void StartTask(RenderTask task);
    RenderTask PlanFor(Slot *slot);
    void CheckOutput(const std::string &path, const std::string &place) const;
    void ClaimOutputs(RenderTask *task, Slot *slot, uint64_t content);
    uint64_t JobOf(const Slot &slot, const RenderTask &task) const;
    bool IsForLater(const Slot &slot) const;
    bool WasDone(const RenderTask &task, Slot *slot) const;
    RenderTask::Output ThumbnailFor(const Slot &slot, const Settings &settings) const;

    void FinishWhatEnded();
    bool AreThere(const JournalEntry &done, const RenderTask &task) const;
    bool HasRecords(const RenderTask &task) const;
    void Record(Slot *slot);
    std::string TakeOutputs(Slot *slot);
    void Enter(const Slot &slot);
    void AddToBag(const Slot &slot);
    void CloseBag();
    bool PrintWhatIsDue();
    bool Print(const Slot &slot);
    void ShowProgress();
    std::vector<Worker *> Workers() const;

    // An output that has a document.
    struct Writer {
        size_t number;    // of the document
        uint64_t content; // stands for what is drawn, where that names the output; else 0
    };

    BatchOptions options_;
    Planner planner_;
    Session *session_;
    Messages *messages_;
    ManifestReader manifest_;
    std::deque<Slot> slots_;                       // in order; those that are done wait for those before them
    std::optional<size_t> total_;                  // documents
    timespec began_ = {};                          // by the clock of file systems
    std::unordered_map<uint64_t, Writer> writers_; // by a hash of the output's place; the first ones
    size_t running_ = 0;
    size_t numbered_ = 0; // entries
    Tally tally_;
    Tally::Clock::time_point shown_; // when progress was
    Status worst_ = Status::Done;

    int interrupts_ = -1; // is readable when there is one
    BatchEnd end_ = BatchEnd::Whole;

    std::unique_ptr<Catalogue> catalogue_; // null: none is made
    std::unique_ptr<Journal> journal_;     // null: none is kept
    std::unique_ptr<Bag> bag_;             // null: none is made
    std::unique_ptr<Pack> pack_;           // null: outputs are files
    // Those that several runs have begun and none has ended, with their numbers: left for last.
    std::deque<std::pair<size_t, ManifestEntry>> later_;
    bool isLater_ = false; // their time has come
};

} // namespace vxhost
