// The calls of vx.h about a library, and about what there is in every one: formats and options.
#include "host/fonts/FontFile.h"
#include "host/reading/Utf8.h"
#include "library/FontFolder.h"
#include "library/LinkedPlugin.h"
#include "library/interface/Calls.h"
#include "library/interface/Handles.h"

#include <filesystem>
#include <new>

using namespace vxhost;

namespace
{

// An option's row in texts that stay.
struct OptionRow {
    std::string formats, help;
};

const std::vector<OptionRow> &OptionRows()
{
    static const std::vector<OptionRow> rows = [] {
        std::vector<OptionRow> made;
        for (const Option &option : Options())
            made.push_back({NamesOf(option.formats, ","), WithoutDashes(option.help)});
        return made;
    }();
    return rows;
}

void CheckInTime(vx_library *library, std::string_view what)
{
    if (library->IsInstalled())
        throw CallError(
            VX_WRONG_ARGUMENT,
            std::string(what).append(" comes too late, the fonts are listed: set it before the first "
                                     "document is opened"));
}

void SetLibrary(vx_library *library, std::string_view name, std::string_view value)
{
    CheckInTime(library, name);
    if (name == "font-dir") {
        CheckFontFolder(std::string(value));
        library->fontSources.directories.emplace_back(value);
    } else if (name == "system-fonts") {
        if (value != "yes" && value != "no")
            throw OptionError("system-fonts " + std::string(value) + ": not known: give yes or no");
        library->fontSources.useSystemFonts = value == "yes";
    } else if (name == "temp-dir") {
        std::error_code failure;
        if (!std::filesystem::is_directory(value, failure))
            throw OptionError("temp-dir " + std::string(value) + ": no such directory: check the name");
        library->temporaryFolder = value;
    } else {
        throw OptionError(
            std::string(name).append(": no option of a library: give font-dir, system-fonts or temp-dir"));
    }
}

} // namespace

const Installation &vx_library::Installed()
{
    const std::lock_guard lock(mutex_);
    if (installation_.fonts == nullptr) {
        installation_.plugin = MakeLinkedPlugin();
        installation_.fonts = MakeFontconfigFonts(fontSources);
    }
    return installation_;
}

bool vx_library::IsInstalled()
{
    const std::lock_guard lock(mutex_);
    return installation_.fonts != nullptr;
}

extern "C" {

const char *vx_version(void)
{
    return VX_VERSION;
}

vx_status vx_library_create(uint32_t interface, vx_library **library, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        *library = nullptr;
        if (interface != VX_INTERFACE)
            throw CallError(VX_WRONG_ARGUMENT, "interface " + std::to_string(interface) + " is not the " +
                                                   std::to_string(VX_INTERFACE) +
                                                   " of this library: compile the program with its vx.h");
        *library = new vx_library;
    });
}

void vx_library_free(vx_library *library)
{
    delete library;
}

vx_status vx_library_set(vx_library *library, const char *name, const char *value, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        SetLibrary(library, CheckText(name, "name"), CheckText(value, "value"));
    });
}

vx_status vx_library_add_font(vx_library *library, const void *bytes, size_t size, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        CheckThere(bytes, "bytes");
        CheckInTime(library, "the font");
        const auto *first = static_cast<const std::byte *>(bytes);
        const SharedFontBytes font = FontBytes::FromMemory({first, first + size});
        if (FontFile::Open(font, 0) == nullptr)
            throw CallError(VX_WRONG_ARGUMENT,
                            "the bytes are no font that can be read: give a whole OpenType or "
                            "Type 1 file");
        library->fontSources.memory.push_back(font);
    });
}

vx_status vx_library_font_count(vx_library *library, size_t *count, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        CheckThere(count, "count");
        *count = static_cast<size_t>(library->Installed().fonts->Count());
    });
}

vx_status vx_library_font_at(vx_library *library, size_t index, vx_font_entry *entry, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        CheckThere(entry, "entry");
        CheckSize(entry->size, sizeof *entry, "vx_font_entry");
        const FontList &fonts = *library->Installed().fonts;
        CheckIndex(index, static_cast<size_t>(fonts.Count()));
        const FontList::Entry &font = fonts.At(static_cast<int32_t>(index));
        *entry = {sizeof *entry,         font.postScriptName.c_str(), font.familyName.c_str(),
                  font.servedBy.c_str(), font.file.c_str(),           font.faceIndex & 0xFFFF,
                  font.faceIndex >> 16};
    });
}

size_t vx_format_count(void)
{
    return Formats().size();
}

vx_status vx_format_at(size_t index, vx_format *format, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(format, "format");
        CheckSize(format->size, sizeof *format, "vx_format");
        CheckIndex(index, Formats().size());
        *format = {sizeof *format, Formats()[index].name.data(), Formats()[index].mime.data()};
    });
}

size_t vx_option_count(void)
{
    return Options().size();
}

vx_status vx_option_at(size_t index, vx_option *option, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(option, "option");
        CheckSize(option->size, sizeof *option, "vx_option");
        CheckIndex(index, Options().size());
        const Option &row = Options()[index];
        const OptionRow &texts = OptionRows()[index];
        *option = {sizeof *option,        row.name,           row.value, row.choices, row.standard,
                   texts.formats.c_str(), texts.help.c_str(), row.least, row.most};
    });
}
}
