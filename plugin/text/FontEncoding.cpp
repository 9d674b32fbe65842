#include "plugin/text/FontEncoding.h"

namespace vx
{

namespace
{

SourceKind SourceOfVersion(FileVersion version)
{
    switch (version) {
    case 2:
    case 3:
    case 5:
        return kSourceMac;
    case 4:
        return kSourcePC;
    default:
        return kSourceUnknown;
    }
}

} // namespace

void InitFontEncodingObject(FontEncodingObject *object, FileVersion version)
{
    object->targetKind = kTargetMac;
    object->tableState = kTablesInitialized;
    object->sourceKind = SourceOfVersion(version);
    object->encodingState = kOutsideEncodingBlock;
    object->fileVersion = version;
    object->firstFont = nullptr;
    object->fontCount = 0;
    object->bracketCounter = 0;
}

} // namespace vx
