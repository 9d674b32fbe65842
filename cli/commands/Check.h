// Does the worker's part of a check: looks at the plates of a document, then at what paints them, and tells.
#pragma once

#include "cli/report/PressPage.h"
#include "devices/preflight/Findings.h"
#include "devices/preflight/InkMap.h"
#include "devices/raster/InkCoverage.h"
#include "devices/raster/PlateFiles.h"
#include "devices/raster/PlateTee.h"
#include "jobs/OutputFiles.h"
#include "jobs/PlateRendering.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct CheckTask {
    std::string input;
    Settings settings;
    PreflightLimits limits;
    bool json = false;
    bool makesPage = false; // the second output is a page of HTML
};

class Check
{
  public:
    explicit Check(CheckTask task);
    Check(const Check &) = delete;
    Check &operator=(const Check &) = delete;

    // Takes the plates; the findings go to the first of the files. This object must outlive the sink.
    std::unique_ptr<PlateSink> MakeSink(const OutputFiles &files);
    // Goes through the document once more, for a page alone.
    Outcome DrawPicture(Reading &reading);
    // Goes through it a last time, and tells what was found.
    Outcome Look(Reading &reading);

  private:
    Failure Tell(const Page &page, const Outcome &outcome);

    CheckTask task_;
    const OutputFiles *files_ = nullptr;
    CoverageMeter coverage_;
    InkMap inks_;
    PressPage page_;
    PlateFiles plates_;
    Findings findings_;
};

} // namespace vxhost
