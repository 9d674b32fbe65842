// vx render: documents to pictures, one after the other.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/Messages.h"
#include "cli/RenderWords.h"
#include "cli/Status.h"

#include <string>

namespace vxhost
{

class RenderCommand
{
  public:
    explicit RenderCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    std::string output_;
    bool force_ = false;
    RenderWords words_;
};

} // namespace vxhost
