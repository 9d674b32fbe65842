/*
 * Counts what a drawing is printed with: how many shapes and texts put down which ink.
 *
 *     cc -std=c99 inks.c $(pkg-config --cflags --libs vx) -o inks
 */
#include <vx.h>

#include <stdio.h>

static const char *const names[] = {"cyan", "magenta", "yellow", "black"};

typedef struct tally {
    unsigned long inks[4], characters;
} tally;

static void count_colour(tally *to, const vx_colour *colour)
{
    if (colour->space == VX_GRAY) {
        to->inks[3] += colour->ink[0] < 1; /* 1 is white */
        return;
    }
    for (int i = 0; i < 4; ++i)
        to->inks[i] += colour->ink[i] > 0;
}

static int fill(void *context, const vx_path *path, const vx_paint *paint)
{
    (void)path;
    count_colour(context, &paint->colour);
    return 0;
}

static int stroke(void *context, const vx_path *path, const vx_stroke *stroke, const vx_paint *paint)
{
    (void)path;
    (void)stroke;
    count_colour(context, &paint->colour);
    return 0;
}

static int shade(void *context, const vx_shading *shading)
{
    for (size_t i = 0; i < shading->span_count; ++i)
        count_colour(context, &shading->spans[i].colours[0]);
    return 0;
}

static int text(void *context, const vx_run *runs, size_t count, const vx_text_paint *paint)
{
    if (paint->fills || paint->strokes)
        count_colour(context, &paint->paint.colour);
    for (size_t i = 0; i < count; ++i)
        ((tally *)context)->characters += runs[i].glyph_count;
    return 0;
}

int main(int count, char **arguments)
{
    vx_library *library;
    vx_document *document = NULL;
    vx_error error = {sizeof error, VX_OK, ""};
    tally counted = {{0, 0, 0, 0}, 0};
    /* What is not named is null, and not called. */
    const vx_device device = {.size = sizeof device,
                              .context = &counted,
                              .fill = fill,
                              .stroke = stroke,
                              .shade = shade,
                              .text = text};
    if (count != 2 || vx_library_create(VX_INTERFACE, &library, &error) != VX_OK) {
        fprintf(stderr, "usage: inks DRAWING %s\n", error.text);
        return 2;
    }
    if (vx_document_open_file(library, arguments[1], &document, &error) == VX_OK)
        (void)vx_document_draw(document, &device, &error);
    vx_document_free(document);
    vx_library_free(library);
    if (error.status != VX_OK) {
        fprintf(stderr, "%s\n", error.text);
        return 1;
    }
    for (int i = 0; i < 4; ++i)
        printf("%s %lu\n", names[i], counted.inks[i]);
    printf("characters %lu\n", counted.characters);
    return 0;
}
