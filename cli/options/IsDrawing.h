// Finds out whether writing to a file would destroy a drawing.
#pragma once

#include <string>

namespace vxhost
{

// A picture may take the place of a picture, never that of a drawing, which may be the only copy. Links are followed. This
// looks at the first bytes alone, so that it does not matter what somebody else does to the file meanwhile. Whatever is packed
// with gzip or xz counts as one: only a worker unpacks what may be a stranger's, and no picture is packed so.
bool IsDrawing(const std::string &path);

} // namespace vxhost
