// The whole plug-in, every request, under a host that may misbehave.
#include "fuzz/HostileHost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const vxfuzz::Input input(data, size);
    vxfuzz::HostileHost host(input);
    host.Call();
    return 0;
}
