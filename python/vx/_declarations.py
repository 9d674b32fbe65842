"""Repeats the declarations of vx.h, without its comments. A test compares the two: paste here what changes there."""

DECLARATIONS = """
#define VX_INTERFACE 2

typedef struct vx_library vx_library;
typedef struct vx_document vx_document;

typedef enum vx_status {
    VX_OK = 0,
    VX_WRONG_ARGUMENT = 1,
    VX_WRONG_OPTION = 2,
    VX_CANNOT_READ = 3,
    VX_NOT_A_DRAWING = 4,
    VX_MALFORMED = 5,
    VX_FONT_MISSING = 6,
    VX_LIMIT = 7,
    VX_OUT_OF_MEMORY = 8,
    VX_CANNOT_WRITE = 9,
    VX_STOPPED = 10,
    VX_BUSY = 11,
    VX_FAILED = 12,
    VX_NOT_ISOLATED = 13
} vx_status;

typedef struct vx_error {
    size_t size;
    vx_status status;
    char text[496];
} vx_error;

const char *vx_version(void);

vx_status vx_library_create(uint32_t interface, vx_library **library, vx_error *error);
void vx_library_free(vx_library *library);

vx_status vx_library_set(vx_library *library, const char *name, const char *value, vx_error *error);

vx_status vx_library_add_font(vx_library *library, const void *bytes, size_t size, vx_error *error);

vx_status vx_library_map_font(vx_library *library, const char *asked, const char *served, vx_error *error);

vx_status vx_library_add_profile(vx_library *library, const char *name, const void *bytes, size_t size,
                                 vx_error *error);

typedef struct vx_font_entry {
    size_t size;
    const char *postscript;
    const char *family;
    const char *served_by;
    const char *file;
    int32_t face;
    int32_t variation;
} vx_font_entry;
vx_status vx_library_font_count(vx_library *library, size_t *count, vx_error *error);
vx_status vx_library_font_at(vx_library *library, size_t index, vx_font_entry *entry, vx_error *error);

typedef struct vx_format {
    size_t size;
    const char *name;
    const char *mime;
} vx_format;
size_t vx_format_count(void);
vx_status vx_format_at(size_t index, vx_format *format, vx_error *error);

typedef struct vx_option {
    size_t size;
    const char *name;
    const char *value;
    const char *choices;
    const char *standard;
    const char *formats;
    const char *help;
    double least, most;
} vx_option;
size_t vx_option_count(void);
vx_status vx_option_at(size_t index, vx_option *option, vx_error *error);

size_t vx_library_option_count(void);
vx_status vx_library_option_at(size_t index, vx_option *option, vx_error *error);

enum { VX_COPY = 0, VX_BORROW = 1 };

vx_status vx_document_open_file(vx_library *library, const char *path, vx_document **document,
                                vx_error *error);
vx_status vx_document_open_bytes(vx_library *library, const void *bytes, size_t size, int32_t how,
                                 vx_document **document, vx_error *error);
void vx_document_free(vx_document *document);

vx_status vx_document_set(vx_document *document, const char *name, const char *value, vx_error *error);

typedef struct vx_facts {
    size_t size;
    int32_t version;
    int32_t monochrome;
    double left, bottom, right, top;
    const char *title, *creator, *created;
} vx_facts;
vx_status vx_document_facts(vx_document *document, vx_facts *facts, vx_error *error);

vx_status vx_document_json(vx_document *document, const char **json, vx_error *error);

typedef int (*vx_text)(void *context, const char *lines, const char *json);
vx_status vx_document_texts(vx_document *document, vx_text found, void *context, vx_error *error);

vx_status vx_document_object_at(vx_document *document, double x, double y, double within, const char **json,
                                vx_error *error);

typedef int (*vx_progress)(void *context, int64_t done, int64_t total);
vx_status vx_document_set_progress(vx_document *document, vx_progress procedure, void *context,
                                   vx_error *error);

typedef int (*vx_write)(void *context, const void *bytes, size_t size);
vx_status vx_document_render(vx_document *document, const char *format, vx_write write, void *context,
                             vx_error *error);

typedef struct vx_pixels {
    size_t size;
    double left, bottom, right, top;
    int32_t width, height;
    uint8_t *top_row;
    ptrdiff_t stride;
} vx_pixels;
vx_status vx_document_pixels(vx_document *document, const vx_pixels *pixels, vx_error *error);

typedef struct vx_inks {
    size_t size;
    double left, bottom, right, top;
    int32_t width, height;
    const char *const *names;
    size_t ink_count;
    const uint8_t *amounts;
} vx_inks;
vx_status vx_document_inks(vx_document *document, vx_inks *inks, vx_error *error);

typedef int (*vx_plate)(void *context, const char *ink, const void *bytes, size_t size);
vx_status vx_document_plates(vx_document *document, const char *format, vx_plate take, void *context,
                             vx_error *error);

vx_status vx_document_coverage(vx_document *document, double limit, const char **json, vx_write heat_map,
                               void *context, vx_error *error);

typedef struct vx_check {
    size_t size;
    const char *name;
    const char *limits;
    vx_write page;
    void *context;
    const char *text;
    const char *json;
} vx_check;
vx_status vx_document_check(vx_document *document, vx_check *check, vx_error *error);

vx_status vx_document_size(vx_document *document, int32_t *width, int32_t *height, vx_error *error);

size_t vx_document_warning_count(vx_document *document);
const char *vx_document_warning_at(vx_document *document, size_t index);

typedef enum vx_match {
    VX_FONT_BOXES = 0,
    VX_FONT_EXACT = 1,
    VX_FONT_STAND_IN = 2,
    VX_FONT_SUBSTITUTE = 3
} vx_match;
typedef struct vx_font_use {
    size_t size;
    const char *asked;
    const char *served;
    vx_match match;
    uint64_t strings, characters, missing_glyphs;
} vx_font_use;
size_t vx_document_font_count(vx_document *document);
vx_status vx_document_font_at(vx_document *document, size_t index, vx_font_use *use, vx_error *error);

typedef int (*vx_warning)(void *context, const char *text);

typedef struct vx_isolated {
    size_t size;
    const char *path;
    const void *bytes;
    size_t byte_count;
    const char *format;
    const char *const *options;
    size_t option_count;
    int32_t must_be_confined;
    const char *helper;
    vx_progress progress;
    vx_warning warning;
} vx_isolated;
vx_status vx_render_isolated(vx_library *library, const vx_isolated *request, vx_write write, void *context,
                             vx_error *error);

typedef struct vx_point {
    double x, y;
} vx_point;

typedef struct vx_matrix {
    double a, b, c, d, tx, ty;
} vx_matrix;

enum { VX_MOVE = 0, VX_LINE = 1, VX_CURVE = 2, VX_CLOSE = 3 };
typedef struct vx_path {
    const uint8_t *verbs;
    size_t verb_count;
    const vx_point *points;
    size_t point_count;
} vx_path;

typedef struct vx_spot {
    const char *name;
    double alternate[4];
} vx_spot;

typedef struct vx_spot_share {
    const vx_spot *spot;
    double amount;
} vx_spot_share;

enum { VX_GRAY = 0, VX_CMYK = 1 };
typedef struct vx_colour {
    int32_t space;
    double ink[4];
    vx_spot_share spots[2];
} vx_colour;

typedef struct vx_paint {
    vx_colour colour;
    int32_t overprint;
} vx_paint;

enum { VX_CAP_BUTT = 0, VX_CAP_ROUND = 1, VX_CAP_SQUARE = 2 };
enum { VX_JOIN_MITER = 0, VX_JOIN_ROUND = 1, VX_JOIN_BEVEL = 2 };
typedef struct vx_stroke {
    double width;
    int32_t cap, join;
    double miter_limit, dash_phase;
    const double *dashes;
    size_t dash_count;
    vx_matrix matrix;
} vx_stroke;

typedef struct vx_span {
    double from, to;
    const vx_colour *colours;
    size_t count;
} vx_span;

enum { VX_AXIAL = 0, VX_RADIAL = 1 };
typedef struct vx_shading {
    int32_t kind;
    vx_matrix matrix;
    vx_point first, last;
    double first_radius, last_radius;
    const vx_span *spans;
    size_t span_count;
    int32_t overprint;
    vx_path ground;
} vx_shading;

typedef struct vx_font {
    const char *asked;
    const char *served;
    const void *bytes;
    size_t size;
    int32_t face;
    int32_t variation;
    const struct vx_font_source *outlines;
} vx_font;

typedef struct vx_glyph {
    uint32_t glyph;
    uint32_t character;
    double advance;
    vx_point origin;
} vx_glyph;

typedef struct vx_run {
    const vx_font *font;
    vx_matrix matrix;
    int32_t is_column;
    const vx_glyph *glyphs;
    size_t glyph_count;
} vx_run;

typedef struct vx_text_paint {
    int32_t fills, strokes, clips;
    vx_paint paint;
    vx_stroke stroke;
} vx_text_paint;

typedef struct vx_layer {
    const char *name;
    int32_t is_visible, is_previewed, is_enabled;
    int32_t is_printing;
    int32_t is_dimmed;
    double rgb[3];
} vx_layer;

typedef struct vx_device {
    size_t size;
    void *context;
    int (*begin)(void *context, double left, double bottom, double right, double top);
    int (*save)(void *context);
    int (*restore)(void *context);
    int (*clip)(void *context, const vx_path *path);
    int (*fill)(void *context, const vx_path *path, const vx_paint *paint);
    int (*stroke)(void *context, const vx_path *path, const vx_stroke *stroke, const vx_paint *paint);
    int (*shade)(void *context, const vx_shading *shading);
    int (*text)(void *context, const vx_run *runs, size_t count, const vx_text_paint *paint);
    int (*end)(void *context);
    int (*begin_layer)(void *context, const vx_layer *layer);
    int (*end_layer)(void *context);
    int (*begin_group)(void *context);
    int (*end_group)(void *context);
} vx_device;
vx_status vx_document_draw(vx_document *document, const vx_device *device, vx_error *error);

vx_status vx_font_outline(const vx_font *font, uint32_t glyph, vx_path *outline, vx_error *error);
"""
