#include "plugin/gradients/gradient.h"

namespace vx
{

Result ParseGradientData(const char * /*operatorText*/, ParseContext * /*context*/)
{
    return kOk;
}

} // namespace vx
