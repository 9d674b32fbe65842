/*
 * Makes a picture of a drawing: picture harp.vx harp.png, or .svg or .pdf.
 *
 *     cc -std=c99 picture.c $(pkg-config --cflags --libs vx) -o picture
 */
#include <vx.h>

#include <stdio.h>
#include <string.h>

static int write_to_file(void *context, const void *bytes, size_t size)
{
    return fwrite(bytes, 1, size, (FILE *)context) != size;
}

static vx_status make_picture(const char *drawing, const char *format, FILE *to, vx_error *error)
{
    vx_library *library;
    vx_document *document;
    vx_status status = vx_library_create(VX_INTERFACE, &library, error);
    if (status != VX_OK)
        return status;
    status = vx_document_open_file(library, drawing, &document, error);
    if (status == VX_OK) {
        status = vx_document_render(document, format, write_to_file, to, error);
        for (size_t i = 0; i < vx_document_warning_count(document); ++i)
            fprintf(stderr, "%s: %s\n", drawing, vx_document_warning_at(document, i));
        vx_document_free(document);
    }
    vx_library_free(library);
    return status;
}

int main(int count, char **arguments)
{
    if (count != 3 || strrchr(arguments[2], '.') == NULL) {
        fputs("usage: picture DRAWING OUTPUT.png\n", stderr);
        return 2;
    }
    FILE *to = fopen(arguments[2], "wb");
    if (to == NULL) {
        perror(arguments[2]);
        return 1;
    }
    vx_error error = {sizeof error, VX_OK, ""};
    const vx_status status = make_picture(arguments[1], strrchr(arguments[2], '.') + 1, to, &error);
    if (status != VX_OK)
        fprintf(stderr, "%s\n", error.text);
    return fclose(to) != 0 || status != VX_OK;
}
