#include "library/interface/Helper.h"

#include "library/interface/Calls.h"

namespace vxhost
{

std::optional<Result> RunHelper(const HelperTask &)
{
    throw CallError(VX_NOT_ISOLATED, "this library is built without processes: call vx_document_render");
}

} // namespace vxhost
