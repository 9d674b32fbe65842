#include "web/FontRows.h"

#include "host/fonts/GivenFonts.h"
#include "library/interface/System.h"

#include <array>
#include <charconv>

using namespace vxhost;

namespace
{

// The columns of a row, with tabs between them.
enum Column { kFile, kFace, kName, kFamily, kWeight, kWidth, kSlanted, kScripts, kType1, kColumns };

std::string &Rows()
{
    static std::string rows;
    return rows;
}

// The text up to the mark, which is taken away with it.
std::string_view Take(std::string_view *text, char mark)
{
    const size_t end = std::min(text->find(mark), text->size());
    const std::string_view taken = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    return taken;
}

int NumberIn(std::string_view text)
{
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace

namespace vxweb
{

std::string RowsOf(const std::string &file, const SharedFontBytes &bytes)
{
    std::vector<FontCandidate> found;
    ReadGivenFont(bytes, &found);
    std::string rows;
    for (const FontCandidate &font : found) {
        const FontList::Entry &entry = font.entry;
        rows.append(file).append("\t").append(std::to_string(entry.faceIndex)).append("\t");
        rows.append(entry.postScriptName).append("\t").append(entry.familyName);
        for (const int value : {entry.style.weight, entry.style.width, entry.style.isSlanted ? 1 : 0,
                                static_cast<int>(entry.scripts), font.isType1 ? 1 : 0})
            rows.append("\t").append(std::to_string(value));
        rows.append("\n");
    }
    return rows;
}

std::vector<FontCandidate> ReadRows(std::string_view rows)
{
    std::vector<FontCandidate> fonts;
    while (!rows.empty()) {
        std::string_view row = Take(&rows, '\n');
        std::array<std::string_view, kColumns> columns;
        for (std::string_view &column : columns)
            column = Take(&row, '\t');
        FontCandidate font;
        font.entry.file = columns[kFile];
        font.entry.faceIndex = NumberIn(columns[kFace]);
        font.entry.postScriptName = columns[kName];
        font.entry.familyName = columns[kFamily];
        font.entry.style = {NumberIn(columns[kWeight]), NumberIn(columns[kWidth]),
                            NumberIn(columns[kSlanted]) != 0};
        font.entry.scripts = static_cast<uint8_t>(NumberIn(columns[kScripts]));
        font.isType1 = NumberIn(columns[kType1]) != 0;
        if (!font.entry.file.empty() && CanBeAskedFor(font.entry))
            fonts.push_back(std::move(font));
    }
    return fonts;
}

void SetRows(std::string_view rows)
{
    Rows() = rows;
}

} // namespace vxweb

namespace vxhost
{

std::span<const LibraryOption> LibraryOptions()
{
    return {};
}

std::unique_ptr<FontList> ListFonts(const FontSources &sources)
{
    std::vector<FontCandidate> candidates = vxweb::ReadRows(Rows());
    for (const SharedFontBytes &bytes : sources.memory)
        ReadGivenFont(bytes, &candidates);
    return MakeFontList(std::move(candidates));
}

std::unique_ptr<Document> OpenDocument(const std::string &, std::string *error)
{
    *error = "this library is built without files: open its bytes";
    return nullptr;
}

} // namespace vxhost
