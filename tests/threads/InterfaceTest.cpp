// Eight threads share a library that none has used before, as vx.h says they may: each draws what it draws alone.
#include <vx.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr size_t kThreads = 8;
constexpr int32_t kSide = 48;

struct Drawn {
    vx_status status = VX_OK;
    std::vector<uint8_t> rgba = std::vector<uint8_t>(size_t{4} * kSide * kSide);
    std::string svg;

    bool operator==(const Drawn &) const = default;
};

int Append(void *context, const void *bytes, size_t size)
{
    static_cast<std::string *>(context)->append(static_cast<const char *>(bytes), size);
    return 0;
}

Drawn Draw(vx_library *library, const char *sample)
{
    Drawn drawn;
    vx_document *document = nullptr;
    drawn.status = vx_document_open_file(library, sample, &document, nullptr);
    const vx_pixels pixels = {sizeof pixels,       0, 0, 0, 0, kSide, kSide, drawn.rgba.data(),
                              ptrdiff_t{4} * kSide};
    if (drawn.status == VX_OK)
        drawn.status = vx_document_pixels(document, &pixels, nullptr);
    if (drawn.status == VX_OK)
        drawn.status = vx_document_render(document, "svg", Append, &drawn.svg, nullptr);
    vx_document_free(document);
    return drawn;
}

vx_library *MakeLibrary()
{
    vx_library *library = nullptr;
    EXPECT_EQ(vx_library_create(VX_INTERFACE, &library, nullptr), VX_OK);
    EXPECT_EQ(vx_library_set(library, "system-fonts", "no", nullptr), VX_OK);
    EXPECT_EQ(vx_library_set(library, "font-dir", "/usr/share/fonts/opentype/urw-base35", nullptr), VX_OK);
    return library;
}

TEST(InterfaceThreads, ShareALibrary)
{
    const std::array<const char *, 3> samples = {VX_SOURCE_DIR "/samples/text-point.vx",
                                                 VX_SOURCE_DIR "/samples/gradients.vx",
                                                 VX_SOURCE_DIR "/samples/text-symbol.vx"};
    std::vector<Drawn> alone;
    vx_library *own = MakeLibrary();
    for (const char *sample : samples)
        alone.push_back(Draw(own, sample));
    vx_library_free(own);

    vx_library *library = MakeLibrary();
    std::array<Drawn, kThreads> drawn;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { drawn[i] = Draw(library, samples[i % samples.size()]); });
    for (std::thread &thread : threads)
        thread.join();
    vx_library_free(library);
    for (size_t i = 0; i < kThreads; ++i) {
        EXPECT_EQ(drawn[i].status, VX_OK);
        EXPECT_TRUE(drawn[i] == alone[i % samples.size()]) << samples[i % samples.size()];
    }
}

} // namespace
