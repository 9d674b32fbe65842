/*
 * Prints what a drawing says in words.
 *
 *     cc -std=c99 words.c $(pkg-config --cflags --libs vx) -o words
 */
#include <vx.h>

#include <stdio.h>

/* The other argument is the same text in JSON, with its layer, its place, its fonts and its colours. */
static int print(void *context, const char *lines, const char *json)
{
    (void)context;
    (void)json;
    return fputs(lines, stdout) == EOF;
}

int main(int count, char **arguments)
{
    vx_library *library;
    vx_document *document = NULL;
    vx_error error = {sizeof error, VX_OK, ""};
    if (count != 2 || vx_library_create(VX_INTERFACE, &library, &error) != VX_OK) {
        fprintf(stderr, "usage: words DRAWING %s\n", error.text);
        return 2;
    }
    /* Texts of layers that do not print are there only for whoever asks. */
    if (vx_document_open_file(library, arguments[1], &document, &error) == VX_OK &&
        vx_document_set(document, "layers", "all", &error) == VX_OK)
        (void)vx_document_texts(document, print, NULL, &error);
    vx_document_free(document);
    vx_library_free(library);
    if (error.status != VX_OK)
        fprintf(stderr, "%s\n", error.text);
    return error.status != VX_OK;
}
