// vx render: turns documents into pictures, one after the other.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <string>

namespace vxhost
{

class RenderCommand
{
  public:
    explicit RenderCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    Status Merge(const CommonOptions &options, Messages *messages) const;

    CommonOptionReader common_;
    std::string output_;
    std::string jobs_;
    bool force_ = false;
    bool writesPremis_ = false;
    bool noMkdir_ = false;
    bool merge_ = false;
    OutputOptions outputOptions_;
};

} // namespace vxhost
