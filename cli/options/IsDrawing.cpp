#include "cli/options/IsDrawing.h"

#include "host/FileReading.h"
#include "host/reading/HeaderScan.h"

#include <algorithm>
#include <array>
#include <unistd.h>

namespace vxhost
{

bool IsDrawing(const std::string &path)
{
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Regular, &error));
    if (file.Get() < 0)
        return false;
    std::array<std::byte, 512> first;
    const ssize_t got = pread(file.Get(), first.data(), first.size(), 0);
    const HeaderFacts facts =
        ScanHeader(std::span(first).first(static_cast<size_t>(std::max<ssize_t>(got, 0))));
    return facts.hasPrefix || facts.epsWrapper;
}

} // namespace vxhost
