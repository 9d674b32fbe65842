/*
 * Makes a PNG of a stranger's drawing in a process of its own, within 20 seconds and 256 MiB: isolated harp.vx harp.png.
 *
 *     cc -std=c99 isolated.c $(pkg-config --cflags --libs vx) -o isolated
 */
#include <vx.h>

#include <stdio.h>

static int write_to_file(void *context, const void *bytes, size_t size)
{
    return fwrite(bytes, 1, size, (FILE *)context) != size;
}

static int tell(void *context, const char *text)
{
    (void)context;
    return fprintf(stderr, "%s\n", text) < 0;
}

static vx_status make_picture(const char *drawing, FILE *to, vx_error *error)
{
    static const char *const options[] = {"max-time", "20", "max-memory", "256M"};
    vx_isolated request = {0};
    vx_library *library;
    vx_status status = vx_library_create(VX_INTERFACE, &library, error);
    if (status != VX_OK)
        return status;
    request.size = sizeof request;
    request.path = drawing;
    request.format = "png";
    request.options = options;
    request.option_count = 2;
    request.warning = tell;
    status = vx_render_isolated(library, &request, write_to_file, to, error);
    vx_library_free(library);
    return status;
}

int main(int count, char **arguments)
{
    if (count != 3) {
        fputs("usage: isolated DRAWING OUTPUT.png\n", stderr);
        return 2;
    }
    FILE *to = fopen(arguments[2], "wb");
    if (to == NULL) {
        perror(arguments[2]);
        return 1;
    }
    vx_error error = {sizeof error, VX_OK, ""};
    const vx_status status = make_picture(arguments[1], to, &error);
    if (status != VX_OK)
        fprintf(stderr, "%s\n", error.text);
    return fclose(to) != 0 || status != VX_OK;
}
