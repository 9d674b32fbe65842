// Writes what is known of a document as vx info prints it: a few aligned lines, or one line of JSON.
#pragma once

#include "cli/report/Summary.h"

#include <string>

namespace vxhost
{

// error is what was told of the document; it is empty where nothing was.
std::string InfoText(const std::string &input, const Result &result, const std::string &error);
std::string InfoJson(const std::string &input, const Result &result, const std::string &error);

} // namespace vxhost
