#include "host/fonts/DocumentFonts.h"

#include "host/fonts/FontMatcher.h"

#include <optional>

namespace vxhost
{

namespace
{

// A font that has several of the East Asian scripts says nothing, unless the system's own is among them.
std::optional<Script> ScriptOfFont(const FontList::Entry &entry, std::optional<Script> systemScript)
{
    if (systemScript && (*systemScript == Script::Roman || entry.HasScript(*systemScript)))
        return systemScript;
    std::optional<Script> only;
    for (const Script script : {Script::Japanese, Script::TraditionalChinese, Script::Korean}) {
        if (!entry.HasScript(script))
            continue;
        if (only)
            return std::nullopt;
        only = script;
    }
    return only;
}

// The font in one entry's file serves the name of another.
void Serve(const FontList::Entry &from, FontList::Entry *entry)
{
    entry->file = from.file;
    entry->bytes = from.bytes;
    entry->faceIndex = from.faceIndex;
    entry->servedBy = from.ServedName();
    entry->style = from.style;
    entry->scripts = from.scripts;
    entry->isSubstitute = true;
}

} // namespace

DocumentFonts::DocumentFonts(const FontList &installed, const DocumentFontOptions &options)
{
    for (int32_t i = 0; i < installed.Count(); ++i)
        entries_.push_back(installed.At(i));
    IndexNames();
    AddAsked(installed, options);
    details_.resize(entries_.size());
    ChooseEncodings(options);
    systemScript_ = FindSystemScript(options);
}

void DocumentFonts::IndexNames()
{
    for (int32_t i = 0; i < Count(); ++i) {
        const std::string &name = At(i).postScriptName;
        byName_.try_emplace(name, i);
        byBareName_.try_emplace(std::string(WithoutSuffixes(name)), i);
    }
}

void DocumentFonts::AddAsked(const FontList &installed, const DocumentFontOptions &options)
{
    std::optional<FontMatcher>
        matcher; // it looks at every font, and most documents ask for none that is missing
    for (const AskedFont &asked : options.asked) {
        const std::string bareName(WithoutSuffixes(asked.name));
        const auto found = byBareName_.find(bareName);
        auto chosen = options.served.find(asked.name);
        if (chosen == options.served.end())
            chosen = options.served.find(bareName);
        int32_t serving = chosen == options.served.end() ? -1 : Find(chosen->second);
        if (serving < 0 && (found != byBareName_.end() || !options.substitute))
            continue;
        if (serving < 0) {
            const Script script = ScriptOfName(asked.name).value_or(asked.script.value_or(Script::Roman));
            serving = (matcher ? *matcher : matcher.emplace(installed)).FindNearest(asked.name, script);
        }
        Entry entry;
        entry.postScriptName = asked.name;
        entry.familyName = asked.name.substr(0, asked.name.find('-'));
        if (serving >= 0)
            Serve(At(serving), &entry);
        if (found != byBareName_.end()) {
            Serve(At(serving), &entries_[static_cast<size_t>(found->second)]);
            continue;
        }
        byName_.try_emplace(asked.name, Count());
        byBareName_.try_emplace(bareName, Count());
        entries_.push_back(std::move(entry));
    }
}

void DocumentFonts::ChooseEncodings(const DocumentFontOptions &options)
{
    std::vector<bool> isReencoded(entries_.size());
    std::vector<std::optional<Script>> scripts(entries_.size());
    for (const AskedFont &asked : options.asked) {
        const int32_t found = FindFor(asked.name);
        if (found < 0)
            continue;
        const auto index = static_cast<size_t>(found);
        if (details_[index].asked.empty())
            details_[index].asked = asked.name;
        isReencoded[index] = isReencoded[index] || asked.isReencoded;
        if (!scripts[index])
            scripts[index] = ScriptOfName(asked.name);
        if (!scripts[index] && asked.script != Script::Roman)
            scripts[index] = asked.script;
    }
    for (size_t i = 0; i < entries_.size(); ++i) {
        if (!scripts[i])
            scripts[i] = ScriptOfName(entries_[i].postScriptName);
        if (!scripts[i])
            scripts[i] = ScriptOfFont(entries_[i], options.systemScript);
        const Script script = scripts[i].value_or(Script::Roman);
        std::optional<TextEncoding> symbolSet = SymbolSetOfName(details_[i].asked);
        if (!symbolSet)
            symbolSet = SymbolSetOfName(entries_[i].ServedName());
        const bool isWindows = script == Script::Roman && options.isCodePage1252 && !isReencoded[i];
        details_[i].encoding = symbolSet   ? *symbolSet
                               : isWindows ? TextEncoding::CodePage1252
                                           : MacEncoding(script);
    }
}

// The plug-in uses the system's script for fonts that the document does not re-encode, so it is the script of those.
Script DocumentFonts::FindSystemScript(const DocumentFontOptions &options) const
{
    if (options.systemScript)
        return *options.systemScript;
    for (const AskedFont &asked : options.asked) {
        const int32_t index = FindFor(asked.name);
        if (asked.isReencoded || index < 0)
            continue;
        const Script script = ScriptOf(EncodingOf(index));
        if (script != Script::Roman)
            return script;
    }
    return Script::Roman;
}

int32_t DocumentFonts::Find(std::string_view postScriptName) const
{
    const auto found = byName_.find(std::string(postScriptName));
    return found == byName_.end() ? -1 : found->second;
}

int32_t DocumentFonts::FindFor(std::string_view asked) const
{
    const auto found = byBareName_.find(std::string(WithoutSuffixes(asked)));
    return found == byBareName_.end() ? -1 : found->second;
}

const std::string &DocumentFonts::AskedName(int32_t index) const
{
    const std::string &asked = details_[static_cast<size_t>(index)].asked;
    return asked.empty() ? At(index).postScriptName : asked;
}

} // namespace vxhost
