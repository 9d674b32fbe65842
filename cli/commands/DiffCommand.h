// vx diff: tells what differs between two drawings, or between a drawing and a file.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <string>
#include <vector>

namespace vxhost
{

class Session;
struct DifferenceTask;

class DiffCommand
{
  public:
    explicit DiffCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    void CheckOutput(const std::vector<std::string> &inputs) const;
    Status Compare(const DifferenceTask &task, Session *session, Messages *messages) const;

    CommonOptionReader common_;
    OptionTexts texts_;
    std::string output_, tolerance_ = "0", only_;
    bool sideBySide_ = false, json_ = false, force_ = false;
};

} // namespace vxhost
