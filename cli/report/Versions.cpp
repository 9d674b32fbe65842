#include "cli/report/Versions.h"

#include "jobs/LateLibraries.h"
#include "library/Options.h"

#include <fmt/format.h>

#include <archive.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb.h>
#include <lcms2.h>
#include <libdeflate.h>
#include <lzma.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <exception>
#include <string_view>

namespace vxhost
{

namespace
{

std::string FontconfigVersion()
{
    const int version = FcGetVersion();
    return fmt::format("fontconfig {}.{}.{}", version / 10000, version / 100 % 100, version % 100);
}

std::string FontVersions()
{
    FT_Library library = nullptr;
    FT_Int major = 0, minor = 0, patch = 0;
    if (FT_Init_FreeType(&library) == 0) {
        FT_Library_Version(library, &major, &minor, &patch);
        FT_Done_FreeType(library);
    }
    return fmt::format("FreeType {}.{}.{}, HarfBuzz {}", major, minor, patch, hb_version_string());
}

std::string ColourVersion()
{
    const int version = cmsGetEncodedCMMversion();
    return fmt::format("Little CMS {}.{}", version / 1000, version % 1000 / 10);
}

// The library's own text is "LIBTIFF, Version 4.5.0", and lines of its rights.
std::string TiffVersion()
{
    const std::string_view text = TIFFGetVersion();
    const std::string_view line = text.substr(0, text.find('\n'));
    return fmt::format("libtiff {}", line.substr(line.rfind(' ') + 1));
}

// The library's own text is "libarchive 3.6.2".
std::string ArchiveVersion()
{
    return archive_version_string();
}

// text calls the libraries, which are loaded first.
std::string TextOf(LateLibraries libraries, std::string (*text)())
{
    try {
        LoadLate(libraries);
    } catch (const std::exception &error) {
        return fmt::format("({})", error.what());
    }
    return text();
}

} // namespace

std::string VersionText()
{
    return fmt::format(
        "vx {}\nplug-in: built in\nprofile: {}, built in\n"
        "libraries: {}, {}, {}, {}, {}, libpng {}, zlib {}, libdeflate {}, liblzma {}",
        VX_VERSION, RasterOptions().profile, TextOf(LateLibraries::OfListingFonts, FontconfigVersion),
        TextOf(LateLibraries::OfFonts, FontVersions), TextOf(LateLibraries::OfColour, ColourVersion),
        TextOf(LateLibraries::OfTiff, TiffVersion), TextOf(LateLibraries::OfArchives, ArchiveVersion),
        png_get_libpng_ver(nullptr), zlibVersion(), LIBDEFLATE_VERSION_STRING, lzma_version_string());
}

} // namespace vxhost
