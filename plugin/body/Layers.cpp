#include "plugin/body/Layers.h"

#include <cstring>

namespace vx
{

namespace
{

constexpr int kFirstSavedEntry = kZRKFill;
static_assert(kZRKShow == kFirstSavedEntry + kSavedProcCount - 1);

void ImageNull(void * /*drawing*/) {}

void ShowNull(void * /*drawing*/, const ZRKTextRecord * /*first*/, int32_t /*mode*/) {}

} // namespace

void SetupLayerObject(LayerRecord *layer, const ParseContext *context)
{
    if (layer == nullptr)
        return;
    layer->initialized = 1;
    layer->printable = 1;
    memcpy(layer->savedProcs, &context->procs->entry[kFirstSavedEntry], sizeof layer->savedProcs);
}

void SetProcsToPrintable(ParseContext *context)
{
    if (context == nullptr)
        return;
    if (context->layer.initialized == 0)
        SetupLayerObject(&context->layer, context);
    memcpy(&context->procs->entry[kFirstSavedEntry], context->layer.savedProcs,
           sizeof context->layer.savedProcs);
}

void SetProcsToNonPrintable(ParseContext *context)
{
    if (context == nullptr)
        return;
    ZRKProc *entries = context->procs->entry;
    // A fill or a stroke then just forgets its path.
    entries[kZRKFill] = entries[kZRKNewPath];
    entries[kZRKEntry37] = entries[kZRKNewPath];
    entries[kZRKStroke] = entries[kZRKNewPath];
    entries[kZRKImage] = reinterpret_cast<ZRKProc>(ImageNull);
    entries[kZRKShow] = reinterpret_cast<ZRKProc>(ShowNull);
}

Result DoLayers(ParseContext *context, int32_t printing)
{
    if (context == nullptr)
        return kOk;
    LayerRecord *layer = &context->layer;
    if (layer->initialized == 0)
        SetupLayerObject(layer, context);
    if (printing == 1) {
        SetProcsToPrintable(context);
        layer->printable = 1;
    } else if (printing == 0) {
        SetProcsToNonPrintable(context);
        layer->printable = 0;
    }
    return kOk;
}

} // namespace vx
