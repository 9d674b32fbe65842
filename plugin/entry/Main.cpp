// The plug-in's one exported symbol.
#include "plugin/entry/VXParser.h"

// C++ reserves the name "main" for programs, so the symbol is named by hand.
extern "C" __attribute__((visibility("default"))) void
VXPluginMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result) __asm__("main");

extern "C" void VXPluginMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result)
{
    VXParserMain(selector, record, data, result);
}
