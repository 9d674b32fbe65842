// Lists the layers of a drawing, and says whether it has groups and spot inks.
#pragma once

#include "host/Document.h"
#include "host/drawing/Layer.h"
#include "host/reading/Blanks.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vxhost
{

struct Structure {
    std::vector<Layer> layers; // in the order in which they begin; their names are as they are written
    bool isThere = false;      // something is: layers, groups, spot inks
    uint64_t betweenLayers =
        0; // things that would show, behind the end of a layer and before the next begins

    static constexpr size_t kMostLayers = 10000; // further ones are painted, and told of as the last of these
};

// Looks through all of the document, once, but for what is blanked.
Structure ScanStructure(const Document &document, std::string_view drawing, int version,
                        const Blanks &blanks);

} // namespace vxhost
