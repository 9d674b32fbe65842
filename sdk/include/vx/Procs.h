/*
 * The rendering procedure table: every drawing operator of a document becomes calls on it.
 *
 * The host fills one ZRKProcs and hands it over in HostCallRecord.procs. The table is an array of untyped
 * procedures; each entry that the plug-in calls has its type below, and must be called and defined by that
 * type.
 *
 * The imaging model is that of PostScript. A graphics state holds the path, clip, matrix, colour, overprint
 * and line attributes; gsave and grestore push and pop all of it; a surplus grestore is ignored. A parse
 * starts with: no path, the clip open, the identity matrix, black, no overprint, width 1, butt caps, mitre
 * joins, limit 10, solid lines. Fill and stroke consume the current path, clip keeps it; inside is by the
 * non-zero winding rule. Coordinates are in user space, points of 1/72 inch with y upward, in 16.16.
 *
 * In every procedure:
 *
 *   drawing  HostCallRecord.drawing of this call, unchanged
 *
 * Pointer arguments are never null, belong to the plug-in and are valid during the call only. No procedure
 * returns anything: a host that fails remembers it in its drawing. Values are the document's and may lie
 * outside any sensible range: a host checks what it needs. A procedure must return to the plug-in: it may not
 * throw or jump past it, or what the plug-in has allocated is lost.
 */
#ifndef VX_PROCS_H
#define VX_PROCS_H

#include <vx/TextRecord.h>
#include <vx/Types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The entry numbers, counted from 0. Numbers without a name are never called, but may not be null. */
enum {
    kZRKNewPath = 0,            /* ZRKPathProc: forget the current path */
    kZRKMoveTo = 1,             /* ZRKMoveToProc */
    kZRKLineTo = 3,             /* ZRKLineToProc */
    kZRKCurveTo = 4,            /* ZRKCurveToProc */
    kZRKCurveToFromCurrent = 5, /* ZRKCurveToFromCurrentProc */
    kZRKClosePath = 6,          /* ZRKPathProc: close the current subpath */
    kZRKClip = 7,               /* ZRKPathProc: intersect the clip with the path, which stays */
    kZRKGSave = 10,             /* ZRKPathProc: push the graphics state */
    kZRKGRestore = 11,          /* ZRKPathProc: pop it */
    kZRKTranslate = 12,         /* ZRKTranslateProc */
    kZRKConcat = 14,            /* ZRKConcatProc */
    kZRKSetLineWidth = 16,      /* ZRKSetFixedProc: user space; 0 is the thinnest line that can be seen */
    kZRKSetDash = 17,           /* ZRKSetDashProc */
    kZRKSetLineCap = 18,        /* ZRKSetIntegerProc: 0 butt, 1 round, 2 projecting square */
    kZRKSetLineJoin = 19,       /* ZRKSetIntegerProc: 0 mitre, 1 round, 2 bevel */
    kZRKSetMiterLimit = 20,     /* ZRKSetFixedProc: mitre length over line width, 1.0 and more */
    kZRKSetGray = 22,           /* ZRKSetFixedProc: 0 black to 1.0 white */
    kZRKSetCMYKColor = 27,      /* ZRKSetCMYKColorProc */
    kZRKSetOverprint = 33,      /* ZRKSetIntegerProc: 1 on, 0 off; comes before the colour that it is for */
    kZRKFill = 36,              /* ZRKPathProc: fill the path and forget it; open subpaths are closed */
    kZRKEntry37 = 37,           /* ZRKPathProc: painting; never called, but replaced in hidden layers */
    kZRKStroke = 38,            /* ZRKPathProc: stroke the path and forget it */
    kZRKImage = 39,             /* ZRKImageProc: never called, but replaced in hidden layers */
    kZRKShow = 40,              /* ZRKShowProc */
    kZRKComment = 41,           /* ZRKCommentProc */
    kZRKProcCount = 42          /* how many entries a table has at least */
};

/* ZRKProcs.version. A table with any other version is refused. */
enum { kZRKProcsVersion = 1 };

/* An entry before its type is known. */
typedef void (*ZRKProc)(void);

/*
 * The table. It belongs to the host and must stay in place, and writable, during the call: while a hidden
 * layer is read the plug-in puts procedures of its own in entries 36 to 40, and it puts the host's back
 * before main returns, on every path. Two calls that run at the same time therefore need a table each.
 *
 * A host may append entries of its own after the 42 and say so in count; the plug-in does not look at them.
 */
typedef struct ZRKProcs {
    int32_t version;              /* kZRKProcsVersion */
    int32_t count;                /* entries that follow, at least kZRKProcCount */
    ZRKProc entry[kZRKProcCount]; /* none may be null */
} ZRKProcs;

/* newpath, closepath, clip, gsave, grestore, fill, entry 37, stroke: as their numbers say above. */
typedef void (*ZRKPathProc)(void *drawing);

/* Starts a new subpath at to. */
typedef void (*ZRKMoveToProc)(void *drawing, const FixedPoint *to);

/* Adds a straight line to to. Without a current point a host may do nothing, or move. */
typedef void (*ZRKLineToProc)(void *drawing, const FixedPoint *to);

/* Adds a Bezier curve with two control points that ends at to. */
typedef void (*ZRKCurveToProc)(void *drawing, const FixedPoint *control1, const FixedPoint *control2,
                               const FixedPoint *to);

/* The same, the first control point being the current point. */
typedef void (*ZRKCurveToFromCurrentProc)(void *drawing, const FixedPoint *control2, const FixedPoint *to);

/* Moves the origin of user space by (dx, dy), both in user space. */
typedef void (*ZRKTranslateProc)(void *drawing, Fixed dx, Fixed dy);

/*
 * Puts matrix before the current matrix, as PostScript's concat does.
 *
 *   selector  always 0
 */
typedef void (*ZRKConcatProc)(void *drawing, const FixedMatrix *matrix, int32_t selector);

/* setlinewidth, setmiterlimit, setgray: one number, 16.16. */
typedef void (*ZRKSetFixedProc)(void *drawing, Fixed value);

/*
 * Sets the dash of later strokes.
 *
 *   phase   where in the pattern a stroke starts; user space, 16.16
 *   count   0 to 256; 0 means a solid line
 *   values  count lengths, on and off in turn; user space, 16.16; valid during the call only. With count 0
 *           there is nothing to read behind it
 *
 * Cannot fail: a host that cannot dash draws solid. Lengths below 0, or all of them 0, are possible.
 */
typedef void (*ZRKSetDashProc)(void *drawing, Fixed phase, int32_t count, const Fixed *values);

/* setlinecap, setlinejoin, setoverprint: one integer. An unknown cap or join changes nothing. */
typedef void (*ZRKSetIntegerProc)(void *drawing, int32_t value);

/*
 * Sets the colour of later fills, strokes and text to amounts of ink, 0 none to 1.0 full, 16.16.
 *
 * With overprint on, a component of 0 leaves that ink of the page as it is, and a gray (kZRKSetGray) touches
 * black alone. With it off, each paint replaces all four inks.
 */
typedef void (*ZRKSetCMYKColorProc)(void *drawing, Fixed cyan, Fixed magenta, Fixed yellow, Fixed black);

/*
 * Shows text.
 *
 *   first  the first record of a chain of one or more
 *   mode   kZRKShowFill, kZRKShowStroke, kZRKShowClip, added up
 *
 * The point where the text ends is remembered by the host for kZRKContinue and kZRKMoveBy; it is not part of
 * the graphics state. Cannot fail: a font that is missing is replaced, or the text is left out.
 */
typedef void (*ZRKShowProc)(void *drawing, const ZRKTextRecord *first, int32_t mode);

/* Nothing is passed: the plug-in never calls this entry. */
typedef void (*ZRKImageProc)(void *drawing);

/*
 * Tells the host something that paints nothing. It may be ignored.
 *
 *   signature  whose comment it is; this plug-in sends kZRKPathComment only
 *   text       length characters, not terminated; "path" says that the path built so far is about to be
 *              painted
 *   length     0 or more
 */
typedef void (*ZRKCommentProc)(void *drawing, uint32_t signature, const char *text, int32_t length);

/* The four characters "QXRM" as a number, first character highest. */
enum { kZRKPathComment = 0x5158524D };

#ifdef __cplusplus
}
#endif

VX_ASSERT_SIZE(ZRKProcs, 8 + 4 * 42, 8 + 8 * 42);
VX_ASSERT_OFFSET(ZRKProcs, version, 0, 0);
VX_ASSERT_OFFSET(ZRKProcs, count, 4, 4);
VX_ASSERT_OFFSET(ZRKProcs, entry, 8, 8);

#endif
