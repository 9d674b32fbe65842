// The calls of vx.h about a library, and about what there is in every one: formats and options.
#include "host/fonts/FontFile.h"
#include "host/reading/Utf8.h"
#include "library/LinkedPlugin.h"
#include "library/interface/Calls.h"
#include "library/interface/Handles.h"
#include "library/interface/System.h"

#include "devices/colour/ProfileFile.h"
#include "devices/colour/ScreenColours.h"

#include <algorithm>

using namespace vxhost;

namespace
{

// The texts of an option's row that have to be put together; they stay as long as the program.
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

constexpr size_t kMostName = 255; // bytes of a font's name, or a profile's

// Throws CallError for a name that no font or profile has.
std::string CheckName(const char *text, std::string_view what)
{
    const std::string_view name = CheckText(text, what);
    if (name.empty() || name.size() > kMostName)
        throw CallError(VX_WRONG_ARGUMENT, std::string(what)
                                               .append(" has ")
                                               .append(std::to_string(name.size()))
                                               .append(" bytes: give a name of 1 to 255"));
    return std::string(name);
}

std::string NamesOfLibraryOptions()
{
    std::string names;
    for (const LibraryOption &option : LibraryOptions())
        names.append(names.empty() ? "" : ", ").append(option.name);
    return names.empty() ? "this one is built without files and has none" : "give one of " + names;
}

// Throws CallError for what is no profile of a CMYK press.
void CheckProfile(const std::string &name, const ProfileBytes &bytes)
{
    ScreenOptions options;
    options.profile = name;
    options.profileBytes = bytes;
    std::string error;
    if (ScreenColours::Make(options, &error) == nullptr)
        throw CallError(VX_WRONG_ARGUMENT, error + ": give an ICC profile of a CMYK press");
}

} // namespace

const Installation &vx_library::Installed()
{
    const std::lock_guard lock(mutex_);
    if (installation_.fonts == nullptr) {
        installation_.plugin = MakeLinkedPlugin();
        installation_.fonts = ListFonts(fontSources_);
    }
    return installation_;
}

void vx_library::ChangeFonts(std::string_view what, const std::function<void(FontSources *)> &change)
{
    const std::lock_guard lock(mutex_);
    if (installation_.fonts != nullptr)
        throw CallError(VX_WRONG_ARGUMENT,
                        std::string(what).append(" comes too late, the fonts are listed: set it before they "
                                                 "are counted or mapped, or a document is opened"));
    change(&fontSources_);
}

Choices vx_library::GetChoices()
{
    const std::lock_guard lock(mutex_);
    return choices_;
}

FontSources vx_library::GetFontSources()
{
    const std::lock_guard lock(mutex_);
    return fontSources_;
}

// All or nothing, whatever is thrown.
void vx_library::ChangeChoices(const std::function<void(Choices *)> &change)
{
    const std::lock_guard lock(mutex_);
    change(&choices_);
}

void vx_library::MapFonts(const FontMap &rows)
{
    if (const auto *row = FindRowWithoutFont(rows, *Installed().fonts))
        throw OptionError("no font \"" + Printable(row->second, 60) + "\" to serve \"" +
                          Printable(row->first, 60) + "\": vx_library_font_at lists those that there are");
    FontMap added = rows; // before anything changes: memory may run out
    ChangeChoices([&](Choices *choices) {
        const auto isNew = [&](const auto &row) { return !choices->served.contains(row.first); };
        if (choices->served.size() + static_cast<size_t>(std::ranges::count_if(added, isNew)) > kMaxMapRows)
            throw CallError(VX_WRONG_ARGUMENT, "the font map has more than " + std::to_string(kMaxMapRows) +
                                                   " rows: leave out what no document needs");
        added.merge(choices->served); // those that are there stay behind the new ones
        choices->served.swap(added);
    });
}

const LibraryOption *vxhost::FindLibraryOption(std::string_view name)
{
    for (const LibraryOption &option : LibraryOptions()) {
        if (option.name == name)
            return &option;
    }
    return nullptr;
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

size_t vx_library_option_count(void)
{
    return LibraryOptions().size();
}

vx_status vx_library_option_at(size_t index, vx_option *option, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(option, "option");
        CheckSize(option->size, sizeof *option, "vx_option");
        CheckIndex(index, LibraryOptions().size());
        const LibraryOption &row = LibraryOptions()[index];
        *option = {sizeof *option, row.name, row.value, row.choices, row.standard, "", row.help, 0, 0};
    });
}

vx_status vx_library_set(vx_library *library, const char *name, const char *value, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        const std::string_view option = CheckText(name, "name");
        const std::string text(CheckText(value, "value"));
        const LibraryOption *row = FindLibraryOption(option);
        if (row == nullptr)
            throw OptionError(
                std::string(option).append(": no option of a library: ").append(NamesOfLibraryOptions()));
        row->set(library, text);
    });
}

vx_status vx_library_add_font(vx_library *library, const void *bytes, size_t size, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        CheckThere(bytes, "bytes");
        const auto *first = static_cast<const std::byte *>(bytes);
        const SharedFontBytes font = FontBytes::FromMemory({first, first + size});
        if (FontFile::Open(font, 0) == nullptr)
            throw CallError(VX_WRONG_ARGUMENT,
                            "the bytes are no font that can be read: give a whole OpenType or "
                            "Type 1 file");
        library->ChangeFonts("the font", [&](FontSources *sources) { sources->memory.push_back(font); });
    });
}

vx_status vx_library_map_font(vx_library *library, const char *asked, const char *served, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        const std::string name = CheckName(asked, "asked");
        if (served == nullptr)
            library->ChangeChoices([&](Choices *choices) { choices->served.erase(name); });
        else
            library->MapFonts({{name, CheckName(served, "served")}});
    });
}

vx_status vx_library_add_profile(vx_library *library, const char *name, const void *bytes, size_t size,
                                 vx_error *error)
{
    return Call(error, [&] {
        CheckThere(library, "library");
        const std::string profile = CheckName(name, "name");
        CheckThere(bytes, "bytes");
        if (!IsProfileFile(profile))
            throw CallError(VX_WRONG_ARGUMENT,
                            "the name \"" + profile + "\" is taken by what is built in: give another");
        if (size > kMaxProfileBytes)
            throw CallError(VX_WRONG_ARGUMENT, "the profile has " + std::to_string(size) +
                                                   " bytes, and the most is " +
                                                   std::to_string(kMaxProfileBytes) + ": give a smaller one");
        const auto *first = static_cast<const std::byte *>(bytes);
        const auto copy = std::make_shared<const std::vector<std::byte>>(first, first + size);
        CheckProfile(profile, copy);
        library->ChangeChoices([&](Choices *choices) { choices->profiles.insert_or_assign(profile, copy); });
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
