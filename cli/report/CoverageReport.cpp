#include "cli/report/CoverageReport.h"

#include "cli/report/Summary.h"
#include "host/reading/Utf8.h"

#include <fmt/format.h>

namespace vxhost
{

namespace
{

constexpr double kPercent = 100;
constexpr double kSquareMillimetres = 25.4 / 72 * 25.4 / 72; // of a square point

// The first bytes are characters, not letters: an ink's name may be in any script.
std::string Row(const std::string &label, const std::string &value)
{
    return fmt::format("  {:<16}{}\n", Printable(label), value);
}

} // namespace

std::string CoverageText(const std::string &input, const InkCoverage &coverage)
{
    std::string text = InputName(input) + "\n";
    for (const InkCoverage::Ink &ink : coverage.inks)
        text += Row(ink.name, fmt::format("{:6.2f} %", ink.mean * kPercent));
    text += Row("all inks", fmt::format("{:6.2f} %", coverage.mean * kPercent));
    text += Row("at most", coverage.mostAt
                               ? fmt::format("{:6.1f} %, first at {:.1f}, {:.1f} pt",
                                             coverage.most * kPercent, coverage.mostAt->x, coverage.mostAt->y)
                               : "no ink");
    return text + Row(fmt::format("above {:g} %", coverage.limit * kPercent),
                      fmt::format("{:6.2f} % of the page, {:.1f} mm²", coverage.above * kPercent,
                                  coverage.aboveArea * kSquareMillimetres));
}

} // namespace vxhost
