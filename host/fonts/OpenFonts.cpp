#include "host/fonts/OpenFonts.h"

namespace vxhost
{

OpenFonts::OpenFonts(const DocumentFonts &list) : list_(list), opened_(static_cast<size_t>(list.Count())) {}

SharedFontBytes OpenFonts::BytesOf(const FontList::Entry &entry)
{
    if (entry.bytes != nullptr || entry.file.empty())
        return entry.bytes;
    const auto found = files_.find(entry.file);
    if (found != files_.end())
        return found->second;
    return files_.emplace(entry.file, FontBytes::Open(entry.file)).first->second;
}

const FontFile *OpenFonts::FileOf(int32_t index)
{
    Opened &opened = opened_[static_cast<size_t>(index)];
    if (!opened.isOpened) {
        const FontList::Entry &entry = list_.At(index);
        opened.bytes = BytesOf(entry);
        opened.file = FontFile::Open(opened.bytes, entry.faceIndex);
        opened.isOpened = true;
        if (opened.file != nullptr)
            opened.goesByBytes =
                vxhost::GoesByBytes(*opened.file, entry.ServedName(), list_.EncodingOf(index));
    }
    return opened.file.get();
}

bool OpenFonts::GoesByBytes(int32_t index)
{
    (void)FileOf(index); // sets goesByBytes
    return opened_[static_cast<size_t>(index)].goesByBytes;
}

const TextFont *OpenFonts::TextFontOf(int32_t index)
{
    Opened &opened = opened_[static_cast<size_t>(index)];
    if (opened.textFont == nullptr && FileOf(index) != nullptr) {
        const FontList::Entry &entry = list_.At(index);
        opened.textFont = std::make_unique<TextFont>(
            TextFont{list_.AskedName(index), entry.ServedName(), opened.bytes, entry.faceIndex});
    }
    return opened.textFont.get();
}

FontUse OpenFonts::Describe(int32_t index)
{
    const FontList::Entry &entry = list_.At(index);
    const TextFont *font = TextFontOf(index);
    FontUse use;
    use.asked = list_.AskedName(index);
    if (font == nullptr)
        return use;
    use.served = font->served;
    use.file = entry.file;
    use.match = entry.servedBy.empty() ? FontMatch::Exact
                : entry.isSubstitute   ? FontMatch::Substitute
                                       : FontMatch::StandIn;
    return use;
}

int32_t OpenFonts::CharWidth(int16_t number, int16_t character)
{
    return (*Widths(number))[static_cast<uint8_t>(character)];
}

const CharWidths *OpenFonts::Widths(int16_t number)
{
    Opened &opened = opened_[static_cast<size_t>(number)];
    if (opened.widths == nullptr) {
        const FontFile *file = FileOf(number);
        opened.widths =
            std::make_unique<CharWidths>(ReadCharWidths(file, list_.EncodingOf(number), opened.goesByBytes));
    }
    return opened.widths.get();
}

} // namespace vxhost
