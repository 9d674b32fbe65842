// vx batch: documents and manifests in, pictures and one line of JSON a document out.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/options/Manifest.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

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
    OutputOptions words_;
};

} // namespace vxhost
