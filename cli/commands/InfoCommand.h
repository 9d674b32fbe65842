// vx info: tells what a document is, what it declares and what it uses, without drawing it.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

namespace vxhost
{

class InfoCommand
{
  public:
    explicit InfoCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    bool json_ = false;
};

} // namespace vxhost
