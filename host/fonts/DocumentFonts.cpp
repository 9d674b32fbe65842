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

const std::string &ServedName(const FontList::Entry &entry)
{
    return entry.servedBy.empty() ? entry.postScriptName : entry.servedBy;
}

// The font in one entry's file serves the name of another.
void Serve(const FontList::Entry &from, FontList::Entry *entry)
{
    entry->file = from.file;
    entry->faceIndex = from.faceIndex;
    entry->servedBy = ServedName(from);
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
    const FontMatcher matcher(installed);
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
            serving = matcher.FindNearest(asked.name, script);
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
        std::optional<TextEncoding> signs = SignsOfName(details_[i].asked);
        if (!signs)
            signs = SignsOfName(ServedName(entries_[i]));
        const bool isWindows = script == Script::Roman && options.isCodePage1252 && !isReencoded[i];
        details_[i].encoding = signs ? *signs : isWindows ? TextEncoding::CodePage1252 : MacEncoding(script);
    }
}

// The system's script counts for the fonts that the document does not re-encode, so it is theirs.
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

const FontFile *DocumentFonts::FileOf(int32_t index) const
{
    const Detail &detail = details_[static_cast<size_t>(index)];
    if (!detail.isFileOpened && !At(index).file.empty())
        detail.file = FontFile::Open(At(index).file, At(index).faceIndex);
    if (!detail.isFileOpened && detail.file != nullptr)
        detail.goesByBytes = vxhost::GoesByBytes(*detail.file, ServedName(At(index)), detail.encoding);
    detail.isFileOpened = true;
    return detail.file.get();
}

bool DocumentFonts::GoesByBytes(int32_t index) const
{
    (void)FileOf(index); // which finds it out
    return details_[static_cast<size_t>(index)].goesByBytes;
}

const CharWidths *DocumentFonts::Widths(int16_t number) const
{
    const Detail &detail = details_[static_cast<size_t>(number)];
    if (detail.widths == nullptr) {
        const FontFile *file = FileOf(number);
        detail.widths =
            std::make_unique<CharWidths>(ReadCharWidths(file, detail.encoding, detail.goesByBytes));
    }
    return detail.widths.get();
}

const TextFont *DocumentFonts::TextFontOf(int32_t index) const
{
    const Detail &detail = details_[static_cast<size_t>(index)];
    if (detail.textFont == nullptr && FileOf(index) != nullptr) {
        const Entry &entry = At(index);
        detail.textFont =
            std::make_unique<TextFont>(TextFont{detail.asked.empty() ? entry.postScriptName : detail.asked,
                                                ServedName(entry), entry.file, entry.faceIndex});
    }
    return detail.textFont.get();
}

FontUse DocumentFonts::Describe(int32_t index) const
{
    const Entry &entry = At(index);
    const Detail &detail = details_[static_cast<size_t>(index)];
    const TextFont *font = TextFontOf(index);
    FontUse use;
    use.asked = detail.asked.empty() ? entry.postScriptName : detail.asked;
    if (font == nullptr)
        return use;
    use.served = font->served;
    use.file = font->file;
    use.match = entry.servedBy.empty() ? FontMatch::Exact
                : entry.isSubstitute   ? FontMatch::Substitute
                                       : FontMatch::StandIn;
    return use;
}

} // namespace vxhost
