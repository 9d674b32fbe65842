// Decides which layers of a drawing are painted.
#pragma once

#include "host/drawing/Layer.h"

#include <string>
#include <vector>

namespace vxhost
{

struct LayerChoice {
    bool isAll = false;             // those that do not print too
    std::vector<std::string> shown; // by name, these alone; empty: no names are said
    std::vector<std::string> hidden;
};

// Sets which of the layers are painted. Where one is not, those within it are not either. Returns what cannot be done, one line
// for a person; empty: all can.
std::string ChooseLayers(const LayerChoice &choice, std::vector<Layer> *layers);

} // namespace vxhost
