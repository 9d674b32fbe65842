#include "host/SystemText.h"

#include <cstring>

namespace vxhost
{

std::string SystemText(int error)
{
    std::string text = std::strerror(error);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z')
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

} // namespace vxhost
