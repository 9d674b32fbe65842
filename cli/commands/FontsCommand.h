// vx fonts: tells which fonts documents ask for, what serves each and why; or which fonts there are.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

namespace vxhost
{

class FontsCommand
{
  public:
    explicit FontsCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    bool json_ = false;
    bool list_ = false;
};

} // namespace vxhost
