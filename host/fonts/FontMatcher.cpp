#include "host/fonts/FontMatcher.h"

#include <cstdlib>
#include <limits>

namespace vxhost
{

namespace
{

// What each likeness is worth; a greater one outweighs all the smaller ones together.
constexpr int kHasScript = 10000; // or the symbol set of the font asked for
constexpr int kIsFamily = 4000;
constexpr int kIsClassicOfClass = 1000;
constexpr int kIsClass = 500;
constexpr int kForeignScripts = -300; // Roman text in an East Asian font
constexpr int kOtherSlant = -150;
constexpr int kStyleStep = -4; // for each unit of weight and of width

bool IsClassicFamily(std::string_view family, FaceClass faceClass)
{
    switch (faceClass) {
    case FaceClass::Serif:
        return family == "Times";
    case FaceClass::Mono:
        return family == "Courier";
    default:
        return family == "Helvetica" || family == "Helvetica Narrow";
    }
}

} // namespace

FontMatcher::FontMatcher(const FontList &fonts) : fonts_(fonts)
{
    for (int32_t i = 0; i < fonts.Count(); ++i) {
        const FontList::Entry &entry = fonts.At(i);
        if (entry.IsDrawn())
            candidates_.push_back({i, TraitsOfName(entry.familyName).family,
                                   TraitsOfName(entry.postScriptName).faceClass,
                                   SymbolSetOfName(entry.postScriptName)});
    }
}

int32_t FontMatcher::FindNearest(std::string_view asked, Script script) const
{
    const FaceTraits wanted = TraitsOfName(asked);
    const std::optional<TextEncoding> symbolSet = SymbolSetOfName(asked);
    int32_t best = -1;
    int bestScore = std::numeric_limits<int>::min();
    for (const Candidate &candidate : candidates_) {
        const FontList::Entry &entry = fonts_.At(candidate.index);
        int score = 0;
        if (symbolSet ? candidate.symbolSet == symbolSet : entry.HasScript(script))
            score += kHasScript;
        if (!wanted.family.empty() && candidate.family == wanted.family)
            score += kIsFamily;
        if (script == Script::Roman && IsClassicFamily(entry.familyName, wanted.faceClass))
            score += kIsClassicOfClass;
        else if (candidate.faceClass == wanted.faceClass)
            score += kIsClass;
        if (script == Script::Roman && entry.HasEastAsianScript())
            score += kForeignScripts;
        if (entry.style.isSlanted != wanted.style.isSlanted)
            score += kOtherSlant;
        score += kStyleStep * (std::abs(entry.style.weight - wanted.style.weight) +
                               std::abs(entry.style.width - wanted.style.width));
        if (score > bestScore) {
            best = candidate.index;
            bestScore = score;
        }
    }
    return best;
}

} // namespace vxhost
