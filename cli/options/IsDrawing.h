// Whether something would be lost by writing there.
#pragma once

#include <string>

namespace vxhost
{

// A picture takes the place of a picture, never that of a drawing, which may be the only one of its kind. Links are
// followed. Looks at the first bytes alone, so that it does not matter what somebody else does to the file meanwhile.
bool IsDrawing(const std::string &path);

} // namespace vxhost
