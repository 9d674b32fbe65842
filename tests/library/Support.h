// Helps the tests of vx.h: errors, libraries and documents that are freed when a test ends.
#pragma once

#include <vx.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace vxtest
{

inline constexpr vx_error kNoError = {sizeof(vx_error), VX_OK, ""};

struct Free {
    void operator()(vx_library *library) const { vx_library_free(library); }
    void operator()(vx_document *document) const { vx_document_free(document); }
};
using OwnedLibrary = std::unique_ptr<vx_library, Free>;
using OwnedDocument = std::unique_ptr<vx_document, Free>;

inline OwnedLibrary MakeLibrary()
{
    vx_library *library = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(vx_library_create(VX_INTERFACE, &library, &error), VX_OK) << error.text;
    return OwnedLibrary(library);
}

inline vx_library *SharedLibrary()
{
    static const OwnedLibrary library = MakeLibrary();
    return library.get();
}

inline OwnedDocument OpenBytes(std::string_view bytes, vx_library *library = SharedLibrary())
{
    vx_document *document = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_open_bytes(library, bytes.data(), bytes.size(), VX_COPY, &document, &error), VX_OK)
        << error.text;
    return OwnedDocument(document);
}

inline OwnedDocument OpenSample(const std::string &name, vx_library *library = SharedLibrary())
{
    vx_document *document = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(
        vx_document_open_file(library, (VX_SOURCE_DIR "/samples/" + name + ".vx").c_str(), &document, &error),
        VX_OK)
        << error.text;
    return OwnedDocument(document);
}

// Makes a page of 72 by 36 points, which is 150 by 75 pixels, with the body on it.
inline std::string DrawingOf(const std::string &body)
{
    return "%!PS-Tavro-3.0\n%%Title: (A square)\n%%Creator: by hand\n%%BoundingBox: 0 0 72 36\n"
           "%VX5_FileFormat 3\n%%EndComments\n%%BeginSetup\n%%EndSetup\n" +
           body + "%%PageTrailer\n%%EOF\n";
}

// Makes such a page whose left half is black.
inline std::string LeftHalf()
{
    return DrawingOf("0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n");
}

inline int AppendBytes(void *context, const void *bytes, size_t size)
{
    static_cast<std::string *>(context)->append(static_cast<const char *>(bytes), size);
    return 0;
}

inline std::string Rendered(vx_document *document, const char *format)
{
    std::string bytes;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_render(document, format, AppendBytes, &bytes, &error), VX_OK) << error.text;
    return bytes;
}

// Sets an option and expects that it can be.
inline void Set(vx_document *document, const char *name, const char *value)
{
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_set(document, name, value, &error), VX_OK) << error.text;
}

} // namespace vxtest
