// Lists the fonts of the machine when a document first needs them, in a confined process, which looks into files of any origin;
// and keeps the list for the run.
#pragma once

#include "host/fonts/FontconfigFonts.h"
#include "jobs/Worker.h"
#include "library/Result.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vxhost
{

// Returns the limits of the process that lists fonts, in a run with these. There is always a clock, since a pipe among the files of fonts would
// hold it for ever; and what it writes is no output.
WorkerLimits LimitsOfListing(WorkerLimits limits);

class MachineFonts
{
  public:
    // The limits are those of the run. The process looks into nothing if it has to be confined and cannot be.
    MachineFonts(FontSources sources, const WorkerLimits &limits, bool mustBeConfined);

    const std::shared_ptr<const FontList> &List() const
    {
        return list_; // null: there is none yet, or can be none
    }
    const Fault &WhyNone() const { return fault_; }
    const Confinement &Confined() const { return confinement_; }
    uint32_t Omitted() const { return omitted_; } // how many fonts were too many to list

    // Returns the process at work, and starts it if need be; null: there is nothing to wait for.
    Worker *Listing();
    // Takes the list of a process that has ended. It may be called any number of times.
    void TakeList();

  private:
    void Start();
    std::string ListFonts() const;

    FontSources sources_;
    WorkerLimits limits_;
    bool mustBeConfined_;
    std::unique_ptr<Worker> worker_;
    std::shared_ptr<const FontList> list_;
    uint32_t omitted_ = 0;
    Confinement confinement_; // what confined the process
    Fault fault_;
};

} // namespace vxhost
