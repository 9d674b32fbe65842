// Unfinished outputs, under the names that they have until they are whole: those of a run that was killed are removed by
// the next that writes to their folder.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace vxhost
{

std::string PartName(pid_t process, int number);

// Nobody takes the file for an abandoned one as long as its descriptor is open, here or in a worker: also not a run on
// another machine that shares the folder and does not know our process.
void MarkAsOurs(int descriptor);

// Removes what the user's own runs left there that do not live any more. Looks at a folder once.
void RemoveAbandoned(const std::filesystem::path &folder);

} // namespace vxhost
