// The assembler includes the profile's bytes as they are; the build names the file.
#include "devices/colour/Fogra39.h"

asm(".section .rodata\n"
    ".balign 16\n"
    ".hidden vxFogra39Begin\n"
    ".global vxFogra39Begin\n"
    "vxFogra39Begin:\n"
    ".incbin \"" VX_FOGRA39_FILE "\"\n"
    ".hidden vxFogra39End\n"
    ".global vxFogra39End\n"
    "vxFogra39End:\n"
    ".byte 0\n"
    ".text\n");

extern "C" const std::byte vxFogra39Begin[] __attribute__((visibility("hidden")));
extern "C" const std::byte vxFogra39End[] __attribute__((visibility("hidden")));

namespace vxhost
{

std::span<const std::byte> Fogra39Profile()
{
    return {vxFogra39Begin, vxFogra39End};
}

} // namespace vxhost
