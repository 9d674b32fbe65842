#include "library/FontFolder.h"

#include "library/Options.h"

#include <filesystem>
#include <set>
#include <system_error>

namespace vxhost
{

void CheckFontFolder(const std::string &path)
{
    namespace fs = std::filesystem;
    std::error_code failure, ofEntry;
    if (!fs::is_directory(path, failure))
        throw OptionError("--font-dir " + path + ": no such directory: check the name");
    constexpr auto kAll =
        fs::directory_options::follow_directory_symlink | fs::directory_options::skip_permission_denied;
    std::set<fs::path> seen = {
        fs::canonical(path, ofEntry)}; // each folder is looked at once: a link may lead back up
    for (fs::recursive_directory_iterator at(path, kAll, failure), end; !failure && at != end;
         at.increment(failure)) {
        if (at->is_directory(ofEntry) && !seen.insert(fs::canonical(at->path(), ofEntry)).second)
            at.disable_recursion_pending();
        if (at->is_fifo(ofEntry))
            throw OptionError("--font-dir " + path + ": \"" + at->path().string() +
                              "\" is a pipe, which is no font: take it away");
    }
}

} // namespace vxhost
