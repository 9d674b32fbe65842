#include "devices/preflight/FontRights.h"

#include "host/fonts/EmbeddingRights.h"
#include "host/fonts/FontLibrary.h"
#include "host/fonts/Owned.h"

namespace vxhost
{

bool MayEmbed(const TextFont &font)
{
    if (font.bytes == nullptr)
        return true;
    FontLibrary library;
    FT_Face opened = nullptr;
    const FT_Error error = library.OpenFace(font.bytes, font.faceIndex & 0xFFFF, &opened);
    const Owned<FT_FaceRec_, FT_Done_Face> face(opened);
    library.Check();
    return error != 0 || AllowsEmbedding(FT_Get_FSType_Flags(opened));
}

} // namespace vxhost
