#include "cli/options/IsDrawing.h"

#include "host/FileReading.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/Unpacking.h"
#include "host/reading/Wrapping.h"

#include <algorithm>
#include <span>
#include <unistd.h>
#include <vector>

namespace vxhost
{

bool IsDrawing(const std::string &path)
{
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Regular, &error));
    if (file.Get() < 0)
        return false;
    std::vector<std::byte> first(kMaxWrappingBytes);
    const ssize_t got = pread(file.Get(), first.data(), first.size(), 0);
    first.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
    if (IsPacked(first))
        return true;
    const Wrapping wrapping = FindDrawing(first);
    const HeaderFacts facts = ScanHeader(std::span(first).subspan(wrapping.offset, wrapping.size));
    return facts.hasPrefix || facts.epsWrapper;
}

} // namespace vxhost
