// The spot inks that a page paints with, each a colour space of its own: a plate of its own on a press, and its four process inks
// everywhere else.
#pragma once

#include "devices/pdf/PdfFile.h"
#include "host/drawing/Paint.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// The space of one spot ink, 0 none and 1 full.
QPDFObjectHandle SpotSpace(const SpotInk &ink);

class SpotSpaces
{
  public:
    // Returns the name of the ink's resource.
    std::string NameOf(const SpotInk &ink);
    void AddTo(PdfFile *file, QPDFObjectHandle *resources) const;

  private:
    std::vector<const SpotInk *> inks_; // by number
};

} // namespace vxhost::pdf
