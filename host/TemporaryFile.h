// A place for what is not finished: a file in a folder, as a rule the one that TMPDIR names.
#pragma once

#include <string>
#include <sys/types.h>

namespace vxhost
{

// Where TMPDIR names none, /tmp.
std::string TemporaryFolder();

// A file in the folder that has no name and ends with its last descriptor; -1 with errno set where there can be none.
int OpenUnnamed(const std::string &folder, mode_t mode);

// The same, to be read and written, also where a file has to have a name for a moment.
int OpenTemporaryFile(const std::string &folder = TemporaryFolder());

} // namespace vxhost
