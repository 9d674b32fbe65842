// Makes the list that documents are read with from the fonts that were found, wherever they are.
#pragma once

#include "host/fonts/FontList.h"

#include <memory>
#include <vector>

namespace vxhost
{

struct FontCandidate {
    FontList::Entry entry;
    bool isType1 = false;
};

// Returns whether its name is one that a document can ask for.
bool CanBeAskedFor(const FontList::Entry &entry);

// One entry a name: fonts in memory before those in files, OpenType before Type 1. Then an entry for each classic font that
// is not there and that one with the same widths can stand in for. With no font at all there is one entry, whose
// characters are boxes. The order is that of the names, then of the stand-ins, so that the same fonts always give one list.
std::unique_ptr<FontList> MakeFontList(std::vector<FontCandidate> candidates);

} // namespace vxhost
