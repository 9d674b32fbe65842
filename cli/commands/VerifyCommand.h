// vx verify: tells whether an output is what this version makes of a drawing.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

namespace vxhost
{

class VerifyCommand
{
  public:
    explicit VerifyCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    OutputOptions outputOptions_;
    bool json_ = false;
};

} // namespace vxhost
