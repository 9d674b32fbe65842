// Colour spaces that are inks: what is painted in one leaves the other inks as they are, under overprint. A spot ink makes a plate of
// its own on a press, and is its four process inks everywhere else.
#pragma once

#include "devices/colour/InkShares.h"
#include "devices/pdf/PdfFile.h"

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

// By their addresses, in the order in which a space has them.
using Inks = std::vector<const SpotInk *>;

// The spaces that a page paints with, by name.
class InkSpaces
{
  public:
    // The file must outlive this object. Where each ink has one look, the first of a name decides how all of it are shown.
    InkSpaces(PdfFile *file, bool hasOneLook) : file_(file), hasOneLook_(hasOneLook) {}

    // The space of these inks, each 0 none and 1 full.
    Reference Make(Inks inks);
    Reference MakeBlack() { return Make({&kProcessInks[kInkCount - 1]}); }
    // Returns the longest name of the inks that were used.
    std::string_view LongestName() const { return longest_; }

    // Returns the name of the resource.
    std::string NameOf(std::span<const SpotInk *const> inks);
    void AddTo(Dictionary *resources);

  private:
    const SpotInk *LookOf(const SpotInk *ink);

    PdfFile *file_;
    bool hasOneLook_;
    std::map<std::string_view, const SpotInk *> looks_; // of names
    std::string_view longest_;
    std::vector<Inks> spaces_; // by number
};

} // namespace vxhost::pdf
