// Looks at the plates of a drawing, then at what paints them, and tells what a press would get wrong.
#pragma once

#include "devices/preflight/Findings.h"
#include "devices/preflight/InkMap.h"
#include "devices/raster/InkCoverage.h"
#include "devices/raster/PlateFiles.h"
#include "devices/raster/PlateTee.h"
#include "library/Options.h"
#include "library/press/PressPage.h"

#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct CheckTask {
    std::string name; // of the drawing, in what is told; empty: it has none
    Settings settings;
    PreflightLimits limits;
    bool makesPage = false; // of HTML
};

// The drawing is gone through in the order of these: with a device of plates that has the sink, for a page DrawPicture, then Look. Then it tells.
class Check
{
  public:
    explicit Check(CheckTask task);
    Check(const Check &) = delete;
    Check &operator=(const Check &) = delete;

    // Takes the plates. This object must outlive the sink.
    std::unique_ptr<PlateSink> MakeSink();
    Outcome DrawPicture(Reading &reading);
    Outcome Look(Reading &reading);

    // Returns a line a finding.
    std::string Text() const;
    const nlohmann::ordered_json &Json() const { return json_; }
    // Can be called once.
    Failure WritePage(const ByteSink &sink);

  private:
    CheckTask task_;
    CoverageMeter coverage_;
    InkMap inks_;
    PressPage page_;
    PlateFiles plates_;
    Findings findings_;
    std::vector<SpotUse> spots_;
    nlohmann::ordered_json json_;
};

} // namespace vxhost
