// Files for what is not finished, in a folder, as a rule the one that TMPDIR names.
#pragma once

#include <string>
#include <sys/types.h>

namespace vxhost
{

// The folder that TMPDIR names, else /tmp.
std::string TemporaryFolder();

// Makes a file in the folder that has no name and ends with its last descriptor. -1 with errno set on failure: some
// file systems have no such files.
int OpenUnnamed(const std::string &folder, mode_t mode);

// Makes such a file to be read and written, also where it has to have a name for a moment.
int OpenTemporaryFile(const std::string &folder = TemporaryFolder());

} // namespace vxhost
