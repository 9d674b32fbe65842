// vx batch: manifests in, pictures and one line of JSON a document out.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/Messages.h"
#include "cli/RenderWords.h"
#include "cli/Status.h"

#include <string>

namespace vxhost
{

class BatchCommand
{
  public:
    explicit BatchCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    size_t ReadJobs() const;

    CommonOptionReader common_;
    std::string output_;
    std::string jobs_;
    RenderWords words_;
};

} // namespace vxhost
