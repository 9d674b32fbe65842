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

// Returns whether PDF can have an ink of that name. Two names mean all inks and none; what is painted in such an ink is painted in
// process colours.
bool CanBeSpot(const SpotInk &ink);

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
