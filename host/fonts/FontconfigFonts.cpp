#include "host/fonts/FontconfigFonts.h"

#include "host/MemoryWatch.h"
#include "host/fonts/FontCandidates.h"
#include "host/fonts/GivenFonts.h"
#include "host/fonts/Owned.h"

#include <fontconfig/fontconfig.h>

#include <iterator>
#include <new>
#include <utility>

namespace vxhost
{

namespace
{

const FcChar8 *AsFcString(const std::string &text)
{
    return reinterpret_cast<const FcChar8 *>(text.c_str());
}

// Empty when the pattern does not say.
std::string TextOf(const FcPattern *pattern, const char *property)
{
    FcChar8 *text = nullptr;
    if (FcPatternGetString(pattern, property, 0, &text) != FcResultMatch)
        return {};
    return reinterpret_cast<const char *>(text);
}

int NumberOf(const FcPattern *pattern, const char *property, int missing)
{
    int number = missing;
    return FcPatternGetInteger(pattern, property, 0, &number) == FcResultMatch ? number : missing;
}

// On fontconfig's scales 80 is a regular weight, 200 bold, and 100 the normal width.
FaceStyle StyleOf(const FcPattern *pattern)
{
    FaceStyle style;
    const int weight = NumberOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR);
    style.weight =
        weight < FC_WEIGHT_REGULAR ? (weight - FC_WEIGHT_REGULAR) / 2 : (weight - FC_WEIGHT_REGULAR) / 6;
    style.width = (NumberOf(pattern, FC_WIDTH, FC_WIDTH_NORMAL) - FC_WIDTH_NORMAL) * 4 / 5;
    style.isSlanted = NumberOf(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN;
    return style;
}

// A font has a script when it has what a language of it needs.
uint8_t ScriptsOf(const FcPattern *pattern)
{
    constexpr const char *kLanguages[] = {"en", "ja", "zh-tw", "ko"}; // by Script
    FcLangSet *languages = nullptr;
    if (FcPatternGetLangSet(pattern, FC_LANG, 0, &languages) != FcResultMatch)
        return 0;
    uint8_t scripts = 0;
    for (size_t i = 0; i < std::size(kLanguages); ++i) {
        const auto *language = reinterpret_cast<const FcChar8 *>(kLanguages[i]);
        if (FcLangSetHasLang(languages, language) != FcLangDifferentLang)
            scripts |= static_cast<uint8_t>(1U << i);
    }
    return scripts;
}

bool ReadCandidate(const FcPattern *pattern, FontCandidate *candidate)
{
    FontList::Entry &entry = candidate->entry;
    entry.postScriptName = TextOf(pattern, FC_POSTSCRIPT_NAME);
    entry.familyName = TextOf(pattern, FC_FAMILY);
    entry.file = TextOf(pattern, FC_FILE);
    candidate->isType1 = TextOf(pattern, FC_FONTFORMAT) == "Type 1";
    entry.faceIndex = NumberOf(pattern, FC_INDEX, 0);
    entry.style = StyleOf(pattern);
    // Symbol fonts may call them Latin letters.
    entry.scripts = SymbolSetOfName(entry.postScriptName) ? uint8_t{0} : ScriptsOf(pattern);
    return CanBeAskedFor(entry) && !entry.file.empty();
}

// A configuration without fonts, which only says where to remember what is in a folder.
constexpr const char *kEmptyConfig =
    "<fontconfig><cachedir prefix=\"xdg\">fontconfig</cachedir></fontconfig>";

FcConfig *MakeEmptyConfig()
{
    FcConfig *config = FcConfigCreate();
    if (config != nullptr)
        FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8 *>(kEmptyConfig), FcTrue);
    return config;
}

// Only lack of memory keeps fontconfig from making this object, so null is that.
template <typename Object>
void CheckMade(const Object &made)
{
    if (made == nullptr)
        throw std::bad_alloc();
}

std::vector<std::string> CacheFoldersOf(FcConfig *config)
{
    std::vector<std::string> folders;
    const Owned<FcStrList, FcStrListDone> listed(FcConfigGetCacheDirs(config));
    CheckMade(listed);
    while (const FcChar8 *folder = FcStrListNext(listed.get()))
        folders.emplace_back(reinterpret_cast<const char *>(folder));
    return folders;
}

FcConfig *MakeConfig(const FontSources &sources, const BeforeLooking &beforeLooking)
{
    Owned<FcConfig, FcConfigDestroy> config(sources.useSystemFonts ? FcInitLoadConfig() : MakeEmptyConfig());
    CheckMade(config);
    if (beforeLooking)
        beforeLooking(CacheFoldersOf(config.get()));
    if (sources.useSystemFonts && FcConfigBuildFonts(config.get()) == FcFalse)
        throw std::bad_alloc();
    for (const std::string &directory : sources.directories)
        FcConfigAppFontAddDir(config.get(), AsFcString(directory));
    return config.release();
}

std::vector<FontCandidate> ListInstalled(const FontSources &sources, const BeforeLooking &beforeLooking)
{
    const Owned<FcConfig, FcConfigDestroy> config(MakeConfig(sources, beforeLooking));
    // Lists are read here, not files: nothing but lack of memory fails.
    const MemoryWatch watch;
    const Owned<FcPattern, FcPatternDestroy> outlines(
        FcPatternBuild(nullptr, FC_OUTLINE, FcTypeBool, FcTrue, FC_VARIABLE, FcTypeBool, FcFalse, nullptr));
    const Owned<FcObjectSet, FcObjectSetDestroy> wanted(
        FcObjectSetBuild(FC_POSTSCRIPT_NAME, FC_FAMILY, FC_FILE, FC_INDEX, FC_FONTFORMAT, FC_WEIGHT, FC_WIDTH,
                         FC_SLANT, FC_LANG, nullptr));
    CheckMade(outlines);
    CheckMade(wanted);
    const Owned<FcFontSet, FcFontSetDestroy> found(FcFontList(config.get(), outlines.get(), wanted.get()));
    CheckMade(found);

    std::vector<FontCandidate> candidates;
    for (int i = 0; i < found->nfont; ++i) {
        FontCandidate candidate;
        if (ReadCandidate(found->fonts[i], &candidate))
            candidates.push_back(std::move(candidate));
    }
    watch.Check();
    return candidates;
}

} // namespace

std::unique_ptr<FontList> MakeFontconfigFonts(const FontSources &sources, const BeforeLooking &beforeLooking)
{
    std::vector<FontCandidate> candidates = ListInstalled(sources, beforeLooking);
    for (const SharedFontBytes &bytes : sources.memory)
        ReadGivenFont(bytes, &candidates);
    return MakeFontList(std::move(candidates));
}

} // namespace vxhost
