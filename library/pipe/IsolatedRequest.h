// Describes what libvx asks of its helper program, which renders one drawing in a process of its own, and by which descriptors the two
// know each other.
#pragma once

#include "host/fonts/FontconfigFonts.h"
#include "library/FontMap.h"
#include "library/Options.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vxhost
{

// The helper's descriptors. The drawing is its standard input, a file; the output leaves through its standard output, and
// what WriteResult makes of the rest through the last, in the frames of a worker.
enum HelperDescriptor : int { kHelperRequest = 3, kHelperAnswer = 4 };

struct IsolatedRequest {
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    std::string version; // of libvx
    int32_t caller = 0;  // its process
    bool mustBeConfined = false;
    std::string format;
    Pairs options; // of the document, as they were said
    std::string temporaryFolder;
    bool useSystemFonts = true;
    std::vector<std::string> fontFolders;
    Pairs served;   // a font map
    Pairs profiles; // names and bytes

    bool operator==(const IsolatedRequest &) const = default;
};

constexpr size_t kMaxRequest = size_t{64} << 20;

// Returns none when something in it is longer than it may be.
std::optional<std::string> WriteRequest(const IsolatedRequest &request);
std::optional<IsolatedRequest> ReadRequest(std::string_view bytes);

} // namespace vxhost
