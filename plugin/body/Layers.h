// Layers: while a non-printable layer is read, the painting entries of the host's own table paint nothing.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

// Saves the host's entries. Called once a parse, so that they are never the replaced ones.
void SetupLayerObject(LayerRecord *layer, const ParseContext *context);

// Gives the host its entries back.
void SetProcsToPrintable(ParseContext *context);

// Replaces them. The host's must have been saved.
void SetProcsToNonPrintable(ParseContext *context);

// printing is 1 or 0; any other value changes nothing.
Result DoLayers(ParseContext *context, int32_t printing);

} // namespace vx
