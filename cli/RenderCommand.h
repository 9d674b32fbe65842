// vx render: documents to pictures, each in a worker process, each output whole or not at all.
#pragma once

#include "cli/Messages.h"
#include "cli/RenderOptions.h"
#include "cli/Status.h"

namespace vxhost
{

class RenderCommand
{
  public:
    explicit RenderCommand(CLI::App *command) : reader_(command) {}
    Status Run(Messages *messages) const;

  private:
    RenderOptionReader reader_;
};

} // namespace vxhost
