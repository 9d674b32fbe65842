/*
 * The one entry point of the plug-in, and the record that a host passes to it.
 *
 * How to use it. Load vxparser.so (dlopen); the program that loads it exports the functions of Toolbox.h.
 * Look up the symbol "main", cast it to VXMainProc, fill a HostCallRecord with zeros and then with what the
 * selector needs, and call:
 *
 *     HostCallRecord record;
 *     int16_t result;
 *     memset(&record, 0, sizeof record);
 *     record.reader = &myReader.reader;
 *     record.streamLength = length;
 *     vxMain(kVXStreamInfo, &record, NULL, &result);
 *
 * Every call is complete in itself: selectors may come in any order and the plug-in keeps nothing between
 * calls. It has no state of its own, so calls on different records may run at the same time on several
 * threads, as far as the host's own functions allow it. All callbacks happen inside the call, on the caller's
 * thread. sdk/example holds a whole host.
 */
#ifndef VX_HOST_CALL_H
#define VX_HOST_CALL_H

#include <vx/Procs.h>
#include <vx/Types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What is asked. Beside each: the fields of the record that must be filled. */
enum {
    kVXAbout = 0,      /* nothing; shows the about box through Toolbox.h */
    kVXCanRead = 1,    /* reader, streamLength, procs; like kVXStreamInfo, after a check of the table */
    kVXOpen = 2,       /* procs; checks the table, opens nothing */
    kVXOpenAgain = 3,  /* the same as kVXOpen */
    kVXStreamInfo = 4, /* reader, streamLength; reads the header, fills boundingBox and monochrome */
    kVXParse = 5,      /* all but what may be null; reads the document and draws it */
    kVXClose = 6       /* nothing; always succeeds */
};

/* What main stores through its result. The about box may also give what ResError or MemError returned. */
typedef int16_t VXResult;
enum {
    kVXOk = 0,
    kVXStoppedByUser = 1,    /* a ReportProc asked to stop */
    kVXProcsUnusable = -1,   /* kVXParse refuses the procedure table */
    kVXOutOfMemory = -108,   /* MemoryProcs.allocate returned null where nothing works without the block */
    kVXBadSelector = -30600, /* unknown selector; or kVXParse without procs or drawing */
    kVXBadFormat = -30601,   /* not a VX document, or a malformed one; what was drawn so far stays drawn */
    kVXBadProcs = -30900     /* kVXCanRead, kVXOpen and kVXOpenAgain refuse the procedure table */
};

typedef struct StreamReader StreamReader;

/* StreamReadProc's op. */
enum {
    kVXReadBytes = 0,  /* arg: the destination; *inout: the count wanted, on return the count delivered */
    kVXSetPosition = 2 /* arg: null; *inout: the position from the start of the stream, in bytes */
};

/*
 * Reads the document's bytes. The plug-in sets the position at most twice, at the start of a call, and then
 * reads strictly forward in pieces of a few hundred bytes at most.
 *
 *   reader  the record's reader, unchanged
 *   arg     destination of at least *inout bytes; the host writes there during the call only
 *   inout   see op; never null
 *
 * A count of 0 or less is the end of the data; give that too when a read fails. A smaller count than wanted is
 * neither end nor failure, but a line that such a read has not brought to its end is cut there: deliver all that is
 * wanted, as far as the data goes. The first 12 bytes of a call must come in one read, and no count may be larger
 * than wanted: otherwise the call fails with kVXBadFormat. The value returned is ignored, and a position that
 * cannot be reached, as a damaged wrapper may name one, shows in the reads that follow.
 */
typedef int32_t (*StreamReadProc)(StreamReader *reader, int32_t op, void *arg, int32_t *inout);

/* Put it first in a record of your own: the plug-in passes its address back, and looks at read alone. */
struct StreamReader {
    StreamReadProc read; /* the rest is the host's */
};

/*
 * Called during kVXParse before each line, which is often: a host that shows it does so only now and then.
 *
 *   bytesRead   delivered so far, from 0
 *   totalBytes  of the PostScript part of the stream, at most streamLength; may be negative, or more, for a
 *               damaged wrapper
 */
typedef void (*ProgressProc)(int32_t bytesRead, int32_t totalBytes);

/*
 * Where all heap memory of the plug-in comes from.
 *
 *   allocate  size > 0 bytes, aligned for any object; null where there is none, which ends the parse with a
 *             result code and never with a crash. Need not clear the block
 *   release   a block that allocate gave in the same call; never null
 *   refcon    passed to both, for the host
 *
 * Every block is released before main returns, whatever the result.
 */
typedef struct MemoryProcs {
    void *(*allocate)(int32_t size, void *refcon);
    void (*release)(void *block, void *refcon);
    void *refcon;
} MemoryProcs;

/*
 * A problem that does not end the parse by itself; a host may show it, or collect it.
 *
 *   title       length byte, then that many characters, from string list 16000 (Toolbox.h); valid during the
 *               call
 *   message     the same
 *   titleEmpty  1 if the title's length is 0, else 0
 *
 * Returns 0 to go on, anything else to stop the parse with kVXStoppedByUser.
 */
typedef uint8_t (*ReportProc)(const uint8_t *title, const uint8_t *message, int32_t titleEmpty);

/* Belongs to the host, and stays in place during the call. Fields marked "out" are the plug-in's to write. */
typedef struct HostCallRecord {
    uint8_t reserved00[8]; /* the host's; never looked at */
    ProgressProc progress; /* may be null */
    StreamReader *reader;
    int32_t streamLength; /* bytes in the stream, 0 or more */
    /*
     * out: left, bottom, right, top in points, 16.16, as the header gives them: right may lie left of left.
     * Written when kVXCanRead or kVXStreamInfo succeed, else left as it was.
     */
    Fixed boundingBox[4];
    uint8_t monochrome;    /* out, with boundingBox: 1 if the header says black and white, else 0 */
    uint8_t warningsOff;   /* not 0: only the question about a missing font is reported, the rest is silent */
    uint8_t reserved26[2]; /* never looked at */
    void *drawing;         /* the first argument of all procedures of the table; not null */
    ZRKProcs *procs;
    MemoryProcs *memory;
    void *setup;              /* the plug-in's own, during kVXParse only */
    uint8_t reserved38[0x24]; /* the host's; never looked at */
    ReportProc report;        /* may be null: nothing is reported, nothing stops */
} HostCallRecord;

/*
 * The type of the plug-in's only exported symbol, "main".
 *
 *   selector  the low 16 bits count, signed
 *   record    see the selectors; for kVXAbout and kVXClose it may be null
 *   data      ignored
 *   result    where the result code goes; not null
 *
 * C and C++ reserve the name, so that no header can declare the function itself.
 */
typedef void (*VXMainProc)(int32_t selector, HostCallRecord *record, void *data, int16_t *result);

#ifdef __cplusplus
}
#endif

VX_ASSERT_SIZE(StreamReader, 4, 8);
VX_ASSERT_SIZE(MemoryProcs, 12, 24);
VX_ASSERT_OFFSET(MemoryProcs, allocate, 0, 0);
VX_ASSERT_OFFSET(MemoryProcs, release, 4, 8);
VX_ASSERT_OFFSET(MemoryProcs, refcon, 8, 16);
VX_ASSERT_SIZE(HostCallRecord, 0x60, 0x80);
VX_ASSERT_OFFSET(HostCallRecord, reserved00, 0x00, 0x00);
VX_ASSERT_OFFSET(HostCallRecord, progress, 0x08, 0x08);
VX_ASSERT_OFFSET(HostCallRecord, reader, 0x0C, 0x10);
VX_ASSERT_OFFSET(HostCallRecord, streamLength, 0x10, 0x18);
VX_ASSERT_OFFSET(HostCallRecord, boundingBox, 0x14, 0x1C);
VX_ASSERT_OFFSET(HostCallRecord, monochrome, 0x24, 0x2C);
VX_ASSERT_OFFSET(HostCallRecord, warningsOff, 0x25, 0x2D);
VX_ASSERT_OFFSET(HostCallRecord, reserved26, 0x26, 0x2E);
VX_ASSERT_OFFSET(HostCallRecord, drawing, 0x28, 0x30);
VX_ASSERT_OFFSET(HostCallRecord, procs, 0x2C, 0x38);
VX_ASSERT_OFFSET(HostCallRecord, memory, 0x30, 0x40);
VX_ASSERT_OFFSET(HostCallRecord, setup, 0x34, 0x48);
VX_ASSERT_OFFSET(HostCallRecord, reserved38, 0x38, 0x50);
VX_ASSERT_OFFSET(HostCallRecord, report, 0x5C, 0x78);

#endif
