// vx check: looks for what a press would get wrong in documents.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "host/Failure.h"

#include <string>

namespace vxhost
{

class Check;
class OutputFiles;

class CheckCommand
{
  public:
    explicit CheckCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    Failure Tell(const std::string &input, Check *check, const OutputFiles &files) const;

    CommonOptionReader common_;
    std::string limits_;
    std::string html_;
    bool force_ = false;
    bool noMkdir_ = false;
    bool json_ = false;
    OptionTexts texts_;
};

} // namespace vxhost
