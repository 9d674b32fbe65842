/*
 * Text to show: what the show entry of the procedure table receives (ZRKShowProc in Procs.h).
 *
 * One call shows a chain of records in order, linked by next. Records, names, text and spacing belong to the
 * plug-in and are valid during the call only. Fonts are named, never embedded; which font serves a name, and
 * how its bytes become glyphs, is the host's business.
 */
#ifndef VX_TEXT_RECORD_H
#define VX_TEXT_RECORD_H

#include <vx/Types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ZRKTextRecord.placement: one of the first three, plus any of the bits that follow. */
enum {
    kZRKContinue = 0,            /* x, y unused: go on where the previous text ended */
    kZRKPlaceAt = 1,             /* the text starts at (x, y) */
    kZRKMoveBy = 2,              /* it starts (x, y) away from where the previous text ended */
    kZRKHasCharacterSpacing = 4, /* spacing[0] is valid */
    kZRKHasWordSpacing = 8,      /* spacing[1] is valid */
    kZRKUprightInColumn = 16     /* a double-byte character that stands upright in vertical writing */
};

/* ZRKTextRecord.spacingKind: bits; 0 is no spacing. */
enum { kZRKCharacterSpacing = 1, kZRKWordSpacing = 2 };

/* The mode of a show call: bits. 0 shows nothing but still moves the end of the text. */
enum {
    kZRKShowFill = 1,   /* fill the glyphs in the current colour */
    kZRKShowStroke = 2, /* outline them in the current colour, with the current line width of the page */
    kZRKShowClip = 4    /* unite the outlines of the whole chain and intersect the clip with them */
};

typedef struct ZRKTextRecord {
    struct ZRKTextRecord *next; /* the next record of the chain, or null */
    uint32_t reserved;          /* always 0 */
    const char *fontName;       /* PostScript name, NUL-terminated, never null */
    const char *styleName;      /* NUL-terminated, or null; carries nothing */
    const uint8_t *text; /* length bytes in the character set of the font's script; may hold NUL bytes */
    int32_t length;      /* 0 or more; 1 or 2 where text is placed character by character */
    /*
     * The glyph matrix, with the font size in it: it maps a glyph space of one unit an em whose y axis points
     * down. An outline with y up is therefore placed by (a, b, -c, -d).
     */
    Fixed a;
    Fixed b;
    Fixed c;
    Fixed d;
    Fixed x; /* meaning by placement; user space */
    Fixed y;
    const FixedPoint *spacing; /* two vectors, added after a character and at a space; or null */
    int32_t spacingKind;
    int32_t placement;
} ZRKTextRecord;

#ifdef __cplusplus
}
#endif

VX_ASSERT_SIZE(ZRKTextRecord, 60, 88);
VX_ASSERT_OFFSET(ZRKTextRecord, next, 0, 0);
VX_ASSERT_OFFSET(ZRKTextRecord, reserved, 4, 8);
VX_ASSERT_OFFSET(ZRKTextRecord, fontName, 8, 16);
VX_ASSERT_OFFSET(ZRKTextRecord, styleName, 12, 24);
VX_ASSERT_OFFSET(ZRKTextRecord, text, 16, 32);
VX_ASSERT_OFFSET(ZRKTextRecord, length, 20, 40);
VX_ASSERT_OFFSET(ZRKTextRecord, a, 24, 44);
VX_ASSERT_OFFSET(ZRKTextRecord, b, 28, 48);
VX_ASSERT_OFFSET(ZRKTextRecord, c, 32, 52);
VX_ASSERT_OFFSET(ZRKTextRecord, d, 36, 56);
VX_ASSERT_OFFSET(ZRKTextRecord, x, 40, 60);
VX_ASSERT_OFFSET(ZRKTextRecord, y, 44, 64);
VX_ASSERT_OFFSET(ZRKTextRecord, spacing, 48, 72);
VX_ASSERT_OFFSET(ZRKTextRecord, spacingKind, 52, 80);
VX_ASSERT_OFFSET(ZRKTextRecord, placement, 56, 84);

#endif
