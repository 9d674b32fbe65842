#include "cli/archive/EventDetail.h"

#include "cli/options/Digest.h"
#include "devices/colour/Fogra39.h"

#include <fmt/format.h>

#include <span>
#include <string_view>

namespace vxhost
{

namespace
{

std::string MakeEventDetail()
{
    const FileDigest program = DigestOfFile("/proc/self/exe");
    const std::span<const std::byte> profile = Fogra39Profile();
    const std::string_view bytes(reinterpret_cast<const char *>(profile.data()), profile.size());
    return fmt::format(R"(program="vx"; version="{}"; plugin="{}"; profile="sha256:{}")", VX_VERSION,
                       program.error.empty() ? "sha256:" + program.digest : "unknown", DigestOf(bytes));
}

} // namespace

// A batch asks for each of its records: the program is read once.
const std::string &EventDetail()
{
    static const std::string detail = MakeEventDetail();
    return detail;
}

} // namespace vxhost
