// vx trace: prints every call that the plug-in makes on the procedure table, one a line.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

namespace vxhost
{

class TraceCommand
{
  public:
    explicit TraceCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    bool json_ = false;
    bool structure_ = false;
};

} // namespace vxhost
