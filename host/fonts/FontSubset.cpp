#include "host/fonts/FontSubset.h"

#include "host/MemoryWatch.h"

namespace vxhost
{

Owned<hb_face_t, hb_face_destroy> CutFont(hb_face_t *face, const hb_subset_input_t *wanted)
{
    // HarfBuzz, when it has no memory for its plan, gives back a reference to the face that it has not taken: it gets
    // one more for that. Where it does not give that back, the face is never released.
    hb_face_reference(face);
    Owned<hb_face_t, hb_face_destroy> subset =
        Watched([&] { return Owned<hb_face_t, hb_face_destroy>(hb_subset_or_fail(face, wanted)); });
    hb_face_destroy(face);
    return subset;
}

} // namespace vxhost
