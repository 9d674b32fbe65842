/*
 * libvx: opens VX drawings and makes pictures of them.
 *
 * The one interface for programs, in C99; it works from C++ too. Link with what `pkg-config --cflags --libs vx` says.
 *
 *     vx_library *library;
 *     vx_document *document;
 *     vx_error error = {sizeof error};
 *     if (vx_library_create(VX_INTERFACE, &library, &error) == VX_OK) {
 *         if (vx_document_open_file(library, "harp.vx", &document, &error) == VX_OK) {
 *             vx_document_set(document, "width", "400", &error);
 *             vx_document_render(document, "png", write_to_file, file, &error);
 *             vx_document_free(document);
 *         }
 *         vx_library_free(library);
 *     }
 *
 * This is version 0.x: anything here may change with the next release. VX_INTERFACE counts the changes, and
 * vx_library_create refuses a program that was built for another count.
 *
 * Errors      Calls that can fail return a vx_status and fill the vx_error that they are given, which may be null. The
 *             text is one line: what is wrong with which value, and what to do. Null for an argument that may not be
 *             null, a record of the wrong size and text that is not UTF-8 are VX_WRONG_ARGUMENT, and change nothing.
 * Texts       All texts are UTF-8 and end with NUL. A text that a call returns belongs to the object that was asked for
 *             it, and stays valid as long as the call says.
 * Records     A record that a program fills begins with its size: set that to sizeof the record, and the rest to zero.
 * Units       Lengths are points of 1/72 inch, x to the right and y up, as drawings have them; pixels count from the top.
 * Threads     Any number of threads may use one library at a time. A document is for one thread at
 *             a time: a call that meets another on the same document returns VX_BUSY and does nothing.
 * Callbacks   A callback runs on the thread of the call that it was given to. When it returns other than 0, that call ends
 *             and returns VX_STOPPED. In it, too, calls with the document at work return VX_BUSY. It may not free the
 *             document, nor leave by longjmp or an exception.
 * Limits      "max-time" is looked at when the document goes on to its next line, when a shape is painted and while a packed
 *             document is unpacked, which opening it does, with the limits that hold where none are set; where these are
 *             quick, at one in 32. One enormous shape may take longer. "max-memory" counts what is unpacked, the paths, the saved states and the inks of a picture,
 *             and what the interpreter holds, each against the limit; what the libraries for fonts, colours and compression
 *             allocate for themselves is not counted. "max-output" counts the bytes that a vx_write is given.
 *             A program that opens drawings of strangers, and has to survive the worst, calls vx_render_isolated: there the
 *             three hold for all that is done, and a crash costs that call.
 * Manners     No call ends the process, prints, starts a thread, changes a signal or reads the environment. (The
 *             library that lists the fonts of the system reads variables of its own, and vx_render_isolated hands those
 *             to the process that it starts.)
 */
#ifndef VX_H
#define VX_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VX_INTERFACE 2

typedef struct vx_library vx_library;
typedef struct vx_document vx_document;

typedef enum vx_status {
    VX_OK = 0,
    VX_WRONG_ARGUMENT = 1, /* the call itself is wrong: see the text */
    VX_WRONG_OPTION = 2,   /* no such option or value, or none that goes with this document */
    VX_CANNOT_READ = 3,    /* a file cannot be opened or read */
    VX_NOT_A_DRAWING = 4,  /* the bytes are no VX document */
    VX_MALFORMED = 5,      /* a VX document, and damaged */
    VX_FONT_MISSING = 6,   /* given up for want of a font, as "missing-fonts" asked */
    VX_LIMIT = 7,          /* "max-time", "max-memory" or "max-output", or a picture is too large */
    VX_OUT_OF_MEMORY = 8,  /* the system has no more */
    VX_CANNOT_WRITE = 9,   /* a temporary file cannot be written */
    VX_STOPPED = 10,       /* a callback returned other than 0 */
    VX_BUSY = 11,          /* another call is at work with this document */
    VX_FAILED = 12,        /* this should not happen: report it, with the text */
    VX_NOT_ISOLATED = 13 /* vx_render_isolated: no helper program here, or a kernel that cannot confine it */
} vx_status;

typedef struct vx_error {
    size_t size; /* sizeof(vx_error), set by the caller */
    vx_status status;
    char text[496]; /* one line; cut at a character's end if it is longer */
} vx_error;

/* ---- The library ---- */

const char *vx_version(void); /* "0.1.0" */

/*
 * Makes a library without fonts of its own: those of the system are looked for when the first document is opened.
 *
 *   interface  VX_INTERFACE
 *   library    receives it; free it with vx_library_free after all of its documents
 */
vx_status vx_library_create(uint32_t interface, vx_library **library, vx_error *error);
void vx_library_free(vx_library *library); /* null is allowed */

/*
 * Sets an option of a library by name and text; vx_library_option_at lists them.
 *
 *   "font-dir":      a folder of fonts, with all below it; each call adds one
 *   "system-fonts":  "yes" (as it is without a call) or "no"
 *   "font-map":      a text file of lines "ASKED = FONT", each a call of vx_library_map_font; what follows "#" is a comment
 *   "temp-dir":      the folder in which vx_render_isolated keeps what it makes ("/tmp")
 *
 * The first two have to be set before the fonts are counted or mapped and before the first document is opened; later they
 * are VX_WRONG_ARGUMENT. The last two hold for documents that are opened afterwards.
 */
vx_status vx_library_set(vx_library *library, const char *name, const char *value, vx_error *error);

/*
 * Adds a font from memory, as long as "font-dir" may be set: an OpenType or Type 1 file, or a collection, all of whose faces
 * are added. The bytes are copied. It is found before those of files that have the same name.
 */
vx_status vx_library_add_font(vx_library *library, const void *bytes, size_t size, vx_error *error);

/*
 * Lets a font serve a name in all documents that are opened afterwards, whatever else would serve it. There can be 10000 such
 * names. The call lists the fonts, so that none can be added afterwards.
 *
 *   asked   the name, as documents ask for it
 *   served  the PostScript name of a font that there is, else VX_WRONG_OPTION; null: what was said of that name holds no more
 */
vx_status vx_library_map_font(vx_library *library, const char *asked, const char *served, vx_error *error);

/*
 * Adds a press profile from memory: in documents that are opened afterwards the option "profile" means it by that name, and
 * no file. Another of the same name takes its place.
 *
 *   name   1 to 255 bytes; the names of profiles that are built in are taken
 *   bytes  an ICC profile of a CMYK press, at most 32 MiB, else VX_WRONG_ARGUMENT; they are copied
 */
vx_status vx_library_add_profile(vx_library *library, const char *name, const void *bytes, size_t size,
                                 vx_error *error);

/* The fonts that there are, in the order in which they are searched. Texts are valid as long as the library. */
typedef struct vx_font_entry {
    size_t size;            /* sizeof(vx_font_entry), set by the caller */
    const char *postscript; /* the name by which documents ask */
    const char *family;
    const char *served_by; /* PostScript name of the font that stands in for it; empty: it is there itself */
    const char *file;      /* as the system has it; empty: it came from memory, or boxes are drawn */
    int32_t face;          /* its number in the file, from 0 */
    int32_t variation;     /* its named variation, from 1; 0: none */
} vx_font_entry;
vx_status vx_library_font_count(vx_library *library, size_t *count, vx_error *error);
vx_status vx_library_font_at(vx_library *library, size_t index, vx_font_entry *entry, vx_error *error);

/* ---- What can be chosen ---- */

typedef struct vx_format {
    size_t size;      /* sizeof(vx_format), set by the caller */
    const char *name; /* as vx_document_render takes it; also the extension of a file */
    const char *mime;
} vx_format;
size_t vx_format_count(void);
vx_status vx_format_at(size_t index, vx_format *format, vx_error *error);

/* An option of a document, or of a library. All texts are valid for ever. */
typedef struct vx_option {
    size_t size;          /* sizeof(vx_option), set by the caller */
    const char *name;     /* "dpi" */
    const char *value;    /* what stands for its value in help: "N", "COLOR" */
    const char *choices;  /* all values that there are, as "relative,perceptual"; empty: they are not a few */
    const char *standard; /* the value that it has when nobody sets it; empty: it depends, see help */
    const char *formats;  /* those that it is for, as "svg,png"; empty: it is about reading any document */
    const char *help;     /* one line */
    double least, most;   /* the range of a number; both 0: nothing is said */
} vx_option;
size_t vx_option_count(void);
vx_status vx_option_at(size_t index, vx_option *option, vx_error *error);

/* The options of vx_library_set. A library that is built for a machine without files, as a browser is, has none. */
size_t vx_library_option_count(void);
vx_status vx_library_option_at(size_t index, vx_option *option, vx_error *error);

/* ---- A document ---- */

enum { VX_COPY = 0, VX_BORROW = 1 };

/*
 * Opens a document and reads its header. Where that fails, as with VX_NOT_A_DRAWING, there is no document to free.
 *
 *   path      the name of a regular file, which must not change while the document is open: one that is cut may end the
 *             process. A library that is built for a machine without files returns VX_CANNOT_READ.
 *   bytes     the whole document, at most 2^31 - 1 bytes
 *   how       VX_COPY: the bytes may go when the call returns. VX_BORROW: they stay as they are until vx_document_free.
 *   document  receives it; free it with vx_document_free
 */
vx_status vx_document_open_file(vx_library *library, const char *path, vx_document **document,
                                vx_error *error);
vx_status vx_document_open_bytes(vx_library *library, const void *bytes, size_t size, int32_t how,
                                 vx_document **document, vx_error *error);
void vx_document_free(vx_document *document); /* null is allowed */

/*
 * Sets an option by name and text, as a command line has them: "dpi", "300". Null for value makes it what it was at
 * first. A wrong value changes nothing, nor does one that does not go with the others: "dpi" and "width" are two sizes.
 */
vx_status vx_document_set(vx_document *document, const char *name, const char *value, vx_error *error);

/* What the header states. Texts are valid until vx_document_free, and empty where the header says nothing. */
typedef struct vx_facts {
    size_t size;                     /* sizeof(vx_facts), set by the caller */
    int32_t version;                 /* 2 to 5 */
    int32_t monochrome;              /* 1: declared black and white */
    double left, bottom, right, top; /* the box, as written; it may be inverted or empty */
    const char *title, *creator, *created;
} vx_facts;
vx_status vx_document_facts(vx_document *document, vx_facts *facts, vx_error *error);

/*
 * All that is known of the document as one JSON object, as `vx info --json` prints it but for "file" and "confinedBy": the
 * document is read to its end, and nothing is drawn. The text is valid until the next such call.
 */
vx_status vx_document_json(vx_document *document, const char **json, vx_error *error);

/*
 * Tells the words of the document, text by text in the order in which they are painted, those of layers that the options "layers"
 * and "hide" name. Nothing is drawn. What has been told when the call fails may not be all.
 *
 *   lines  the lines of a text, each with a line end behind it: from top to bottom, columns from right to left
 *   json   all that is known of the text, one JSON object as `vx text --json` prints it but for "file": layer, place, fonts, sizes
 *          and colours, and where each line stands
 *
 * Both are valid during the call of the procedure. U+FFFD stands for what means no character in its font's character set, and a
 * warning tells how often. Words are the same whatever serves their fonts, so no warning is about fonts, and none is listed.
 */
typedef int (*vx_text)(void *context, const char *lines, const char *json);
vx_status vx_document_texts(vx_document *document, vx_text found, void *context, vx_error *error);

/*
 * Tells what is painted at a point: the topmost object of the layers that the options "layers" and "hide" name. Nothing is drawn.
 *
 *   x, y    points, in the coordinates of the document's box
 *   within  points, above 0: lines that are thinner are found as if they were as wide as that
 *   json    receives one JSON object, valid until the next such call; null where there is paper. Its members:
 *             kind       "fill", "stroke", "text" or "blend"
 *             colour     as `vx text --json` has colours, of a blend that at the point; "spot2" and "amount2" are the other of
 *                        two spot inks
 *             overprint  whether it leaves the inks that it has none of
 *             layer      the name of the innermost layer, or null
 *             printing   whether that layer prints
 *             box        left, bottom, right and top of what its clip leaves of it, in points
 *             width      of a stroke, in points; 0: the thinnest line that can be seen
 *             text, font, served, size   of a text: the characters that look the same, their font as asked for and as served, and
 *                        the height of an em in points
 */
vx_status vx_document_object_at(vx_document *document, double x, double y, double within, const char **json,
                                vx_error *error);

/* The procedure is called while a document is read; done and total are bytes. With null nobody is told. */
typedef int (*vx_progress)(void *context, int64_t done, int64_t total);
vx_status vx_document_set_progress(vx_document *document, vx_progress procedure, void *context,
                                   vx_error *error);

/*
 * Draws the document and gives the bytes of a file of that format to write, in order and in pieces; one of "tiff", whose beginning
 * is known at its end, is held until then. What has been written when the call fails is no whole file.
 */
typedef int (*vx_write)(void *context, const void *bytes, size_t size);
vx_status vx_document_render(vx_document *document, const char *format, vx_write write, void *context,
                             vx_error *error);

/*
 * Draws the document into pixels of the caller's: 8 bits each red, green, blue and alpha, colours in sRGB and not
 * multiplied by alpha. The box, turned upright, fills the picture exactly, whatever its aspect; the options of a picture's
 * size are not looked at, those of colours, background and samples are. A call that fails may have changed some rows.
 */
typedef struct vx_pixels {
    size_t size;                     /* sizeof(vx_pixels), set by the caller */
    double left, bottom, right, top; /* what is shown, points; all 0: what the options say */
    int32_t width, height;           /* pixels, 1 to 131072; at most 2^28 in all */
    uint8_t *top_row;                /* the first pixel of the uppermost row */
    ptrdiff_t stride;                /* bytes from a row to the one below it; may be negative */
} vx_pixels;
vx_status vx_document_pixels(vx_document *document, const vx_pixels *pixels, vx_error *error);

/*
 * Draws the plates of a press into pixels: how much of each ink a pixel has, to the byte as `vx plates` has it. Of options the
 * same are looked at as for vx_document_pixels, but for those of colours and background.
 */
typedef struct vx_inks {
    size_t size;                     /* sizeof(vx_inks), set by the caller */
    double left, bottom, right, top; /* what is shown, points; all 0: what the options say */
    int32_t width, height;           /* pixels, 1 to 131072; at most 2^28 in all */
    /* These are filled in, and valid until the next such call. Amounts stand from the uppermost row, the inks of a pixel
       beside each other: 0 none, 255 full. */
    const char *const *names; /* Cyan, Magenta, Yellow, Black, and each spot ink that is painted with */
    size_t ink_count;
    const uint8_t *amounts;
} vx_inks;
vx_status vx_document_inks(vx_document *document, vx_inks *inks, vx_error *error);

/*
 * Makes the plates of a press as files, to the byte those of `vx plates` with the same options.
 *
 *   format  "png" or "tiff": gray pictures in which black is all of the ink
 *   take    is given each whole file once all are made, process inks first; the texts and bytes are valid during the call of it
 */
typedef int (*vx_plate)(void *context, const char *ink, const void *bytes, size_t size);
vx_status vx_document_plates(vx_document *document, const char *format, vx_plate take, void *context,
                             vx_error *error);

/*
 * Measures how much ink the page takes, on plates as the options of a picture make them.
 *
 *   limit     percent of all inks together above which there is too much, up to 10000; most presses take 300
 *   json      receives one JSON object, as `vx coverage --json` prints it but for "file"; valid until the next such call
 *   heat_map  is given the bytes of a PNG of how much ink there is where; null: there is none
 */
vx_status vx_document_coverage(vx_document *document, double limit, const char **json, vx_write heat_map,
                               void *context, vx_error *error);

/* Looks for what a press would get wrong, as `vx check` does, on plates as the options of a picture make them. */
typedef struct vx_check {
    size_t size;        /* sizeof(vx_check), set by the caller */
    const char *name;   /* of the drawing: "file" in the JSON, and on the page; null: neither has one */
    const char *limits; /* JSON as a file of `vx check --limits` has it; null: those that hold without one */
    vx_write page; /* is given the bytes of a page of HTML, with all pictures in it; null: there is none */
    void *context; /* for page */
    /* These are filled in, and valid until the next such call. */
    const char *text; /* a line a finding, the worst first, as `vx check` prints them */
    const char *json; /* one object, as `vx check --json` prints it */
} vx_check;
vx_status vx_document_check(vx_document *document, vx_check *check, vx_error *error);

/* The size, in pixels, that a PNG has under the options. */
vx_status vx_document_size(vx_document *document, int32_t *width, int32_t *height, vx_error *error);

/*
 * Warnings are what the last call that read the document had to tell beside its error, each a line for a person. They are
 * valid until the next such call.
 */
size_t vx_document_warning_count(vx_document *document);                 /* null, or at work: 0 */
const char *vx_document_warning_at(vx_document *document, size_t index); /* null: no such warning */

/* The fonts that it used, in the order of their first texts, and what served them. They are valid as long as warnings. */
typedef enum vx_match {
    VX_FONT_BOXES = 0,     /* nothing serves it */
    VX_FONT_EXACT = 1,     /* the font of that name */
    VX_FONT_STAND_IN = 2,  /* one of another name that has the same widths */
    VX_FONT_SUBSTITUTE = 3 /* the best of another design */
} vx_match;
typedef struct vx_font_use {
    size_t size;        /* sizeof(vx_font_use), set by the caller */
    const char *asked;  /* as the document names it */
    const char *served; /* PostScript name; empty: boxes */
    vx_match match;
    uint64_t strings, characters, missing_glyphs;
} vx_font_use;
size_t vx_document_font_count(vx_document *document);
vx_status vx_document_font_at(vx_document *document, size_t index, vx_font_use *use, vx_error *error);

/* ---- A drawing in a process of its own ---- */

/* Is told of a warning: a line for a person, valid during the call. */
typedef int (*vx_warning)(void *context, const char *text);

/*
 * Renders a drawing as vx_document_render does, with the same bytes, in a process of its own: for drawings of strangers. The
 * caller's process looks at nothing of the drawing, the profile and the fonts; a crash, an endless loop or a hunger for
 * memory there is an error of this call. Linux; elsewhere it is VX_NOT_ISOLATED, as it is without the helper program that is
 * installed with the library: PREFIX/libexec/vx/vx-isolated, beside PREFIX/lib.
 *
 *   library  its options, its font map and its profiles hold, also while other threads use it. Fonts from memory cannot be
 *            handed over and are VX_WRONG_ARGUMENT: put them in a folder. Fonts are not listed in the caller's process
 *   request  see there
 *   write    is given the bytes of the file, in order and in pieces, once the helper has all of it. When the call fails
 *            later, what was written is no whole file
 *   context  for write and for the procedures of the request
 *
 * Limits: "max-time" is that of the whole call, the time that the caller's procedures take not counted; then the helper is
 * killed. "max-memory" is all that the process at work allocates, beside files that are mapped; "max-output" is the
 * longest file that it may write, which is kept in "temp-dir" meanwhile. They are enforced by the system.
 *
 * Confinement: before it reads the first byte, the process at work gives up all files but the drawing, the fonts and a
 * profile, the network, other processes and most system calls. A kernel that lacks Landlock or seccomp is a warning, or with
 * must_be_confined VX_NOT_ISOLATED, and then the drawing is not read.
 *
 * The helper is started by posix_spawn, with no descriptors but its own, default signals, a process group of its own, the
 * working folder, and of the environment LD_LIBRARY_PATH, HOME, LANG, LC_*, XDG_*, FONTCONFIG_* and FC_*. It ends with the
 * call, and with the thread that called. The program's SIGCHLD arrives; it may be ignored, and the program may wait for all of
 * its children. Bytes of a drawing are copied into a file in memory, those at a path are not copied. The helper has
 * to be of the version of the library.
 */
typedef struct vx_isolated {
    size_t size;       /* sizeof(vx_isolated), set by the caller */
    const char *path;  /* of the drawing, a regular file; null: the bytes are the drawing */
    const void *bytes; /* at most 2^31 - 1; null with a path */
    size_t byte_count;
    const char *format;         /* as vx_document_render takes it */
    const char *const *options; /* as vx_document_set takes them, a name and its value in turn; null: none */
    size_t option_count;        /* pairs */
    int32_t must_be_confined;   /* 1: refuse where the kernel cannot confine all of it */
    const char *helper;         /* path of the helper program; null: the one that is installed */
    vx_progress
        progress; /* done is of total, which is 100. At least some ten times a second, so that it can end the
                             call; null: nobody is told */
    vx_warning warning; /* after all has been written, or has failed; null: nobody is told */
} vx_isolated;
vx_status vx_render_isolated(vx_library *library, const vx_isolated *request, vx_write write, void *context,
                             vx_error *error);

/* ---- Drawing into a program's own procedures ---- */

typedef struct vx_point {
    double x, y;
} vx_point;

/* Maps (x, y) to (a x + c y + tx, b x + d y + ty). */
typedef struct vx_matrix {
    double a, b, c, d, tx, ty;
} vx_matrix;

/* How many points follow each verb: 1, 1, 3, 0. Every subpath starts with a move. */
enum { VX_MOVE = 0, VX_LINE = 1, VX_CURVE = 2, VX_CLOSE = 3 };
typedef struct vx_path {
    const uint8_t *verbs;
    size_t verb_count;
    const vx_point *points; /* on the page */
    size_t point_count;
} vx_path;

/* An ink of its own, mixed before it comes to the press. The same ink has the same pointer, valid until the drawing ends. */
typedef struct vx_spot {
    const char *name;
    double alternate[4]; /* the CMYK that stands in for all of it */
} vx_spot;

typedef struct vx_spot_share {
    const vx_spot *spot; /* null: none */
    double amount;       /* of it, from 0 to 1 */
} vx_spot_share;

/* A colour as the document says it. Gray: ink[0] from 0, black, to 1. CMYK: four amounts from 0 to 1. */
enum { VX_GRAY = 0, VX_CMYK = 1 };
typedef struct vx_colour {
    int32_t space;
    double ink[4];
    vx_spot_share
        spots[2]; /* two where one ink blends into another; the four amounts stand in for the mixture */
} vx_colour;

typedef struct vx_paint {
    vx_colour colour;
    /* 1: an ink of 0 leaves what is there, and gray touches black alone. 0: all inks are replaced. */
    int32_t overprint;
} vx_paint;

enum { VX_CAP_BUTT = 0, VX_CAP_ROUND = 1, VX_CAP_SQUARE = 2 };
enum { VX_JOIN_MITER = 0, VX_JOIN_ROUND = 1, VX_JOIN_BEVEL = 2 };
typedef struct vx_stroke {
    double width; /* 0: the thinnest line that can be seen */
    int32_t cap, join;
    double miter_limit, dash_phase;
    const double *dashes; /* lengths of dashes and gaps in turn; never negative, never all 0 */
    size_t dash_count;    /* 0: solid */
    vx_matrix matrix;     /* from the space that the lengths are in to the page */
} vx_stroke;

/* Colours follow each other at equal distances, the first at from and the last at to; one alone fills the span. */
typedef struct vx_span {
    double from, to;
    const vx_colour *colours;
    size_t count;
} vx_span;

/*
 * Axial: the parameter is x, and the square from (0, 0) to (1, 1) under the matrix is painted. Radial: it runs from 0 at
 * the first circle to 1 at the last, under the matrix; the disc of each lies over those before it.
 */
enum { VX_AXIAL = 0, VX_RADIAL = 1 };
typedef struct vx_shading {
    int32_t kind;
    vx_matrix matrix;
    vx_point first, last; /* centres */
    double first_radius, last_radius;
    const vx_span *spans; /* adjoining, from 0 to 1 */
    size_t span_count;
    int32_t overprint;
    /* Where it is not empty, all of this path is painted too, beyond the first circle in the first colour. */
    vx_path ground;
} vx_shading;

/*
 * A font that text is set in. It is valid until the drawing ends, and the same font has the same pointer.
 */
typedef struct vx_font {
    const char *asked;  /* as the document names it */
    const char *served; /* PostScript name of the font in the bytes */
    const void *bytes;  /* of a font file */
    size_t size;
    int32_t face;                          /* its number in the file, from 0 */
    int32_t variation;                     /* its named variation, from 1; 0: none */
    const struct vx_font_source *outlines; /* the library's own */
} vx_font;

typedef struct vx_glyph {
    uint32_t glyph;     /* its number in the font; 0 is the glyph for what is missing */
    uint32_t character; /* Unicode */
    double advance;     /* ems, along the line or down the column, spacing not counted */
    vx_point origin;    /* left end of its baseline, on the page */
} vx_glyph;

/* Characters of one font and one size, in reading order. */
typedef struct vx_run {
    const vx_font *font;
    vx_matrix matrix;  /* ems, y up, to the page; its translation is 0 */
    int32_t is_column; /* 1: upright glyphs, one below the other */
    const vx_glyph *glyphs;
    size_t glyph_count;
} vx_run;

/* Text is filled, then stroked, then made part of the clip, as far as each is 1. */
typedef struct vx_text_paint {
    int32_t fills, strokes, clips;
    vx_paint paint;
    vx_stroke stroke; /* in the page's space, not the glyphs' */
} vx_text_paint;

/* A layer of the drawing. It is valid until the drawing ends. */
typedef struct vx_layer {
    const char *name;
    int32_t is_visible, is_previewed, is_enabled; /* not enabled: locked */
    int32_t is_printing; /* what is painted follows this, but for the option "layers" */
    int32_t is_dimmed;
    double rgb[3]; /* the colour of its outlines in an editor, from 0 to 1 */
} vx_layer;

/*
 * A program's own procedures. All that they are given is valid during the call only, but for fonts. The non-zero winding
 * rule says what is inside a path. A procedure that is null is not called; without shade a program gets shadings as flat shapes,
 * without text it gets text as paths. The clip is the only state: save and restore bracket its changes and are balanced
 * when end comes, which it also does for a document that turned out to be damaged. Later versions append procedures: a
 * size that ends before some of them stands for null in these.
 */
typedef struct vx_device {
    size_t size; /* sizeof(vx_device), set by the caller */
    void *context;
    int (*begin)(void *context, double left, double bottom, double right, double top);
    int (*save)(void *context);
    int (*restore)(void *context);
    int (*clip)(void *context, const vx_path *path); /* intersects; an empty path clips everything */
    int (*fill)(void *context, const vx_path *path, const vx_paint *paint);
    int (*stroke)(void *context, const vx_path *path, const vx_stroke *stroke, const vx_paint *paint);
    int (*shade)(void *context, const vx_shading *shading);
    int (*text)(void *context, const vx_run *runs, size_t count, const vx_text_paint *paint);
    int (*end)(void *context);
    /* Layers nest, groups nest within a layer; either may cross save and restore. All are balanced when end comes. */
    int (*begin_layer)(void *context, const vx_layer *layer);
    int (*end_layer)(void *context);
    int (*begin_group)(void *context);
    int (*end_group)(void *context);
} vx_device;
vx_status vx_document_draw(vx_document *document, const vx_device *device, vx_error *error);

/*
 * Gives the outline of a glyph in ems, y up, from the left end of its baseline; that of a blank is empty. A text procedure may
 * call it, as long as it has not returned. The path is valid until the next such call with that font.
 */
vx_status vx_font_outline(const vx_font *font, uint32_t glyph, vx_path *outline, vx_error *error);

#ifdef __cplusplus
}
#endif

#endif
