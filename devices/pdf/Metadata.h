// What the file says about itself. Nothing in it comes from a clock.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/pdf/PdfFile.h"

#include <string>

namespace vxhost::pdf
{

// Of creation: by choice of the options, else as the document says where that can be read in one way. Empty: none.
std::string DateOf(const PdfOptions &options, const Page &page);

void AddMetadata(const PdfOptions &options, const Page &page, PdfFile *file);

} // namespace vxhost::pdf
