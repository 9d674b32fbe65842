// Writes lines to standard output in large pieces, as a worker may. After a failure it drops the rest.
#pragma once

#include "host/Failure.h"

#include <string>
#include <string_view>

namespace vxhost
{

class LineWriter
{
  public:
    void Add(std::string_view text); // with its line ends
    // Returns the first failure.
    Failure Finish();

  private:
    void Flush();

    std::string buffer_;
    Failure failure_;
};

} // namespace vxhost
