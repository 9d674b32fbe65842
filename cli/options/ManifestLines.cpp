#include "cli/options/ManifestLines.h"

#include "cli/options/JsonMembers.h"
#include "host/reading/Utf8.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

using Json = nlohmann::json;

constexpr size_t kMaxLine = size_t{64} << 10;
constexpr size_t kShown = 60; // bytes of a member's name that a message shows
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool BeginsAsDocument(std::string_view line)
{
    return line.starts_with("%!") || line.starts_with("\xC5\xD0\xD3\xC6");
}

bool HasControl(std::string_view name)
{
    return std::ranges::any_of(name,
                               [](unsigned char character) { return character < 0x20 || character == 0x7F; });
}

// Turns what stands in JSON for an option's value into a word of a command line: 300, "300", [0,0,72,36], ["pdf","png"].
std::optional<std::string> WordOf(const Json &value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number())
        return value.dump();
    if (!value.is_array())
        return std::nullopt;
    std::string words;
    for (const Json &part : value) {
        const std::optional<std::string> word = part.is_array() ? std::nullopt : WordOf(part);
        if (!word)
            return std::nullopt;
        words += (words.empty() ? "" : ",") + *word;
    }
    return words;
}

// Takes one member of a line's object. Returns what is wrong with it, or nothing.
std::string TakeMember(const JsonMember &member, ManifestEntry *entry)
{
    const std::string &key = member.key;
    if (key == "id") {
        entry->id = member.value;
        return "";
    }
    const Json value = Json::parse(member.value, nullptr, false); // a number beyond all bounds is "discarded"
    const std::optional<std::string> word = WordOf(value);
    const bool isName = key == "input" || key == "output";
    if (isName && (!value.is_string() || word->empty()))
        return fmt::format("\"{}\" is no name: give a string", key);
    if (!word || word->empty())
        return fmt::format("\"{}\" has no value that an option can have: give a string or a number",
                           Printable(key, kShown));
    // The system would take what stands before the NUL for the name.
    if (word->find('\0') != std::string::npos)
        return fmt::format("\"{}\" holds a NUL, which no name has: take \\u0000 out", Printable(key, kShown));
    if (isName)
        (key == "input" ? entry->input : entry->output) = *word;
    else if (!entry->outputOptions.Set(key, *word))
        return fmt::format(
            "no option \"{}\": give input, output, id, or one of vx render's about the picture",
            Printable(key, kShown));
    return "";
}

void TakeObject(const std::string &line, ManifestEntry *entry)
{
    if (ToUtf8(line) != line) {
        entry->error = "not UTF-8, as JSON is: write the name alone";
        return;
    }
    size_t badByte = 0;
    const std::optional<std::vector<JsonMember>> members = ReadJsonMembers(line, &badByte);
    if (!members) {
        entry->error =
            fmt::format("byte {} is not JSON: write {{\"input\": \"a.vx\", \"output\": \"a.pdf\"}}, "
                        "or the name alone",
                        badByte);
        return;
    }
    for (const JsonMember &member : *members) {
        std::string error = TakeMember(member, entry);
        if (entry->error.empty())
            entry->error = std::move(error);
    }
    if (entry->error.empty() && entry->input.empty())
        entry->error = "no \"input\": name the document";
}

void CheckInput(ManifestEntry *entry)
{
    if (entry->error.empty() && entry->input == "-")
        entry->error = "standard input is no document of a batch: name a file, as ./- if it is called so";
}

} // namespace

void ManifestLines::Add(std::string_view bytes)
{
    bytes_.erase(0, std::exchange(at_, 0));
    bytes_ += bytes;
}

std::optional<ManifestEntry> ManifestLines::Next()
{
    while (!isGivenUp_) {
        const size_t end = bytes_.find(static_cast<char>(end_), at_);
        const size_t length = std::min(end, bytes_.size()) - at_;
        const bool goesOn = end == std::string::npos && !isWhole_;
        if (end == std::string::npos && (goesOn ? length <= kMaxLine : length == 0))
            return std::nullopt;
        std::string line = bytes_.substr(at_, length);
        at_ = std::min(at_ + length + 1, bytes_.size());
        if (std::exchange(isSkipping_, goesOn))
            continue;
        ++line_;
        if (std::optional<ManifestEntry> entry =
                end_ == LineEnd::Nul ? TakeName(std::move(line)) : TakeLine(std::move(line)))
            return entry;
    }
    return std::nullopt;
}

std::optional<ManifestEntry> ManifestLines::TakeLine(std::string line)
{
    if (line_ == 1 && BeginsAsDocument(line))
        return GiveUp(0, name_ == "-" ? "is a drawing, not a manifest: vx render - draws it"
                                      : "is a drawing, not a manifest: name it without --manifest");
    if (line.size() > kMaxLine)
        return Refuse(fmt::format("longer than {} bytes, the most that a line may have", kMaxLine));
    if (line.find('\0') != std::string::npos)
        return GiveUp(line_, "holds a NUL byte, which no line does: give -0 if its names end in NUL");
    if (line_ == 1 && line.starts_with(kByteOrderMark))
        line.erase(0, kByteOrderMark.size());
    if (line.ends_with('\r'))
        line.pop_back();
    const size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos)
        return std::nullopt;
    ManifestEntry entry = MakeEntry();
    if (line[first] == '{')
        TakeObject(line, &entry);
    else if (HasControl(line)) // such a name could also have held a line end, and would be two
        entry.error = "a name with a control character: end names in NUL and give -0, or write JSON";
    else
        entry.input = std::move(line);
    CheckInput(&entry);
    return entry;
}

std::optional<ManifestEntry> ManifestLines::TakeName(std::string name)
{
    if (name.size() > kMaxLine)
        return Refuse(fmt::format("longer than {} bytes, the most that a name may have", kMaxLine));
    const bool hasNoNul = line_ == 1 && at_ == bytes_.size() && bytes_.back() != '\0';
    if (hasNoNul && name.find('\n') != std::string::npos)
        return GiveUp(0, "has lines, and no NUL: leave -0 out");
    if (name.empty())
        return std::nullopt;
    ManifestEntry entry = MakeEntry();
    entry.input = std::move(name);
    CheckInput(&entry);
    return entry;
}

ManifestEntry ManifestLines::MakeEntry() const
{
    ManifestEntry entry;
    entry.manifest = name_;
    entry.line = line_;
    return entry;
}

ManifestEntry ManifestLines::Refuse(std::string error) const
{
    ManifestEntry entry = MakeEntry();
    entry.error = std::move(error);
    return entry;
}

ManifestEntry ManifestLines::GiveUp(size_t line, std::string error)
{
    isGivenUp_ = true;
    ManifestEntry entry = Refuse(std::move(error));
    entry.line = line;
    return entry;
}

} // namespace vxhost
