/*
 * Eight threads draw with one library, each its own document of the same file, and get the same pixels.
 *
 *     cc -std=c99 -pthread threads.c $(pkg-config --cflags --libs vx) -o threads
 */
#include <vx.h>

#include <pthread.h>
#include <stdio.h>
#include <string.h>

enum { THREADS = 8, WIDTH = 120, HEIGHT = 90 };

typedef struct job {
    vx_library *library;
    const char *path;
    vx_error error;
    uint8_t rgba[HEIGHT * WIDTH * 4];
} job;

static void *draw(void *context)
{
    job *mine = context;
    vx_document *document;
    if (vx_document_open_file(mine->library, mine->path, &document, &mine->error) != VX_OK)
        return NULL;
    /* A box of zeros: what the document itself says. */
    const vx_pixels pixels = {sizeof pixels, 0, 0, 0, 0, WIDTH, HEIGHT, mine->rgba, WIDTH * 4};
    (void)vx_document_pixels(document, &pixels, &mine->error);
    vx_document_free(document);
    return NULL;
}

int main(int count, char **arguments)
{
    static job jobs[THREADS];
    pthread_t threads[THREADS];
    vx_library *library;
    vx_error error = {sizeof error, VX_OK, ""};
    if (count != 2 || vx_library_create(VX_INTERFACE, &library, &error) != VX_OK) {
        fprintf(stderr, "usage: threads DRAWING %s\n", error.text);
        return 2;
    }
    for (int i = 0; i < THREADS; ++i) {
        jobs[i] = (job){.library = library, .path = arguments[1], .error = {sizeof error, VX_OK, ""}};
        if (pthread_create(&threads[i], NULL, draw, &jobs[i]) != 0)
            return 1;
    }
    int same = 0;
    for (int i = 0; i < THREADS; ++i) {
        pthread_join(threads[i], NULL);
        if (jobs[i].error.status != VX_OK)
            fprintf(stderr, "%s\n", jobs[i].error.text);
        else
            same += memcmp(jobs[i].rgba, jobs[0].rgba, sizeof jobs[0].rgba) == 0;
    }
    vx_library_free(library);
    printf("%d of %d pictures are the same\n", same, THREADS);
    return same != THREADS;
}
