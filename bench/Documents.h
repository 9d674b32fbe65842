// Documents to measure with: made up, the same bytes for the same size.
#pragma once

#include <cstddef>
#include <string>

namespace vxbench
{

// Outlines of curves and lines with one to four decimals, filled and stroked in changing colours: what drawings
// are mostly made of. At least size bytes, ended properly.
std::string MakePathDocument(size_t size);

} // namespace vxbench
