// vx coverage: measures how much of each ink documents take, and of all inks together.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <string>

namespace vxhost
{

class CoverageCommand
{
  public:
    explicit CoverageCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    std::string limit_ = "300";
    std::string heatMap_;
    bool force_ = false;
    bool noMkdir_ = false;
    bool json_ = false;
    OptionTexts texts_;
};

} // namespace vxhost
