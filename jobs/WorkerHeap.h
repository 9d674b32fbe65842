// The memory that malloc hands out in a worker.
#pragma once

#include <cstdint>

namespace vxhost
{

// For a worker that will touch megabytes. Lets malloc begin with one piece of large pages, where the system has any, and keep what it
// gets: to touch a page for the first time takes longer than to fill it, and a worker gives all back at once when it ends. The
// piece is a small part of the limit; a limit that leaves no room for one changes nothing. limit: bytes of data; 0: none.
void PrepareHeap(int64_t limit);

} // namespace vxhost
