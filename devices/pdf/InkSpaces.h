// Colour spaces that are inks: what is painted in one leaves the other inks as they are, under overprint. A spot ink makes a plate of
// its own on a press, and is its four process inks everywhere else.
#pragma once

#include "devices/colour/InkShares.h"
#include "devices/pdf/PdfFile.h"

#include <span>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// By their addresses, in the order in which a space has them.
using Inks = std::vector<const SpotInk *>;

// The space of these inks, each 0 none and 1 full.
Reference InkSpace(const Inks &inks, PdfFile *file);

// The spaces that a page paints with, by name.
class InkSpaces
{
  public:
    explicit InkSpaces(PdfFile *file) : file_(file) {} // which must outlive this object

    // Returns the name of the resource.
    std::string NameOf(std::span<const SpotInk *const> inks);
    void AddTo(Dictionary *resources) const;

  private:
    PdfFile *file_;
    std::vector<Inks> spaces_; // by number
};

} // namespace vxhost::pdf
