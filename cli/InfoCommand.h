// vx info: what a document is, what it declares, and what it uses, without drawing it.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/Messages.h"
#include "cli/Status.h"

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
