// The files of the module: font files by name, which the page gives when a document asks for one.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vxweb
{

void GiveFile(const std::string &name, std::vector<std::byte> bytes); // it stays as long as the module

// Those that were asked for since the last call and are not there, a line each.
std::string TakeWanted();

} // namespace vxweb
