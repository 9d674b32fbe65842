// A verdict on a document as vx info prints it: a few aligned lines, or one line of JSON.
#pragma once

#include "cli/Session.h"

#include <string>

namespace vxhost
{

std::string InfoText(const std::string &input, const Verdict &verdict);
std::string InfoJson(const std::string &input, const Verdict &verdict);

} // namespace vxhost
