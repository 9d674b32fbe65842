// The module: what JavaScript calls beside the calls of vx.h. Procedures of JavaScript cannot be handed over, so those that
// vx.h wants are imported here. package/engine.js is the other side, and knows the layouts below.
#include "web/Files.h"
#include "web/FontRows.h"

#include <vx.h>

#include <cstddef>

static_assert(sizeof(vx_error) == 504 && offsetof(vx_error, status) == 4 && offsetof(vx_error, text) == 8);
static_assert(sizeof(vx_pixels) == 56 && offsetof(vx_pixels, left) == 8 && offsetof(vx_pixels, width) == 40 &&
              offsetof(vx_pixels, top_row) == 48);
static_assert(sizeof(vx_inks) == 64 && offsetof(vx_inks, left) == 8 && offsetof(vx_inks, width) == 40 &&
              offsetof(vx_inks, names) == 48 && offsetof(vx_inks, amounts) == 56);
static_assert(sizeof(vx_option) == 48 && offsetof(vx_option, help) == 24 && offsetof(vx_option, least) == 32);
static_assert(sizeof(vx_format) == 12);
static_assert(sizeof(vx_font_entry) == 28 && offsetof(vx_font_entry, face) == 20);
static_assert(sizeof(vx_font_use) == 40 && offsetof(vx_font_use, match) == 12 &&
              offsetof(vx_font_use, strings) == 16);

#define VX_IMPORT(name) __attribute__((import_module("vx"), import_name(name)))
#define VX_EXPORT       __attribute__((used, visibility("default")))

extern "C" {

// Each returns 0, or something else to end the call.
VX_IMPORT("write") int vx_web_write(const void *bytes, size_t size);
VX_IMPORT("text") int vx_web_text(const char *lines, const char *json);
VX_IMPORT("plate") int vx_web_plate(const char *ink, const void *bytes, size_t size);
VX_IMPORT("progress") int vx_web_progress(double done, double total);

static int WriteOut(void *, const void *bytes, size_t size)
{
    return vx_web_write(bytes, size);
}

VX_EXPORT vx_status vx_web_render(vx_document *document, const char *format, vx_error *error)
{
    return vx_document_render(document, format, WriteOut, nullptr, error);
}

VX_EXPORT vx_status vx_web_plates(vx_document *document, const char *format, vx_error *error)
{
    const auto take = [](void *, const char *ink, const void *bytes, size_t size) {
        return vx_web_plate(ink, bytes, size);
    };
    return vx_document_plates(document, format, take, nullptr, error);
}

VX_EXPORT vx_status vx_web_coverage(vx_document *document, double limit, int wants_map, const char **json,
                                    vx_error *error)
{
    return vx_document_coverage(document, limit, json, wants_map != 0 ? WriteOut : nullptr, nullptr, error);
}

// told: receives the lines and the JSON. Empty for name and limits: there are none.
VX_EXPORT vx_status vx_web_check(vx_document *document, const char *name, const char *limits, int wants_page,
                                 const char *told[2], vx_error *error)
{
    const auto given = [](const char *text) { return *text == '\0' ? nullptr : text; };
    vx_check check = {};
    check.size = sizeof check;
    check.name = given(name);
    check.limits = given(limits);
    check.page = wants_page != 0 ? WriteOut : nullptr;
    const vx_status status = vx_document_check(document, &check, error);
    told[0] = check.text;
    told[1] = check.json;
    return status;
}

VX_EXPORT vx_status vx_web_texts(vx_document *document, vx_error *error)
{
    const auto found = [](void *, const char *lines, const char *json) { return vx_web_text(lines, json); };
    return vx_document_texts(document, found, nullptr, error);
}

VX_EXPORT vx_status vx_web_tell_progress(vx_document *document, int is_told, vx_error *error)
{
    if (is_told == 0)
        return vx_document_set_progress(document, nullptr, nullptr, error);
    const auto progress = [](void *, int64_t done, int64_t total) {
        return vx_web_progress(static_cast<double>(done), static_cast<double>(total));
    };
    return vx_document_set_progress(document, progress, nullptr, error);
}

// Fonts. Texts that are returned are valid until the next call.

VX_EXPORT void vx_web_set_rows(const char *rows)
{
    vxweb::SetRows(rows);
}

VX_EXPORT const char *vx_web_rows_of(const char *file, const void *bytes, size_t size)
{
    static std::string rows;
    const auto *first = static_cast<const std::byte *>(bytes);
    rows = vxweb::RowsOf(file, vxhost::FontBytes::FromMemory({first, first + size}));
    return rows.c_str();
}

VX_EXPORT const char *vx_web_wanted(void)
{
    static std::string names;
    names = vxweb::TakeWanted();
    return names.c_str();
}

VX_EXPORT void vx_web_give_file(const char *name, const void *bytes, size_t size)
{
    const auto *first = static_cast<const std::byte *>(bytes);
    vxweb::GiveFile(name, {first, first + size});
}
}
