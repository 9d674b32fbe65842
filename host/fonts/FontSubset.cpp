#include "host/fonts/FontSubset.h"

#include "host/MemoryWatch.h"

namespace vxhost
{

Owned<hb_face_t, hb_face_destroy> CutFont(hb_face_t *face, const hb_subset_input_t *wanted)
{
    // Without memory for its plan HarfBuzz gives back a reference that it has not taken: it gets one to lose. Where it
    // does not lose it, the face stays for good.
    hb_face_reference(face);
    Owned<hb_face_t, hb_face_destroy> subset =
        Watched([&] { return Owned<hb_face_t, hb_face_destroy>(hb_subset_or_fail(face, wanted)); });
    hb_face_destroy(face);
    return subset;
}

} // namespace vxhost
