// Manifests: what a batch is told to do, and that it is the same however their bytes come.
//
// Lines of JSON are held against another reader of it. Bytes are read as lines and as names that end in NUL.
#include "cli/options/ManifestLines.h"
#include "fuzz/Require.h"
#include "host/reading/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using Json = nlohmann::json;
using vxfuzz::Require;
using vxhost::LineEnd;
using vxhost::ManifestEntry;

std::vector<ManifestEntry> Read(std::string_view bytes, LineEnd end, size_t piece)
{
    vxhost::ManifestLines lines("list", end);
    std::vector<ManifestEntry> entries;
    const auto takeAll = [&] {
        while (std::optional<ManifestEntry> entry = lines.Next())
            entries.push_back(std::move(*entry));
    };
    for (size_t at = 0; at < bytes.size(); at += piece) {
        lines.Add(bytes.substr(at, piece));
        takeAll();
    }
    lines.End();
    takeAll();
    return entries;
}

bool IsSame(const ManifestEntry &one, const ManifestEntry &two)
{
    return one.manifest == two.manifest && one.line == two.line && one.id == two.id &&
           one.input == two.input && one.output == two.output && one.outputOptions == two.outputOptions &&
           one.error == two.error;
}

// Another reader says that the line is one of these. Numbers that it cannot hold are JSON all the same.
enum class Kind : uint8_t { NoJson, Json, BeyondNumbers };

Kind KindOf(std::string_view line, Json *json)
{
    try {
        *json = Json::parse(line);
        return Kind::Json;
    } catch (const Json::out_of_range &) {
        return Kind::BeyondNumbers;
    } catch (const Json::parse_error &) {
        return Kind::NoJson;
    }
}

void CheckObject(const ManifestEntry &entry, std::string_view line)
{
    Json json, id;
    const Kind kind = KindOf(line, &json);
    const bool isRead = !entry.error.starts_with("byte ") && !entry.error.starts_with("not UTF-8");
    Require(isRead || kind != Kind::Json || line.find('\r') != std::string_view::npos, "JSON was refused");
    Require(!isRead || kind != Kind::NoJson, "what is no JSON was taken for it");
    Require(line.find(entry.id) != std::string_view::npos, "an id that is not in the line");
    if (kind != Kind::Json || !isRead)
        return;
    Require(entry.id.empty() || KindOf(entry.id, &id) == Kind::Json, "an id that is no JSON");
    Require(json.contains("id") ? json["id"] == id : entry.id.empty(), "another id");
    if (entry.error.empty()) {
        Require(json["input"] == entry.input, "another input");
        Require(json.contains("output") ? json["output"] == entry.output : entry.output.empty(),
                "another output");
    }
}

void CheckEntry(const ManifestEntry &entry, const std::vector<std::string_view> &lines, LineEnd end)
{
    Require(entry.error.empty() || vxhost::Printable(entry.error, SIZE_MAX) == entry.error,
            "an error that is more than a line");
    Require(!entry.error.empty() || !entry.input.empty(), "neither an input nor an error");
    for (const std::string *name : {&entry.input, &entry.output})
        Require(name->find('\0') == std::string::npos, "a name with a NUL");
    Require(entry.line <= lines.size(), "a line that is not there");
    if (entry.line == 0)
        return;
    std::string_view line = lines[entry.line - 1];
    const bool isName =
        entry.id.empty() && entry.output.empty() && entry.outputOptions == vxhost::OutputOptions();
    if (end == LineEnd::Nul) {
        Require(isName && (entry.input.empty() || entry.input == line), "a name that was not given");
        return;
    }
    if (entry.line == 1 && line.starts_with("\xEF\xBB\xBF"))
        line.remove_prefix(3);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    const size_t first = line.find_first_not_of(" \t");
    if (first != std::string_view::npos && line[first] == '{' && line.find('\0') == std::string_view::npos)
        CheckObject(entry, line);
    else
        Require(isName && (entry.input.empty() || entry.input == line), "a name that no line is");
}

void CheckAll(std::string_view bytes, LineEnd end)
{
    const std::vector<ManifestEntry> entries = Read(bytes, end, std::max<size_t>(bytes.size(), 1));
    const std::vector<ManifestEntry> again = Read(bytes, end, 1 + bytes.size() % 7);
    Require(std::ranges::equal(entries, again, IsSame), "its pieces make a difference");
    std::vector<std::string_view> lines;
    for (size_t at = 0; at <= bytes.size();) {
        lines.push_back(bytes.substr(at, bytes.substr(at).find(static_cast<char>(end))));
        at += lines.back().size() + 1;
    }
    for (const ManifestEntry &entry : entries)
        CheckEntry(entry, lines, end);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    CheckAll(bytes, LineEnd::Newline);
    CheckAll(bytes, LineEnd::Nul);
    return 0;
}
