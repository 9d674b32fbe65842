// Writes what a file says about itself.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/pdf/PdfFile.h"

#include <string>

namespace vxhost::pdf
{

// The date of creation, as DateFrom says; empty: there is none.
std::string DateOf(const PdfOptions &options, const Page &page);

// Returns the object that says it.
Reference AddMetadata(const PdfOptions &options, const Page &page, PdfFile *file);

} // namespace vxhost::pdf
