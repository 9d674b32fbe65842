// Finds out whether writing to a file would destroy a drawing.
#pragma once

#include <string>

namespace vxhost
{

// A picture may take the place of a picture, never that of a drawing, which may be the only copy. Links are followed. This
// looks at the first bytes alone, so that it does not matter what somebody else does to the file meanwhile.
bool IsDrawing(const std::string &path);

} // namespace vxhost
