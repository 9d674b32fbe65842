// Cuts fonts down to what a document uses of them.
#pragma once

#include "host/fonts/Owned.h"

#include <hb-subset.h>

namespace vxhost
{

// Null when the font turns out to be damaged. Lack of memory is thrown.
Owned<hb_face_t, hb_face_destroy> CutFont(hb_face_t *face, const hb_subset_input_t *wanted);

} // namespace vxhost
