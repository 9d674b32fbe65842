#include "library/interface/System.h"

#include "host/FileReading.h"
#include "host/reading/Utf8.h"
#include "library/FontFolder.h"
#include "library/FontMap.h"
#include "library/interface/Calls.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

namespace vxhost
{

namespace
{

void AddFontFolder(vx_library *library, const std::string &value)
{
    CheckFontFolder(value);
    library->ChangeFonts("font-dir", [&](FontSources *sources) { sources->directories.push_back(value); });
}

// Reads the whole of a regular file. A pipe is refused: nobody is to wait for its writer.
void ReadMapFile(const std::string &path, HeldBytes *bytes)
{
    constexpr size_t kMost = kMaxMapLine * kMaxMapRows;
    std::string error;
    const Descriptor file(OpenToRead(path, FileKinds::Regular, &error));
    if (file.Get() < 0)
        throw CallError(VX_CANNOT_READ, Printable(path) + ": " + error);
    const ReadEnd end = bytes->ReadAll(file.Get(), {kMost, 0});
    if (end == ReadEnd::Failed && errno == ENOMEM)
        throw std::bad_alloc();
    if (end == ReadEnd::Failed)
        throw CallError(VX_CANNOT_READ, Printable(path) + ": cannot be read, " + SystemText(errno));
    if (end == ReadEnd::TooLong)
        throw CallError(VX_LIMIT,
                        Printable(path) + ": longer than " + std::to_string(kMost) +
                            " bytes, the most that a map may have: leave out what no document needs");
}

void AddFontMap(vx_library *library, const std::string &value)
{
    HeldBytes bytes;
    ReadMapFile(value, &bytes);
    library->MapFonts(ReadFontMap({reinterpret_cast<const char *>(bytes.Get().data()), bytes.Get().size()},
                                  Printable(value)));
}

void SetSystemFonts(vx_library *library, const std::string &value)
{
    if (value != "yes" && value != "no")
        throw OptionError("system-fonts " + value + ": not known: give one of yes, no");
    library->ChangeFonts("system-fonts",
                         [&](FontSources *sources) { sources->useSystemFonts = value == "yes"; });
}

void SetTemporaryFolder(vx_library *library, const std::string &value)
{
    std::error_code failure;
    if (!std::filesystem::is_directory(value, failure))
        throw OptionError("temp-dir " + value + ": no such directory: check the name");
    library->ChangeChoices([&](Choices *choices) { choices->temporaryFolder = value; });
}

constexpr LibraryOption kOptions[] = {
    {"font-dir", "DIR", "", "", "a folder of fonts, with all below it; each adds one", AddFontFolder},
    {"font-map", "FILE", "", "", "lines ASKED = FONT: which font serves which name, both PostScript names",
     AddFontMap},
    {"system-fonts", "HOW", "yes,no", "yes", "whether the fonts of the system are used (yes)",
     SetSystemFonts},
    {"temp-dir", "DIR", "", "/tmp", "the folder in which vx_render_isolated keeps what it makes (/tmp)",
     SetTemporaryFolder},
};

} // namespace

std::span<const LibraryOption> LibraryOptions()
{
    return kOptions;
}

std::unique_ptr<FontList> ListFonts(const FontSources &sources)
{
    return MakeFontconfigFonts(sources);
}

std::unique_ptr<Document> OpenDocument(const std::string &path, std::string *error)
{
    return vxhost::Document::Open(path, error, {FileKinds::Regular, {}});
}

} // namespace vxhost
