#include "host/fonts/NameTraits.h"

#include "host/resources/StringLists.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <vector>

namespace vxhost
{

namespace
{

struct NamedScript {
    std::string_view text;
    Script script;
};

constexpr NamedScript kSuffixes[] = {
    {"-RKSJ", Script::Japanese},
    {"-EUC-H", Script::Japanese},
    {"-EUC-V", Script::Japanese},
    {"-B5pc", Script::TraditionalChinese},
    {"-ETen-B5", Script::TraditionalChinese},
    {"-ETenms-B5", Script::TraditionalChinese},
    {"-KSCpc-EUC", Script::Korean},
    {"-KSCms-UHC", Script::Korean},
    {"-KSC-EUC", Script::Korean},
};

// Starts of plain names.
constexpr NamedScript kFaces[] = {
    {"ryumin", Script::Japanese},
    {"gothicbbb", Script::Japanese},
    {"gothicmb101", Script::Japanese},
    {"gothicmedium", Script::Japanese},
    {"futomin", Script::Japanese},
    {"futogo", Script::Japanese},
    {"midashi", Script::Japanese},
    {"jun101", Script::Japanese},
    {"shingo", Script::Japanese},
    {"heisei", Script::Japanese},
    {"hiramin", Script::Japanese},
    {"hirakaku", Script::Japanese},
    {"hiramaru", Script::Japanese},
    {"kozmin", Script::Japanese},
    {"kozgo", Script::Japanese},
    {"osaka", Script::Japanese},
    {"honmincho", Script::Japanese},
    {"marugothic", Script::Japanese},
    {"msmincho", Script::Japanese},
    {"msgothic", Script::Japanese},
    {"mspmincho", Script::Japanese},
    {"mspgothic", Script::Japanese},
    {"ipa", Script::Japanese},
    {"takao", Script::Japanese},
    {"yumin", Script::Japanese},
    {"yugothic", Script::Japanese},
    {"mingliu", Script::TraditionalChinese},
    {"pmingliu", Script::TraditionalChinese},
    {"lihei", Script::TraditionalChinese},
    {"lisung", Script::TraditionalChinese},
    {"lisong", Script::TraditionalChinese},
    {"appleligothic", Script::TraditionalChinese},
    {"msung", Script::TraditionalChinese},
    {"mhei", Script::TraditionalChinese},
    {"mkai", Script::TraditionalChinese},
    {"taipei", Script::TraditionalChinese},
    {"monotypehei", Script::TraditionalChinese},
    {"monotypesung", Script::TraditionalChinese},
    {"ukai", Script::TraditionalChinese},
    {"uming", Script::TraditionalChinese},
    {"hysmyeongjo", Script::Korean},
    {"hygothic", Script::Korean},
    {"hyrgothic", Script::Korean},
    {"applemyungjo", Script::Korean},
    {"applegothic", Script::Korean},
    {"batang", Script::Korean},
    {"gulim", Script::Korean},
    {"dotum", Script::Korean},
    {"nanum", Script::Korean},
    {"seoul", Script::Korean},
    {"munhwa", Script::Korean},
    {"baekmuk", Script::Korean},
    {"unbatang", Script::Korean},
    {"undotum", Script::Korean},
};

struct NamedSymbolFont {
    std::string_view text;
    TextEncoding encoding;
};

// Starts of plain names.
constexpr NamedSymbolFont kSymbolFonts[] = {
    {"symbol", TextEncoding::Symbol},         {"standardsym", TextEncoding::Symbol},
    {"zapfdingbats", TextEncoding::Dingbats}, {"itczapfdingbats", TextEncoding::Dingbats},
    {"dingbats", TextEncoding::Dingbats},     {"d050000l", TextEncoding::Dingbats},
};

struct WeightWord {
    std::string_view word;
    int weight;
};

// A longer word stands before those that it contains.
constexpr WeightWord kWeights[] = {
    {"extralight", -30}, {"ultralight", -30}, {"semibold", 15}, {"demibold", 15}, {"extrabold", 30},
    {"ultrabold", 30},   {"light", -20},      {"thin", -30},    {"demi", 15},     {"heavy", 30},
    {"black", 30},       {"ultra", 35},       {"bold", 20},     {"medium", 5},
};
constexpr WeightWord kWidths[] = {
    {"condensed", -20}, {"compressed", -25}, {"narrow", -20},
    {"cond", -20},      {"extended", 20},    {"expanded", 20},
};
constexpr std::string_view kSlants[] = {"italic", "oblique", "kursiv", "slanted"};
constexpr std::string_view kPlainStyles[] = {"regular", "normal", "book", "plain"};
constexpr std::string_view kMonoWords[] = {"courier", "mono", "typewriter", "monaco",
                                           "fixed",   "ocr",  "consol"};
constexpr std::string_view kSerifWords[] = {
    "times",    "serif",      "garamond", "caslon",    "bodoni",    "baskerville", "century", "schlbk",
    "palatino", "bookman",    "minion",   "goudy",     "clarendon", "bembo",       "newyork", "janson",
    "sabon",    "cheltenham", "didot",    "caledonia", "georgia",   "min",         "ryumin",  "song",
    "sung",     "ming",       "myeongjo", "myungjo",   "batang",
};

// Cuts the name at the last place of the first string of the list that stands in it, but not at its very start.
std::string_view CutAtFirstOf(std::string_view name, int16_t list)
{
    for (const std::string_view suffix : FindStringList(list)) {
        const size_t at = name.rfind(suffix);
        if (at != std::string_view::npos && at > 0)
            return name.substr(0, at);
    }
    return name;
}

bool TakeWord(std::string *name, std::string_view word)
{
    const size_t at = name->find(word);
    if (at == std::string::npos)
        return false;
    name->erase(at, word.size());
    return true;
}

template <typename Words>
int TakeWeight(std::string *name, const Words &words)
{
    for (const WeightWord &each : words) {
        if (TakeWord(name, each.word))
            return each.weight;
    }
    return 0;
}

template <typename Words>
bool ContainsAny(const std::string &name, const Words &words)
{
    return std::ranges::any_of(words,
                               [&](std::string_view word) { return name.find(word) != std::string::npos; });
}

} // namespace

std::string_view WithoutSuffixes(std::string_view name)
{
    return CutAtFirstOf(CutAtFirstOf(name, kVXOrientationSuffixes), kVXEncodingSuffixes);
}

std::string PlainName(std::string_view name)
{
    std::string plain;
    for (const char character : name) {
        if (character >= 'A' && character <= 'Z')
            plain += static_cast<char>(character - 'A' + 'a');
        else if ((character >= 'a' && character <= 'z') || (character >= '0' && character <= '9'))
            plain += character;
    }
    return plain;
}

std::optional<Script> ScriptOfName(std::string_view name)
{
    for (const NamedScript &suffix : kSuffixes) {
        if (name.find(suffix.text) != std::string_view::npos)
            return suffix.script;
    }
    const std::string plain = PlainName(name);
    for (const NamedScript &face : kFaces) {
        if (plain.starts_with(face.text))
            return face.script;
    }
    return std::nullopt;
}

std::optional<TextEncoding> SymbolSetOfName(std::string_view name)
{
    const std::string plain = PlainName(name);
    for (const NamedSymbolFont &font : kSymbolFonts) {
        if (plain.starts_with(font.text))
            return font.encoding;
    }
    return std::nullopt;
}

FaceTraits TraitsOfName(std::string_view postScriptName)
{
    FaceTraits traits;
    std::string name = PlainName(WithoutSuffixes(postScriptName));
    traits.faceClass = ContainsAny(name, kMonoWords)    ? FaceClass::Mono
                       : ContainsAny(name, kSerifWords) ? FaceClass::Serif
                                                        : FaceClass::Sans;
    if (name.find("sans") != std::string::npos && traits.faceClass == FaceClass::Serif)
        traits.faceClass = FaceClass::Sans;
    traits.style.weight = TakeWeight(&name, kWeights);
    traits.style.width = TakeWeight(&name, kWidths);
    for (const std::string_view word : kSlants)
        traits.style.isSlanted |= TakeWord(&name, word);
    for (const std::string_view word : kPlainStyles)
        (void)TakeWord(&name, word); // such a word says nothing
    traits.family = std::move(name);
    return traits;
}

} // namespace vxhost
