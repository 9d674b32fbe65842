// vx text: prints what documents say in words.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

namespace vxhost
{

class TextCommand
{
  public:
    explicit TextCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    CommonOptionReader common_;
    OptionTexts texts_; // what is said of layers
    bool json_ = false;
};

} // namespace vxhost
