// Colour spaces that are inks: what is painted in one leaves the other inks as they are, under overprint. A spot ink makes a plate of
// its own on a press, and is its four process inks everywhere else.
#pragma once

#include "devices/pdf/PdfFile.h"
#include "host/drawing/Paint.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// By their addresses, in the order in which a space has them.
using Inks = std::vector<const SpotInk *>;

inline constexpr size_t kInkCount = 4;
extern const SpotInk kProcessInks[kInkCount];

// A colour taken apart: the spot inks that PDF can have, then what process inks stand for the rest, each as far as it is there.
struct InkShares {
    static constexpr size_t kMost = std::tuple_size_v<decltype(Colour::spots)> + kInkCount;

    std::array<const SpotInk *, kMost> inks = {};
    std::array<double, kMost> amounts = {};
    size_t count = 0;
    size_t spotCount = 0; // of those

    friend bool operator==(const InkShares &, const InkShares &) = default;
};

// A mixture in which a name would stand twice, as that of one ink mixed in two ways, has no spot inks.
InkShares FindShares(const Colour &colour);

// Returns whether no two have one name: a space cannot have an ink twice.
bool HaveOwnNames(std::span<const SpotInk *const> inks);

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
