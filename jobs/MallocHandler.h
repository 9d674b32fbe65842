// Tells of each allocation of a C library that fails, whichever library it is and whatever it would have made of that, as
// std::set_new_handler does for those of C++.
//
// This program has its own malloc for it, which asks the next one. A library in somebody's process cannot have that, so
// host and devices look after each library themselves (host/MemoryWatch.h): this catches what they may have missed.
#pragma once

namespace vxhost
{

// Null: nothing is called. The handler is called before null is returned, by any thread, and allocates nothing.
void SetMallocHandler(void (*handler)());

} // namespace vxhost
