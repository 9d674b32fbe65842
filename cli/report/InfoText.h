// What is known of a document as vx info prints it: a few aligned lines, or one line of JSON.
#pragma once

#include "cli/report/Summary.h"

#include <string>

namespace vxhost
{

// error: what is told of the document; empty: nothing.
std::string InfoText(const std::string &input, const Result &result, const std::string &error);
std::string InfoJson(const std::string &input, const Result &result, const std::string &error);

} // namespace vxhost
