/* The procedure table of the example: every call becomes a line of text. */
#ifndef VX_EXAMPLE_CALLS_H
#define VX_EXAMPLE_CALLS_H

#include <vx/Procs.h>

/* The table. HostCallRecord.drawing must be the FILE to print to. */
ZRKProcs *PrintingProcs(void);

#endif
