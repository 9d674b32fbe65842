/*
 * A whole host: prints the calls that a document makes.
 *
 *     cc -std=c99 -I../../../../../include example.c calls.c toolbox.c -rdynamic -ldl -lm -o vxexample
 *     ./vxexample ../../../../../lib/vx/vxparser.so square.vx
 *
 * calls.c holds the procedures that draw, toolbox.c the functions that the plug-in finds by name: -rdynamic lets it.
 */
#include "calls.h"

#include <vx/HostCall.h>

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct {
    StreamReader reader; /* first, so that the plug-in's pointer is ours */
    FILE *file;
} FileReader;

static int32_t ReadFile(StreamReader *reader, int32_t op, void *arg, int32_t *inout)
{
    FILE *file = ((FileReader *)reader)->file;
    if (op == kVXSetPosition)
        return fseek(file, *inout, SEEK_SET);
    *inout = (int32_t)fread(arg, 1, (size_t)*inout, file);
    return 0;
}

static void *Allocate(int32_t size, void *refcon)
{
    return (void)refcon, malloc((size_t)size);
}
static void Release(void *block, void *refcon)
{
    (void)refcon, free(block);
}

static uint8_t Report(const uint8_t *title, const uint8_t *message, int32_t titleEmpty)
{
    printf("%.*s%s%.*s\n", title[0], title + 1, titleEmpty ? "" : ": ", message[0], message + 1);
    return 0; /* go on */
}

int main(int argc, char **argv)
{
    MemoryProcs memory = {Allocate, Release, NULL};
    FileReader reader = {{ReadFile}, argc == 3 ? fopen(argv[2], "rb") : NULL};
    void *plugin = argc == 3 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
    VXMainProc vxMain = NULL;
    HostCallRecord record;
    int16_t result = kVXBadSelector;

    if (argc != 3)
        return fputs("usage: vxexample PLUGIN DOCUMENT\n", stderr), 2;
    if (plugin != NULL)
        *(void **)&vxMain = dlsym(plugin, "main");
    if (vxMain == NULL)
        return fprintf(stderr, "vxexample: %s\n", dlerror()), 1;
    if (reader.file == NULL)
        return perror(argv[2]), 1;

    memset(&record, 0, sizeof record);
    fseek(reader.file, 0, SEEK_END);
    record.reader = &reader.reader;
    record.streamLength = (int32_t)ftell(reader.file);
    record.drawing = stdout;
    record.procs = PrintingProcs();
    record.memory = &memory;
    record.report = Report;

    vxMain(kVXStreamInfo, &record, NULL, &result);
    printf("box %g %g %g %g%s\n", record.boundingBox[0] / 65536.0, record.boundingBox[1] / 65536.0,
           record.boundingBox[2] / 65536.0, record.boundingBox[3] / 65536.0,
           record.monochrome ? " mono" : "");
    if (result == kVXOk)
        vxMain(kVXParse, &record, NULL, &result);
    printf("result %d\n", result);
    fclose(reader.file);
    dlclose(plugin);
    return result == kVXOk ? 0 : 1;
}
