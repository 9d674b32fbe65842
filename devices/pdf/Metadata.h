// What the file says about itself. Nothing in it comes from a clock.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/pdf/PdfFile.h"

#include <string>

namespace vxhost::pdf
{

// The date of creation: that of the options, else what the document says, if that can be read in one way only. Empty:
// there is none.
std::string DateOf(const PdfOptions &options, const Page &page);

// Returns the object that says it.
Reference AddMetadata(const PdfOptions &options, const Page &page, PdfFile *file);

} // namespace vxhost::pdf
