/*
 * Draws with what it has in memory alone: from_memory FOLDER PROFILE FONT... -- DRAWING...
 *
 * The same source is linked with the library as it is built for a machine with files and for one without: what the two write
 * into their folders is compared.
 */
#include <vx.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void Check(vx_status status, const vx_error *error, const char *about)
{
    if (status == VX_OK)
        return;
    fprintf(stderr, "%s: status %d, %s\n", about, (int)status, error->text);
    exit(1);
}

static void *ReadFile(const char *path, size_t *size)
{
    FILE *file = fopen(path, "rb");
    char *bytes = NULL;
    if (file != NULL && fseek(file, 0, SEEK_END) == 0) {
        *size = (size_t)ftell(file);
        rewind(file);
        bytes = malloc(*size + 1);
    }
    if (bytes == NULL || fread(bytes, 1, *size, file) != *size) {
        perror(path);
        exit(1);
    }
    fclose(file);
    return bytes;
}

static int WriteBytes(void *file, const void *bytes, size_t size)
{
    return fwrite(bytes, 1, size, file) == size ? 0 : 1;
}

static FILE *OpenOutput(const char *folder, const char *drawing, const char *extension)
{
    char path[1024];
    const char *slash = strrchr(drawing, '/');
    FILE *file;
    snprintf(path, sizeof path, "%s/%s.%s", folder, slash == NULL ? drawing : slash + 1, extension);
    file = fopen(path, "wb");
    if (file == NULL) {
        perror(path);
        exit(1);
    }
    return file;
}

static void SetOption(vx_document *document, const char *name, const char *value)
{
    vx_error error = {sizeof error, VX_OK, ""};
    Check(vx_document_set(document, name, value, &error), &error, name);
}

static void Draw(vx_library *library, const char *folder, const char *drawing)
{
    vx_error error = {sizeof error, VX_OK, ""};
    vx_document *document;
    size_t size = 0, i;
    void *bytes = ReadFile(drawing, &size);
    FILE *warnings = OpenOutput(folder, drawing, "txt");
    Check(vx_document_open_bytes(library, bytes, size, VX_BORROW, &document, &error), &error, drawing);
    SetOption(document, "fit", "400");
    SetOption(document, "profile", "press");
    SetOption(document, "pdf-x", "x3");
    SetOption(document, "date", "0");
    for (i = 0; i < vx_format_count(); ++i) {
        vx_format format = {sizeof format, NULL, NULL};
        FILE *file;
        size_t warning;
        Check(vx_format_at(i, &format, &error), &error, drawing);
        file = OpenOutput(folder, drawing, format.name);
        Check(vx_document_render(document, format.name, WriteBytes, file, &error), &error, drawing);
        fclose(file);
        for (warning = 0; warning < vx_document_warning_count(document); ++warning)
            fprintf(warnings, "%s: %s\n", format.name, vx_document_warning_at(document, warning));
    }
    fclose(warnings);
    vx_document_free(document);
    free(bytes);
}

int main(int argc, char **argv)
{
    vx_error error = {sizeof error, VX_OK, ""};
    vx_library *library;
    size_t size = 0;
    void *bytes;
    int i = 3;
    if (argc < 5)
        return 2;
    Check(vx_library_create(VX_INTERFACE, &library, &error), &error, "library");
    if (vx_library_option_count() > 0)
        Check(vx_library_set(library, "system-fonts", "no", &error), &error, "system-fonts");
    bytes = ReadFile(argv[2], &size);
    Check(vx_library_add_profile(library, "press", bytes, size, &error), &error, argv[2]);
    free(bytes);
    for (; i < argc && strcmp(argv[i], "--") != 0; ++i) {
        bytes = ReadFile(argv[i], &size);
        Check(vx_library_add_font(library, bytes, size, &error), &error, argv[i]);
        free(bytes);
    }
    for (++i; i < argc; ++i)
        Draw(library, argv[1], argv[i]);
    vx_library_free(library);
    return 0;
}
