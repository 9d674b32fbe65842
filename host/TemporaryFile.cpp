#include "host/TemporaryFile.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

std::string TemporaryFolder()
{
    const char *named = std::getenv("TMPDIR");
    return named != nullptr && *named != '\0' ? named : "/tmp";
}

int OpenUnnamed(const std::string &folder, mode_t mode)
{
    return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
}

int OpenTemporaryFile(const std::string &folder)
{
    const int unnamed = OpenUnnamed(folder, S_IRUSR | S_IWUSR);
    if (unnamed >= 0)
        return unnamed;
    std::string name = folder + "/vx-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        unlink(name.c_str());
    return named;
}

} // namespace vxhost
