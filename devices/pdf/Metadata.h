// Writes what a file says about itself: in the information that PDF always had and, at a level of a standard, as XMP too.
#pragma once

#include "devices/pdf/Levels.h"
#include "devices/pdf/PdfFile.h"

#include <span>
#include <string>

namespace vxhost::pdf
{

// A font of the file by both of its names.
struct ServedFont {
    std::string asked; // for by the drawing
    std::string own;
};

// Returns the object that says it. The catalog leads to the XMP.
Reference AddMetadata(const PdfOptions &options, const Page &page, std::span<const ServedFont> fonts,
                      PdfFile *file, Dictionary *catalog);

} // namespace vxhost::pdf
