// Names outputs until they are whole, and removes those that a run left which was killed, when the next writes to their folder.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace vxhost
{

std::string PartName(pid_t process, int number);

// Sees to it that nobody takes the file for an abandoned one as long as its descriptor is open, here or in a worker: not even a
// run on another machine that shares the folder and does not know our process.
void MarkAsOurs(int descriptor);

// Removes what was left there by runs of the same user that have ended. Looks at each folder once.
void RemoveAbandoned(const std::filesystem::path &folder);

} // namespace vxhost
