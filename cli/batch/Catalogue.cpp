#include "cli/batch/Catalogue.h"

#include "cli/options/CommonOptions.h"
#include "cli/report/Status.h"
#include "host/FileReading.h"
#include "jobs/OutputFile.h"
#include "library/FactsJson.h"

#include <fmt/format.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr unsigned char kPageBytes[] = {
#include "Catalogue.inc"
};
const std::string_view kPage(reinterpret_cast<const char *>(kPageBytes), sizeof kPageBytes);
constexpr std::string_view kPageName = "index.html", kTableName = "catalogue.csv";
constexpr size_t kEntriesOfPiece = 1000; // and files of a folder

constexpr mode_t kMode = 0666; // less what the user's mask takes away

// A folder is ours if its page begins as all of ours do.
bool HasOurPage(const fs::path &folder)
{
    constexpr size_t kMark = 40;
    std::ifstream page(folder / kPageName, std::ios::binary);
    std::string begin(kMark, '\0');
    return page.read(begin.data(), kMark) && begin == kPage.substr(0, kMark);
}

Json NamesIn(const Json &result, const char *list)
{
    Json names = Json::array();
    for (const Json &member : result.value(list, Json::array()))
        names.push_back(member.at("name"));
    return names;
}

Json InksIn(const Json &result)
{
    Json inks = Json::array();
    const Json uses = result.value("uses", Json::object());
    if (uses.value("cmyk", false))
        inks.push_back("CMYK");
    if (uses.value("gray", false))
        inks.push_back("Gray");
    for (const Json &spot : NamesIn(result, "inks"))
        inks.push_back(spot);
    return inks;
}

Json FontsIn(const Json &result)
{
    Json fonts = Json::array();
    for (const Json &font : result.value("fonts", Json::array()))
        fonts.push_back(
            {{"asked", font.at("asked")}, {"served", font.at("served")}, {"match", font.at("match")}});
    return fonts;
}

Json DamageIn(const Json &result)
{
    Json damage = Json::array();
    if (!result.value("whole", true))
        damage.push_back("cut short");
    if (const std::string text = result.value("damage", ""); !text.empty())
        damage.push_back(text);
    if (result.contains("fault"))
        damage.push_back(
            fmt::format("line {}: {}", result["fault"].value("line", 0), result["fault"].value("text", "")));
    if (const auto salvage = result.find("salvage"); salvage != result.end())
        damage.push_back(fmt::format("{} faults are left out", salvage->value("faults", 0)));
    return damage;
}

// Writes a field of CSV. A program of tables takes what begins as a formula for one, and would do what a document says.
std::string Field(std::string text)
{
    if (!text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos)
        text.insert(text.begin(), '\'');
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

std::string Joined(const Json &texts)
{
    std::string joined;
    for (const Json &text : texts)
        joined.append(joined.empty() ? "" : "; ").append(text.get<std::string>());
    return joined;
}

constexpr std::string_view kTableHead = "number,input,status,title,width mm,height "
                                        "mm,layers,inks,fonts,fonts that were not there,damage,warnings,"
                                        "error,outputs,thumbnail\r\n";

std::string TableLine(const Json &entry, const std::string &thumbnail)
{
    Json asked = Json::array(), missing = Json::array();
    for (const Json &font : entry.at("fonts")) {
        asked.push_back(font.at("asked"));
        if (const std::string match = font.at("match"); match == "substitute" || match == "missing")
            missing.push_back(font.at("asked").get<std::string>() + " -> " +
                              font.at("served").get<std::string>());
    }
    const Json &size = entry.at("size");
    std::string line = std::to_string(entry.at("number").get<size_t>());
    for (const std::string &field :
         {entry.at("input").get<std::string>(), entry.at("status").get<std::string>(),
          entry.at("title").get<std::string>(), fmt::format("{:.2f}", size.at(0).get<double>()),
          fmt::format("{:.2f}", size.at(1).get<double>()), Joined(entry.at("layers")),
          Joined(entry.at("inks")), Joined(asked), Joined(missing), Joined(entry.at("damage")),
          Joined(entry.at("warnings")), entry.at("error").get<std::string>(), Joined(entry.at("outputs")),
          thumbnail})
        line.append(",").append(Field(field));
    return line + "\r\n";
}

} // namespace

Catalogue::Catalogue(std::string folder) : folder_(std::move(folder))
{
    std::error_code failure;
    const fs::file_status status = fs::status(folder_, failure);
    if (folder_.empty() || (fs::exists(status) && !fs::is_directory(status)))
        throw UsageError(
            fmt::format("--report \"{}\": not a folder: name one that is new or empty", folder_));
    if (fs::exists(status) && !fs::is_empty(folder_, failure) && !HasOurPage(folder_))
        throw UsageError(fmt::format("--report {}: holds something that is no catalogue: name a folder that "
                                     "is new or empty",
                                     folder_));
}

void Catalogue::Begin(bool goesOn)
{
    std::error_code failure;
    fs::create_directories(folder_, failure);
    for (const char *part : {"data", "entries", "thumbnails"}) {
        if (!failure && (!goesOn || std::string_view(part) == "data"))
            fs::remove_all(fs::path(folder_) / part, failure);
    }
    if (!failure)
        fs::remove(fs::path(folder_) / kTableName, failure);
    if (failure)
        Fail(failure.value());
    WriteFile(std::string(kPageName), kPage);
}

void Catalogue::Add(size_t number, const Json &result, bool hasThumbnail)
{
    Json entry;
    entry["number"] = number;
    entry["input"] = result.at("input").is_string() ? result["input"].get<std::string>() : "";
    entry["title"] = result.value("title", "");
    entry["status"] = result.at("status");
    entry["error"] = result.value("error", "");
    entry["warnings"] = result.at("warnings");
    entry["damage"] = DamageIn(result);
    entry["size"] = result.value("millimetres", Json{0, 0});
    entry["layers"] = NamesIn(result, "layers");
    entry["inks"] = InksIn(result);
    entry["fonts"] = FontsIn(result);
    entry["outputs"] = Json::array();
    for (const Json &output : result.at("outputs"))
        entry["outputs"].push_back(FromFolder(output));
    entry["thumbnail"] = hasThumbnail;

    const std::string path = PathOf("entries", number, "json");
    std::error_code failure;
    fs::create_directories(fs::path(path).parent_path(), failure);
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode));
    if (file.Get() < 0 || !WriteAll(file.Get(), JsonLine(entry)))
        Fail(errno);
}

void Catalogue::Write(size_t lastNumber)
{
    Fault fault;
    const OutputRules rules = {FileKinds::Regular, true};
    const auto table = OutputFile::Create(folder_ + "/" + std::string(kTableName), rules, &fault);
    if (table == nullptr || !WriteAll(table->Descriptor(), kTableHead))
        Fail(errno);
    size_t pieces = 0, entries = 0;
    std::string piece, lines;
    const auto flush = [&] {
        if (entries == 0)
            return;
        WriteFile(fmt::format("data/{}.js", pieces++), "add([\n" + piece + "]);\n");
        if (!WriteAll(table->Descriptor(), lines))
            Fail(errno);
        piece.clear();
        lines.clear();
        entries = 0;
    };
    for (size_t number = 1; number <= lastNumber; ++number) {
        const Json entry = Read(number);
        if (entry.is_null())
            continue;
        const bool hasThumbnail = entry.at("thumbnail");
        piece += JsonLine(entry).append(",");
        lines += TableLine(entry, hasThumbnail ? FromFolder(ThumbnailOf(number)) : "");
        if (++entries == kEntriesOfPiece)
            flush();
    }
    flush();
    WriteFile("data/pieces.js", fmt::format("begin({});\n", pieces));
    if ((fault = table->Commit()))
        Fail(fault.error);
}

std::string Catalogue::ThumbnailOf(size_t number) const
{
    return PathOf("thumbnails", number, "png");
}

bool Catalogue::Has(size_t number, const std::string &input) const
{
    const Json entry = Read(number);
    std::error_code failure;
    return !entry.is_null() && JsonLine(entry.at("input")) == JsonLine(Json(input)) &&
           (!entry.at("thumbnail") || fs::exists(ThumbnailOf(number), failure));
}

std::string Catalogue::PathOf(const char *kind, size_t number, const char *extension) const
{
    return fmt::format("{}/{}/{}/{}.{}", folder_, kind, number / kEntriesOfPiece, number, extension);
}

std::string Catalogue::FromFolder(const std::string &path) const
{
    std::error_code failure;
    const fs::path found = fs::proximate(path, folder_, failure);
    return failure ? path : found.string();
}

// Returns null where there is none, or where a run was killed that wrote it.
nlohmann::ordered_json Catalogue::Read(size_t number) const
{
    std::ifstream file(PathOf("entries", number, "json"), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    Json entry = Json::parse(text, nullptr, false);
    return entry.is_object() ? entry : Json();
}

void Catalogue::WriteFile(const std::string &name, std::string_view text) const
{
    Fault fault;
    const auto file = OutputFile::Create(folder_ + "/" + name, {FileKinds::Regular, true}, &fault);
    if (file != nullptr && !WriteAll(file->Descriptor(), text))
        Fail(errno);
    if (file != nullptr)
        fault = file->Commit();
    if (fault)
        Fail(fault.error);
}

void Catalogue::Fail(int error) const
{
    throw EarlyEnd(Status::OutputFailed, fmt::format("--report {}: cannot be written, {}: make room, or name "
                                                     "another folder",
                                                     folder_, SystemText(error)));
}

} // namespace vxhost
