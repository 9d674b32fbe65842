// vx view: shows documents in the user's browser.
#pragma once

#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace vxhost
{

class ViewCommand
{
  public:
    explicit ViewCommand(CLI::App *command);

    // Becomes another program, and returns nothing. Throws UsageError when there is none.
    Status Run(Messages *messages) const;

  private:
    std::vector<std::string> inputs_;
    std::string port_ = "0";
    bool opensNoBrowser_ = false;
};

} // namespace vxhost
