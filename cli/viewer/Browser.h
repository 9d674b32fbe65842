// Opens a page in the browser of the user.
#pragma once

#include "host/FileReading.h"

#include <string>
#include <sys/types.h>

namespace vxhost
{

class Browser
{
  public:
    // Starts what opens it: the program that $BROWSER names, with its arguments, else xdg-open. It may outlive this process. Throws
    // EarlyEnd when there can be no process.
    explicit Browser(const std::string &address);

    // Becomes readable when that program ends; -1: it has ended, or nobody will know.
    int Handle() const { return process_ < 0 ? -1 : handle_.Get(); }
    bool HasFailed(); // once it has ended

  private:
    pid_t process_ = -1; // -1: it has ended
    Descriptor handle_;
};

} // namespace vxhost
