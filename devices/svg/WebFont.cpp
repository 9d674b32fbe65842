// Rules for setting text (kerning, ligatures, alternates) stay behind: every character has its place already.
#include "devices/svg/WebFont.h"

#include "host/MemoryWatch.h"
#include "host/fonts/EmbeddingRights.h"
#include "host/fonts/FontBlob.h"
#include "host/fonts/FontSubset.h"
#include "host/fonts/NameTraits.h"

#include <hb-ot.h>
#include <hb.h>

#include <algorithm>
#include <new>

namespace vxhost::svg
{

namespace
{

using Blob = Owned<hb_blob_t, hb_blob_destroy>;

constexpr size_t kMaxOutlines = 4096;
constexpr int kOneEm = 0x10000;

// Tables that change what a character looks like, or that only an uncut font needs.
constexpr hb_tag_t kDroppedTables[] = {
    HB_TAG('G', 'S', 'U', 'B'), HB_TAG('G', 'P', 'O', 'S'), HB_TAG('G', 'D', 'E', 'F'),
    HB_TAG('B', 'A', 'S', 'E'), HB_TAG('k', 'e', 'r', 'n'), HB_TAG('D', 'S', 'I', 'G'),
    HB_TAG('v', 'h', 'e', 'a'), HB_TAG('v', 'm', 't', 'x'), HB_TAG('V', 'O', 'R', 'G'),
    HB_TAG('f', 'v', 'a', 'r'), HB_TAG('g', 'v', 'a', 'r'), HB_TAG('a', 'v', 'a', 'r'),
    HB_TAG('c', 'v', 'a', 'r'), HB_TAG('H', 'V', 'A', 'R'), HB_TAG('V', 'V', 'A', 'R'),
    HB_TAG('M', 'V', 'A', 'R'), HB_TAG('S', 'T', 'A', 'T'),
};

// Browsers do not take a font without a table OS/2.
bool IsForBrowsers(hb_face_t *face)
{
    constexpr unsigned kLeastSize = 68, kRights = 8; // numbers are big-endian, two bytes each
    const Blob table(hb_face_reference_table(face, HB_TAG('O', 'S', '/', '2')));
    unsigned length = 0;
    const char *bytes = hb_blob_get_data(table.get(), &length);
    if (length < kLeastSize)
        return false;
    const auto byte = [bytes](size_t i) { return static_cast<unsigned>(static_cast<uint8_t>(bytes[i])); };
    return AllowsEmbedding(byte(kRights) << 8 | byte(kRights + 1));
}

bool HasTable(hb_face_t *face, hb_tag_t tag)
{
    const Blob blob(hb_face_reference_table(face, tag));
    return hb_blob_get_length(blob.get()) > 0;
}

// Returns the name as it may stand between quotes.
std::string Quotable(std::string name)
{
    std::erase_if(name, [](char c) {
        return c == '\'' || c == '"' || c == '\\' || static_cast<uint8_t>(c) < ' ' || c == '\x7F';
    });
    return name;
}

std::string ReadName(hb_face_t *face, hb_ot_name_id_t id)
{
    char text[256];
    unsigned size = sizeof text;
    hb_ot_name_get_utf8(face, id, HB_LANGUAGE_INVALID, &size, text);
    return Quotable({text, std::min<size_t>(size, sizeof text - 1)});
}

const char *GenericName(FaceClass faceClass)
{
    return faceClass == FaceClass::Mono    ? "monospace"
           : faceClass == FaceClass::Serif ? "serif"
                                           : "sans-serif";
}

const char *StretchName(float percent)
{
    constexpr struct {
        float most;
        const char *name;
    } kNames[] = {{56, "ultra-condensed"}, {69, "extra-condensed"}, {81, "condensed"},
                  {94, "semi-condensed"},  {106, "normal"},         {119, "semi-expanded"},
                  {137, "expanded"},       {175, "extra-expanded"}};
    for (const auto &row : kNames) {
        if (percent < row.most)
            return row.name;
    }
    return "ultra-expanded";
}

} // namespace

std::unique_ptr<WebFont> WebFont::Open(const TextFont &font, WebFontUse use)
{
    return Watched([&] { return OpenFace(font, use); });
}

std::unique_ptr<WebFont> WebFont::OpenFace(const TextFont &font, WebFontUse use)
{
    const auto index = static_cast<unsigned>(font.faceIndex);
    const bool isNamedVariation = index >> 16 != 0;
    if (font.bytes == nullptr || isNamedVariation)
        return nullptr;
    const Blob blob = MakeBlob(font.bytes);
    std::unique_ptr<WebFont> opened(new WebFont);
    opened->face_.reset(hb_face_create(blob.get(), index));
    hb_face_t *face = opened->face_.get();
    const bool hasOutlines =
        HasTable(face, HB_TAG('g', 'l', 'y', 'f')) || HasTable(face, HB_TAG('C', 'F', 'F', ' '));
    if (!hasOutlines || (use == WebFontUse::Carried && !IsForBrowsers(face)))
        return nullptr;
    opened->file_ = FontFile::Open(font.bytes, font.faceIndex);
    if (opened->file_ == nullptr)
        return nullptr;
    opened->font_.reset(hb_font_create(face));
    hb_font_set_scale(opened->font_.get(), kOneEm, kOneEm);
    opened->reached_.reset(hb_set_create());
    opened->FindNames(font);
    opened->names_.generic = GenericName(TraitsOfName(font.asked).faceClass);
    return opened;
}

void WebFont::FindNames(const TextFont &font)
{
    for (const std::string &name :
         {ReadName(face_.get(), HB_OT_NAME_ID_TYPOGRAPHIC_FAMILY),
          ReadName(face_.get(), HB_OT_NAME_ID_FONT_FAMILY), Quotable(font.served), std::string("untitled")}) {
        if (names_.family.empty())
            names_.family = name;
    }
    hb_font_t *sized = font_.get();
    names_.weight = std::clamp(static_cast<int>(hb_style_get_value(sized, HB_STYLE_TAG_WEIGHT)), 1, 1000);
    names_.isItalic = hb_style_get_value(sized, HB_STYLE_TAG_ITALIC) > 0;
    names_.stretch = StretchName(hb_style_get_value(sized, HB_STYLE_TAG_WIDTH));
}

bool WebFont::Take(char32_t character, uint32_t glyph)
{
    Known &known = known_[character & 0xFF];
    if (known.character != character)
        known = {character, file_->FindGlyph(character), false};
    if (glyph == 0 || known.glyph != glyph)
        return false;
    if (!known.isReached)
        hb_set_add(reached_.get(), character);
    known.isReached = true;
    return true;
}

double WebFont::FindKerning(char32_t first, char32_t second) const
{
    const uint32_t text[] = {first, second};
    const Owned<hb_buffer_t, hb_buffer_destroy> buffer(hb_buffer_create());
    hb_buffer_add_utf32(buffer.get(), text, 2, 0, 2);
    hb_buffer_set_direction(buffer.get(), HB_DIRECTION_LTR);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_shape(font_.get(), buffer.get(), nullptr, 0);
    unsigned count = 0;
    const hb_glyph_position_t *positions = hb_buffer_get_glyph_positions(buffer.get(), &count);
    if (count != 2)
        return 1;
    const int32_t placed = positions[0].x_advance + positions[1].x_offset;
    return static_cast<double>(placed - file_->Advance(file_->FindGlyph(first))) / kOneEm;
}

double WebFont::Kerning(char32_t first, char32_t second)
{
    KnownPair &known = pairs_[(first * 67 + second) % kKnownPairs];
    if (known.first != first || known.second != second)
        known = {first, second, Watched([&] { return FindKerning(first, second); })};
    return known.kerning;
}

const Path &WebFont::Outline(uint32_t glyph)
{
    const auto found = outlines_.find(glyph);
    if (found != outlines_.end())
        return found->second;
    if (outlines_.size() == kMaxOutlines)
        outlines_.clear();
    return outlines_.emplace(glyph, file_->Outline(glyph)).first->second;
}

std::vector<std::byte> WebFont::MakeSubset() const
{
    if (hb_set_allocation_successful(reached_.get()) == 0)
        throw std::bad_alloc();
    if (hb_set_is_empty(reached_.get()) != 0)
        return {};
    return Watched([&] { return CutSubset(); });
}

std::vector<std::byte> WebFont::CutSubset() const
{
    const Owned<hb_subset_input_t, hb_subset_input_destroy> input(hb_subset_input_create_or_fail());
    if (input == nullptr)
        return {};
    hb_set_union(hb_subset_input_unicode_set(input.get()), reached_.get());
    hb_set_t *dropped = hb_subset_input_set(input.get(), HB_SUBSET_SETS_DROP_TABLE_TAG);
    for (const hb_tag_t tag : kDroppedTables)
        hb_set_add(dropped, tag);
    hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_NO_HINTING);
    const Owned<hb_face_t, hb_face_destroy> subset = CutFont(face_.get(), input.get());
    if (subset == nullptr)
        return {};
    const Blob blob(hb_face_reference_blob(subset.get()));
    unsigned length = 0;
    const auto *bytes = reinterpret_cast<const std::byte *>(hb_blob_get_data(blob.get(), &length));
    return {bytes, bytes + length};
}

} // namespace vxhost::svg
