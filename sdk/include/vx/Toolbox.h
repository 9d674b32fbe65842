/*
 * The C functions that a host supplies by name.
 *
 * The plug-in leaves these symbols undefined. The program that loads it defines all of them and exports them
 * (link it with -rdynamic, or put them in a shared library that it is linked with). They have no context
 * argument: a host that parses on several threads finds its own state through a thread-local pointer.
 *
 * A string here is a length byte followed by that many characters, at most 255; a buffer for one has 256
 * bytes. Unless it says otherwise, a function may not keep a pointer that it is given, and cannot fail.
 */
#ifndef VX_TOOLBOX_H
#define VX_TOOLBOX_H

#include <vx/Types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* So that a host compiled with hidden symbols exports its definitions all the same. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* A resource: a pointer to the pointer to its bytes. */
typedef char **Handle;

/* In pixels, y downward. */
typedef struct Rect {
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;
} Rect;

/* Types of resources: four characters as a number, first character highest. */
enum {
    kVXStringListType = 0x53545223, /* "STR#" */
    kVXDialogType = 0x444C4F47      /* "DLOG" */
};

/* Resources that the plug-in asks for. Strings are numbered from 1. */
enum {
    kVXAboutDialog = 16000,      /* the about box */
    kVXProblemStrings = 16000,   /* title and message of problem n are strings 2n - 1 and 2n, see below */
    kVXJapaneseFonts = 16100,    /* fonts to fall back on where the system script is Japanese, best first */
    kVXOtherFonts = 16101,       /* the same for every other system script */
    kVXReplacedFaces = 16200,    /* face names to be replaced */
    kVXReplacingFaces = 16201,   /* what replaces each of them */
    kVXEncodingSuffixes = 16300, /* up to 4 endings of font names that tell an encoding, none of them empty */
    kVXOrientationSuffixes = 16301 /* up to 2 that tell a direction of writing, none of them empty */
};

/* Problems, by their place in kVXProblemStrings. The last is a question; each comes once a parse. */
enum {
    kVXProblemPattern = 1,    /* a pattern was painted in 50 % gray */
    kVXProblemPostScript = 2, /* embedded PostScript was passed over */
    kVXProblemOperator = 3,   /* an unknown operator was passed over */
    kVXProblemBinary = 4,     /* a section of binary data was passed over */
    kVXProblemFont = 5        /* a font is missing and another takes its place: go on? */
};

/*
 * Gives a resource. Numbers in it are in the machine's byte order.
 *
 *   type, id  kVXStringListType: a 16-bit count, then that many strings
 *             kVXDialogType: the dialog's rectangle as a Rect, then whatever the host likes. The plug-in
 *             moves the rectangle, so the bytes must be writable
 *
 * The handle stays the host's and valid during the call of main. Null if there is no such resource; then
 * ResError says why.
 */
Handle GetResource(uint32_t type, int16_t id);

/* What went wrong with the last GetResource, or 0. It becomes the result of kVXAbout. */
int16_t ResError(void);

/* What went wrong with the last GetNewDialog, or 0. It becomes the result of kVXAbout. */
int16_t MemError(void);

/* From here until HPurge the bytes of the resource may not be moved or thrown away. */
void HNoPurge(Handle resource);
void HPurge(Handle resource);

/* Copies count bytes, 0 or more; the two areas may overlap. */
void BlockMove(const void *from, void *to, int32_t count);

/*
 * Copies one string of a list.
 *
 *   to     buffer of 256 bytes
 *   list   id of the list
 *   index  from 1; a string that is not there is the empty one
 */
void GetIndString(uint8_t *to, int16_t list, int16_t index);

/* Turns a string into a NUL-terminated one in place (its 256 bytes suffice) and returns it. */
char *p2cstr(uint8_t *string);

/* The rectangle of the main screen; the host's. It is asked for by the about box only. */
const Rect *GetMainDevice(void);

/* Moves a rectangle by so many pixels. Sums wrap at 16 bits. */
void OffsetRect(Rect *rectangle, int16_t right, int16_t down);

/*
 * Builds the dialog of resource id and shows it.
 *
 *   storage  null: the host allocates it
 *   behind   (void *)-1: in front of all windows
 *
 * Null on failure; then MemError says why. The dialog is the plug-in's until DisposDialog.
 */
void *GetNewDialog(int16_t id, void *storage, void *behind);

/*
 * Waits until the person has hit an item of the dialog in front, and stores its number.
 *
 *   filter  null
 */
void ModalDialog(void *filter, int16_t *item);

/* Closes and frees a dialog that GetNewDialog gave. */
void DisposDialog(void *dialog);

/* Shows a string to whoever debugs the host, or drops it. */
void DebugStr(const uint8_t *string);

/*
 * Arithmetic. Results that do not fit are the nearest end of the range, 0x7FFFFFFF or 0x80000000.
 *
 *   FixMul   x * y: the 64-bit product plus 0x8000, shifted right by 16 with its sign
 *   FixDiv   x / y to the nearest, halves away from zero; y may be 0, which gives 0x7FFFFFFF for x >= 0 and
 *            0x80000000 for x < 0
 *   FracMul  the 64-bit product plus 2^29, shifted right by 30 with its sign; a Fract and a Fixed give a
 *            Fixed
 *   Fix2X    x as a double, exactly
 *   X2Fix    to the nearest, halves away from zero; not-a-number is 0
 *
 * Hosts that round otherwise work, but give slightly different drawings.
 */
Fixed FixMul(Fixed x, Fixed y);
Fixed FixDiv(Fixed x, Fixed y);
Fract FracMul(Fract x, Fract y);
double Fix2X(Fixed x);
Fixed X2Fix(double x);

/* What GetEnvirons is asked for: one of the scripts. Any other number counts as Roman. */
enum { kVXSystemScript = 18 };
enum { kVXScriptRoman = 0, kVXScriptJapanese = 1, kVXScriptTraditionalChinese = 2, kVXScriptKorean = 3 };
int32_t GetEnvirons(int16_t selector);

/*
 * The fonts that a document may name. The list may not change during a call of main.
 *
 * How many there are, 0 or more. With none a parse succeeds and draws nothing, so that a host always lists
 * one.
 */
int32_t UNIXNumFonts(void);

/*
 * Names one of them.
 *
 *   index   0 to UNIXNumFonts() - 1
 *   name    buffer of 256 bytes for the PostScript name
 *   number  what UNIXGetCharWidth will be given for this font
 *
 * Returns 0, or anything else for a font that cannot be had: its place in the list stays empty.
 */
int16_t UNIXGetIndexedFontName(int32_t index, uint8_t *name, int16_t *number);

/*
 * Splits a PostScript name into its family and the rest.
 *
 *   name    as UNIXGetIndexedFontName gave it
 *   family  buffer of 256 bytes
 *   zero    always 0
 *   suffix  buffer of 256 bytes; the plug-in does not use it, but it must become a string
 */
void UNIXGetFamilyParentAndSuffix(const uint8_t *name, uint8_t *family, int32_t zero, uint8_t *suffix);

/*
 * The advance of one byte of text, in ems, 16.16.
 *
 *   number     from UNIXGetIndexedFontName
 *   character  0 to 255; 0x81 in a Japanese font stands for any double-byte character, 0 means 1.0 em
 */
int32_t UNIXGetCharWidth(int16_t number, int16_t character);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

VX_ASSERT_SIZE(Rect, 8, 8);
VX_ASSERT_OFFSET(Rect, right, 6, 6);

#endif
