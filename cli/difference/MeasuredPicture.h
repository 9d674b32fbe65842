// Reads a picture file to its end in a confined worker, and tells what it is.
#pragma once

#include "cli/difference/PictureFile.h"
#include "host/Document.h"
#include "jobs/Engine.h"

namespace vxhost
{

// A fault says why it cannot be compared. The facts have no names of channels; there is alpha
// where some of the picture is transparent.
Result MeasurePicture(const Document &file, Engine *engine, PictureFacts *facts);

} // namespace vxhost
