#include "host/fonts/FontCandidates.h"

#include "host/fonts/ListedFonts.h"
#include "host/fonts/StandIns.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

namespace vxhost
{

namespace
{

constexpr size_t kMaxNameLength = 255;

// Of two files of one font the first in this order is used. OpenType ones carry more.
auto RankOf(const FontCandidate &candidate)
{
    const FontList::Entry &entry = candidate.entry;
    return std::make_tuple(std::string_view(entry.postScriptName), entry.bytes == nullptr, candidate.isType1,
                           std::string_view(entry.file), entry.faceIndex);
}

// Null when there is none. entries[0 .. installed) are in the order of their names.
const FontList::Entry *FindInstalled(const std::vector<FontList::Entry> &entries, size_t installed,
                                     std::string_view name)
{
    const std::span all(entries.data(), installed);
    const auto found = std::ranges::lower_bound(
        all, name, {}, [](const FontList::Entry &entry) -> std::string_view { return entry.postScriptName; });
    return found != all.end() && found->postScriptName == name ? &*found : nullptr;
}

// Null when no family that has the style is installed.
const FontList::Entry *FindStandIn(const std::vector<FontList::Entry> &entries, size_t installed,
                                   const ClassicFamily &family, size_t style)
{
    for (const StyleNames *names : family.servedBy) {
        const FontList::Entry *font =
            names == nullptr ? nullptr : FindInstalled(entries, installed, (*names)[style]);
        if (font != nullptr)
            return font;
    }
    return nullptr;
}

void AddStandIns(std::vector<FontList::Entry> *entries)
{
    const size_t installed = entries->size();
    for (const ClassicFamily &family : ClassicFamilies()) {
        for (size_t style = 0; style < family.fonts.size(); ++style) {
            const std::string_view name = family.fonts[style];
            if (name.empty() || FindInstalled(*entries, installed, name) != nullptr)
                continue;
            const FontList::Entry *font = FindStandIn(*entries, installed, family, style);
            if (font == nullptr)
                continue;
            FontList::Entry entry = *font;
            entry.servedBy = std::move(entry.postScriptName);
            entry.postScriptName = name;
            entry.familyName = family.name;
            entries->push_back(std::move(entry));
        }
    }
}

} // namespace

bool CanBeAskedFor(const FontList::Entry &entry)
{
    return !entry.postScriptName.empty() && entry.postScriptName.size() <= kMaxNameLength;
}

std::unique_ptr<FontList> MakeFontList(std::vector<FontCandidate> candidates)
{
    std::ranges::sort(candidates, {}, RankOf);
    std::vector<FontList::Entry> entries;
    for (FontCandidate &candidate : candidates) {
        if (entries.empty() || entries.back().postScriptName != candidate.entry.postScriptName)
            entries.push_back(std::move(candidate.entry));
    }
    AddStandIns(&entries);
    return entries.empty() ? MakeBoxFonts() : std::make_unique<ListedFonts>(std::move(entries));
}

} // namespace vxhost
