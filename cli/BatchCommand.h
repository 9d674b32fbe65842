// vx batch: documents and manifests in, pictures and one line of JSON a document out.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/Manifest.h"
#include "cli/Messages.h"
#include "cli/RenderWords.h"
#include "cli/Status.h"

#include <string>
#include <vector>

namespace vxhost
{

class BatchCommand
{
  public:
    explicit BatchCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    std::vector<BatchSource> ReadSources(const std::vector<std::string> &inputs) const;
    size_t ReadJobs() const;

    CommonOptionReader common_;
    std::vector<std::string> manifests_;
    bool endInNul_ = false;
    std::string output_;
    bool allowOutside_ = false;
    std::string jobs_;
    RenderWords words_;
};

} // namespace vxhost
